#pragma once
// The learning file: learned worths for the engine's table of direction-code
// quadruples, as plain text.
#include <cstdint>
#include <string>

namespace zorva::db {

// Number of entries the file holds: the non-increasing quadruples of 0..15.
constexpr int kLearningValues = 3876;

// Reads up to 3876 whitespace-separated integers from `path` into the
// entries (a, b, c, d) of `table` (index a*4096 + b*256 + c*16 + d), in the
// order a = 0..15, b = 0..a, c = 0..b, d = 0..c. Reading stops at the end of
// the file or the first text that is not a number; the entries not read keep
// their values. Values outside 16 bits are clamped. Returns how many were
// read, or -1 when the file cannot be opened.
int readLearningFile(const std::string& path, int16_t* table);

}  // namespace zorva::db
