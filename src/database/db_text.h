#pragma once
// The text form of the database: one line per position, its moves in
// played order as " x,y" (a space before each move), in the orientation of
// the stored key, so the empty board is an empty line:
//
//    7,7 7,8 8,8
//
// Only proven records (t 'w' or 'l') of one rule and board size are
// exported; the line holds no rule, size or result, so an import takes the
// rule and size it is given and cannot restore the result.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "database/database.h"

namespace zorva::db {

struct TextResult {
  bool ok = true;
  std::string error;    // why the file could not be read or written
  size_t written = 0;   // export: lines written
  size_t added = 0;     // import: new records
  size_t present = 0;   // import: positions already stored, left as they were
  size_t skipped = 0;   // import: lines that are not a position on this board
  size_t firstSkippedLine = 0;
};

std::string formatMoveLine(std::string_view key);
// Parses " x,y x,y ..." into cell keys. False when a token is not a pair
// of integers in signed-byte range.
bool parseMoveLine(std::string_view line, std::vector<int32_t>& moves);

// Writes the proven records with the given rule and size and at most
// maxMoves moves (-1: no limit), in store order, under the database lock.
TextResult exportProven(const Database& db, const std::string& fileName, int rule, int height, int width,
                        int maxMoves);
// Reads a file of the export form. Each new position gets an unset result
// (t -1, v 0, d 0) and an empty message; positions already stored keep
// their records.
TextResult importText(Database& db, const std::string& fileName, int rule, int height, int width);

}  // namespace zorva::db
