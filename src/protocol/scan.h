#pragma once
// Number reading for protocol arguments. Behaves like the C scanners on the
// formats the protocol uses, but never overflows: out-of-range numbers
// saturate at the 32-bit limits, so a huge coordinate is simply off the board.
#include <cstdint>

namespace zorva {

// Reads `format` against `text`: "%d" reads a decimal integer after optional
// white space, a blank matches any run of white space (also none), any other
// character must match itself. Returns how many numbers were stored.
int scanInts(const char* text, const char* format, int32_t* values);

// The decimal prefix of `text`: leading white space, a sign, digits; the
// first other character ends it, and no digits give 0 ("5000x" is 5000).
int32_t parseDecimal(const char* text);

// Case-insensitive comparison of two whole strings (ASCII letters only fold).
bool equalsIgnoreCase(const char* a, const char* b);

}  // namespace zorva
