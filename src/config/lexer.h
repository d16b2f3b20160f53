#pragma once
// Scanner of the configuration script: source text to a list of tokens.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "config/ast.h"

namespace zorva::config {

// Token kinds. An operator or punctuation mark of one character is its own
// character code; every other kind is numbered from 128 so the ranges never meet.
enum TokenKind : int32_t {
  kTokInt = 128,
  kTokFloat = 129,
  kTokVoid = 130,
  kTokIf = 131,
  kTokElse = 132,
  kTokWhile = 133,
  kTokBreak = 134,
  kTokContinue = 135,
  kTokReturn = 136,
  kTokGreaterEqual = 137,
  kTokLessEqual = 138,
  kTokEqual = 139,
  kTokNotEqual = 140,
  kTokShiftLeft = 141,
  kTokShiftRight = 142,
  kTokAndAnd = 143,
  kTokOrOr = 144,
  kTokIdentifier = 145,
  kTokIntLiteral = 146,
  kTokFloatLiteral = 147,
  kTokEnd = 148,
};

// Names are kept in a 32-byte buffer: longer names are cut to this many
// characters, so two names that agree in their first 31 are the same name.
inline constexpr std::size_t kMaxNameLength = 31;

struct Token {
  int32_t kind = kTokEnd;
  int32_t intValue = 0;    // kTokIntLiteral
  float floatValue = 0;    // kTokFloatLiteral
  std::string text;        // kTokIdentifier, at most kMaxNameLength characters
  SourcePos pos;           // of its first character
};

// On success `tokens` ends with one kTokEnd and `error` is empty; otherwise
// `error` holds the message for the first character that cannot be scanned,
// with its line and column.
struct ScanResult {
  std::vector<Token> tokens;
  std::string error;
};

ScanResult scan(std::string_view source);

// "$" for a printable character, "\xNN" for anything else, so a message that
// quotes a stray byte stays one printable line.
std::string describeCharacter(unsigned char c);

}  // namespace zorva::config
