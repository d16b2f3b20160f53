#include "match/openings.h"

#include <cctype>
#include <fstream>

namespace zorva::referee {

bool parseOpening(const std::string& text, int width, int height, Opening& out, std::string& error) {
  out.stones.clear();
  Board board(width, height);
  size_t i = 0;
  auto fail = [&](const std::string& why) {
    error = why;
    return false;
  };
  while (i < text.size()) {
    unsigned char ch = text[i];
    if (std::isspace(ch)) {
      ++i;
      continue;
    }
    if (!std::isalpha(ch)) return fail("expected a letter at \"" + text.substr(i) + "\"");
    int x = std::tolower(ch) - 'a';
    ++i;
    int number = 0, digits = 0;
    while (i < text.size() && std::isdigit(static_cast<unsigned char>(text[i])) && digits < 3) {
      number = number * 10 + (text[i] - '0');
      ++i;
      ++digits;
    }
    if (digits == 0) return fail("expected a number after '" + std::string(1, char(ch)) + "'");
    Cell c{x, number - 1};
    if (!board.inside(c.x, c.y)) return fail(cellName(c) + " is off the board");
    if (board.at(c.x, c.y) != kEmpty) return fail(cellName(c) + " is played twice");
    // A finished game is no opening; overlines count too, whatever the rule.
    Stone s = board.toMove();
    for (int d = 0; d < kDirections; ++d)
      if (runThrough(board, c.x, c.y, d, s) >= 5) return fail(cellName(c) + " makes five");
    board.set(c.x, c.y, s);
    out.stones.push_back(c);
  }
  if (board.full()) return fail("the opening fills the board");
  return true;
}

bool loadOpenings(const std::string& path, int width, int height, std::vector<Opening>& out,
                  std::string& error) {
  std::ifstream in(path);
  if (!in) {
    error = path + ": cannot open";
    return false;
  }
  out.clear();
  std::string line;
  for (int number = 1; std::getline(in, line); ++number) {
    size_t first = line.find_first_not_of(" \t\r");
    if (first == std::string::npos || line[first] == '#') continue;
    Opening o;
    std::string why;
    if (!parseOpening(line, width, height, o, why)) {
      error = path + ":" + std::to_string(number) + ": " + why;
      return false;
    }
    out.push_back(std::move(o));
  }
  if (out.empty()) {
    error = path + ": no openings";
    return false;
  }
  return true;
}

}  // namespace zorva::referee
