#include "config/lexer.h"

#include <cstdio>

namespace zorva::config {
namespace {

struct Spelling {
  std::string_view text;
  int32_t kind;
};

// Tried in this order; every two-character operator is tried before any
// single character, so ">=" never scans as ">" "=".
constexpr Spelling kTwoCharOperators[] = {
    {"&&", kTokAndAnd},    {"||", kTokOrOr},     {">=", kTokGreaterEqual},
    {"<=", kTokLessEqual}, {"==", kTokEqual},    {"!=", kTokNotEqual},
    {"<<", kTokShiftLeft}, {">>", kTokShiftRight},
};

constexpr std::string_view kSingleCharOperators = "!%&()*+,-/;<=>[]^{|}~";

constexpr Spelling kKeywords[] = {
    {"int", kTokInt},     {"float", kTokFloat},       {"void", kTokVoid},
    {"if", kTokIf},       {"else", kTokElse},         {"while", kTokWhile},
    {"break", kTokBreak}, {"continue", kTokContinue}, {"return", kTokReturn},
};

// ASCII classes by hand: the script's meaning must not depend on the C locale.
bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isWordChar(char c) { return isLetter(c) || isDigit(c) || c == '_'; }
bool isBlank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

class Scanner {
 public:
  explicit Scanner(std::string_view source) : src_(source) {}

  ScanResult run() {
    ScanResult result;
    while (result.error.empty()) {
      if (!skipBlanksAndComments(result.error)) break;
      Token token;
      token.pos = place(pos_);
      if (pos_ == src_.size()) {
        result.tokens.push_back(token);
        break;
      }
      if (!scanToken(token, result.error)) break;
      result.tokens.push_back(std::move(token));
    }
    if (!result.error.empty()) result.tokens.clear();
    return result;
  }

 private:
  // Line and column of an offset; offsets are asked for in increasing order.
  SourcePos place(std::size_t offset) {
    for (; counted_ < offset; ++counted_) {
      if (src_[counted_] == '\n') {
        ++line_;
        lineStart_ = counted_ + 1;
      }
    }
    return {line_, static_cast<int>(offset - lineStart_) + 1};
  }

  char at(std::size_t i) const { return i < src_.size() ? src_[i] : '\0'; }
  bool startsWith(std::string_view s) const { return src_.substr(pos_).starts_with(s); }

  bool skipBlanksAndComments(std::string& error) {
    for (;;) {
      while (pos_ < src_.size() && isBlank(src_[pos_])) ++pos_;
      if (startsWith("//")) {
        std::size_t end = src_.find('\n', pos_);
        pos_ = end == std::string_view::npos ? src_.size() : end;
      } else if (startsWith("/*")) {
        std::size_t end = src_.find("*/", pos_ + 2);
        if (end == std::string_view::npos) {
          error = "Unterminated comment" + describePos(place(pos_));
          return false;
        }
        pos_ = end + 2;
      } else {
        return true;
      }
    }
  }

  bool scanToken(Token& token, std::string& error) {
    for (const Spelling& op : kTwoCharOperators) {
      if (startsWith(op.text)) {
        token.kind = op.kind;
        pos_ += 2;
        return true;
      }
    }
    char c = src_[pos_];
    if (kSingleCharOperators.find(c) != std::string_view::npos) {
      token.kind = static_cast<unsigned char>(c);
      ++pos_;
      return true;
    }
    for (const Spelling& word : kKeywords) {
      if (startsWith(word.text) && !isWordChar(at(pos_ + word.text.size()))) {
        token.kind = word.kind;
        pos_ += word.text.size();
        return true;
      }
    }
    if (isLetter(c) || c == '_') {
      scanName(token);
      return true;
    }
    if (isDigit(c) || (c == '.' && isDigit(at(pos_ + 1)))) {
      scanNumber(token);
      return true;
    }
    error = "Unexpected symbol " + describeCharacter(static_cast<unsigned char>(c)) + describePos(place(pos_));
    return false;
  }

  void scanName(Token& token) {
    token.kind = kTokIdentifier;
    std::size_t start = pos_;
    while (pos_ < src_.size() && isWordChar(src_[pos_])) ++pos_;
    std::size_t length = pos_ - start;
    if (length > kMaxNameLength) length = kMaxNameLength;
    token.text.assign(src_.substr(start, length));
  }

  // Integer literals wrap modulo 2^32 (done in unsigned arithmetic, which is
  // defined); float literals are built digit by digit in float arithmetic.
  void scanNumber(Token& token) {
    uint32_t wrapped = 0;
    float value = 0.0f;
    while (isDigit(at(pos_))) {
      int digit = src_[pos_] - '0';
      wrapped = wrapped * 10u + static_cast<uint32_t>(digit);
      value = value * 10.0f + static_cast<float>(digit);
      ++pos_;
    }
    if (at(pos_) != '.') {
      token.kind = kTokIntLiteral;
      token.intValue = static_cast<int32_t>(wrapped);
      return;
    }
    ++pos_;
    float scale = 1.0f;
    while (isDigit(at(pos_))) {
      scale /= 10.0f;
      value += static_cast<float>(src_[pos_] - '0') * scale;
      ++pos_;
    }
    token.kind = kTokFloatLiteral;
    token.floatValue = value;
  }

  std::string_view src_;
  std::size_t pos_ = 0;
  std::size_t counted_ = 0, lineStart_ = 0;  // place() has counted the lines before counted_
  int line_ = 1;
};

}  // namespace

std::string describePos(SourcePos pos) {
  if (pos.line == 0) return {};
  return " at line " + std::to_string(pos.line) + ", column " + std::to_string(pos.column);
}

std::string describeCharacter(unsigned char c) {
  if (c > ' ' && c < 0x7f) return std::string(1, static_cast<char>(c));
  char buffer[8];
  std::snprintf(buffer, sizeof buffer, "\\x%02X", c);
  return buffer;
}

ScanResult scan(std::string_view source) { return Scanner(source).run(); }

}  // namespace zorva::config
