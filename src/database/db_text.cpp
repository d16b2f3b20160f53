#include "database/db_text.h"

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <memory>

namespace zorva::db {

std::string formatMoveLine(std::string_view key) {
  std::string line;
  for (int i = 0; i < keyMoveCount(key); i++) {
    line += ' ';
    line += std::to_string(keyX(key, i));
    line += ',';
    line += std::to_string(keyY(key, i));
  }
  return line;
}

namespace {

bool parseNumber(std::string_view text, int& value) {
  if (text.empty()) return false;
  const char* end = text.data() + text.size();
  auto [ptr, ec] = std::from_chars(text.data(), end, value);
  return ec == std::errc() && ptr == end && value >= INT8_MIN && value <= INT8_MAX;
}

bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

}  // namespace

bool parseMoveLine(std::string_view line, std::vector<int32_t>& moves) {
  moves.clear();
  size_t at = 0;
  while (true) {
    while (at < line.size() && isSpace(line[at])) at++;
    if (at == line.size()) return true;
    size_t end = at;
    while (end < line.size() && !isSpace(line[end])) end++;
    const std::string_view token = line.substr(at, end - at);
    const size_t comma = token.find(',');
    int x, y;
    if (comma == std::string_view::npos || !parseNumber(token.substr(0, comma), x) ||
        !parseNumber(token.substr(comma + 1), y))
      return false;
    // Off-board pairs stay distinguishable: a negative or too large y
    // would otherwise alias another cell, so it is made off-board in x.
    moves.push_back(y >= 0 && y < 32 ? makeCell(x, y) : makeCell(-1, 0));
    at = end;
  }
}

TextResult exportProven(const Database& db, const std::string& fileName, int rule, int height, int width,
                        int maxMoves) {
  TextResult result;
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(fileName.c_str(), "w"), &std::fclose);
  if (!file) {
    result.ok = false;
    result.error = std::strerror(errno);
    return result;
  }
  bool writeFailed = false;
  db.forEach([&](std::string_view key, std::string_view text) {
    const int t = readResult(text).t;
    if (t != kWon && t != kLost) return;
    if (keyRule(key) != rule || keyHeight(key) != height || keyWidth(key) != width) return;
    if (maxMoves >= 0 && keyMoveCount(key) > maxMoves) return;
    const std::string line = formatMoveLine(key) + "\n";
    if (std::fwrite(line.data(), 1, line.size(), file.get()) != line.size()) writeFailed = true;
    result.written++;
  });
  if (writeFailed || std::fflush(file.get()) != 0) {
    result.ok = false;
    result.error = std::strerror(errno);
  }
  return result;
}

TextResult importText(Database& db, const std::string& fileName, int rule, int height, int width) {
  TextResult result;
  std::ifstream in(fileName);
  if (!in) {
    result.ok = false;
    result.error = std::strerror(errno);
    return result;
  }
  const std::string unset = makeText({}, "");
  std::vector<std::pair<std::string, std::string>> records;
  std::vector<int32_t> moves;
  std::string line;
  size_t lineNumber = 0;
  KeyBuffer key;
  while (std::getline(in, line)) {
    lineNumber++;
    if (!parseMoveLine(line, moves) || !canonicalKey({rule, height, width, moves}, key)) {
      if (result.skipped++ == 0) result.firstSkippedLine = lineNumber;
      continue;
    }
    records.emplace_back(std::string(key.view()), unset);
  }
  if (in.bad()) {
    result.ok = false;
    result.error = std::strerror(errno);
    return result;
  }
  const size_t positions = records.size();
  result.added = db.insertMissing(std::move(records));
  result.present = positions - result.added;
  return result;
}

}  // namespace zorva::db
