#pragma once
// Opening books: one opening a line, black first, in letter-number notation
// ("h8i9" is x = 7, y = 7 then x = 8, y = 8).
#include <string>
#include <vector>

#include "match/rules.h"

namespace zorva::referee {

struct Opening {
  std::vector<Cell> stones;  // in the order played, black first
};

// Parses one opening for a width x height board. On failure returns false and
// says why in `error`; an empty text is the empty opening.
bool parseOpening(const std::string& text, int width, int height, Opening& out, std::string& error);

// Reads a book, skipping blank lines and lines that begin with '#'. On failure
// the error names the file and line.
bool loadOpenings(const std::string& path, int width, int height, std::vector<Opening>& out,
                  std::string& error);

}  // namespace zorva::referee
