#include "protocol/scan.h"

#include <cctype>
#include <climits>

namespace zorva {

namespace {

bool isBlank(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

// Reads an integer at *p; on success advances *p past it.
bool readInt(const char** p, int32_t* value) {
  const char* s = *p;
  while (isBlank(*s)) ++s;
  bool negative = false;
  if (*s == '+' || *s == '-') negative = *s++ == '-';
  if (!isDigit(*s)) return false;
  int64_t magnitude = 0;
  for (; isDigit(*s); ++s)
    if (magnitude <= INT32_MAX) magnitude = magnitude * 10 + (*s - '0');
  if (negative)
    *value = magnitude > int64_t(INT32_MAX) + 1 ? INT32_MIN : int32_t(-magnitude);
  else
    *value = magnitude > INT32_MAX ? INT32_MAX : int32_t(magnitude);
  *p = s;
  return true;
}

}  // namespace

int scanInts(const char* text, const char* format, int32_t* values) {
  int stored = 0;
  const char* s = text;
  for (const char* f = format; *f; ++f) {
    if (f[0] == '%' && f[1] == 'd') {
      if (!readInt(&s, &values[stored])) break;
      ++stored;
      ++f;
    } else if (isBlank(*f)) {
      while (isBlank(*s)) ++s;
    } else if (*s == *f) {
      ++s;
    } else {
      break;
    }
  }
  return stored;
}

int32_t parseDecimal(const char* text) {
  int32_t value = 0;
  return readInt(&text, &value) ? value : 0;
}

bool equalsIgnoreCase(const char* a, const char* b) {
  for (; *a && *b; ++a, ++b)
    if (std::toupper(static_cast<unsigned char>(*a)) != std::toupper(static_cast<unsigned char>(*b))) return false;
  return *a == *b;
}

}  // namespace zorva
