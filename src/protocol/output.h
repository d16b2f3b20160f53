#pragma once
// The single output routine: every reply and progress line of every thread
// leaves the program here, whole, under one lock.
#include <cstdio>

namespace zorva {

// Formats one line with printf rules, ends it and flushes.
void sendLine(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Where lines go; standard output unless a test redirects it.
void setOutput(std::FILE* stream);

}  // namespace zorva
