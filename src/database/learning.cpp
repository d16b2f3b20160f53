#include "database/learning.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

namespace zorva::db {

namespace {

constexpr int kCodes = 16;

int16_t toInt16(long value) { return int16_t(std::clamp<long>(value, INT16_MIN, INT16_MAX)); }

// The next whitespace-separated number of the file, false at the end or at text that is not one.
bool nextValue(std::ifstream& in, long* value) {
  std::string word;
  if (!(in >> word)) return false;
  char* end = nullptr;
  errno = 0;
  const long v = std::strtol(word.c_str(), &end, 10);
  if (end == word.c_str() || *end != '\0') return false;
  *value = errno == ERANGE ? (word[0] == '-' ? LONG_MIN : LONG_MAX) : v;
  return true;
}

}  // namespace

int readLearningFile(const std::string& path, int16_t* table) {
  std::ifstream in(path);
  if (!in) return -1;
  int read = 0;
  for (int a = 0; a < kCodes; ++a)
    for (int b = 0; b <= a; ++b)
      for (int c = 0; c <= b; ++c)
        for (int d = 0; d <= c; ++d) {
          long value;
          if (!nextValue(in, &value)) return read;
          table[a * 4096 + b * 256 + c * 16 + d] = toInt16(value);
          ++read;
        }
  return read;
}

}  // namespace zorva::db
