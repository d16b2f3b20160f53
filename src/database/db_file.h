#pragma once
// The database file, little-endian, with no header but the count:
//
//   int32 N
//   N times: int16 key length, key bytes, int16 text length, text bytes
//
// records in key order. A length of 0 is followed by no bytes; an empty
// database is the four bytes 00 00 00 00.
//
// These are the file-level pieces; Database strings them together under its
// lock and decides what happens to the old file and the ".bak".

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "database/record.h"

namespace zorva::db {

struct ParsedFile {
  std::vector<Record> records;  // sorted, no two keys equal
  std::string problem;          // first problem found, empty for a whole file
};

// Never fails: a damaged file yields what can be recovered and names its
// first problem. Records that are framed correctly are kept even when they
// are out of order (they are sorted again; of equal keys the first wins);
// records with a malformed key are dropped; reading stops at the first
// length that does not fit the file.
ParsedFile parseDatabaseFile(std::string_view bytes);

// Whole-file read. On failure returns false with the reason in `error`.
bool readWholeFile(const std::string& path, std::string& bytes, std::string& error);

// Writes the buckets in order, flushes and syncs. Leaves a partial file on
// failure; the caller removes it.
bool writeDatabaseFile(const std::string& path, std::span<const std::vector<Record>> buckets,
                       std::string& error);

// Keeps a damaged file under "<path>.damaged-<YYYYMMDD-HHMMSS>[-n]", by copy
// so the original stays readable, or by rename when it cannot be read.
// Returns the new name, or an empty string with the reason in `error`.
std::string setAsideDamaged(const std::string& path, std::string& error);

}  // namespace zorva::db
