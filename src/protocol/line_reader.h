#pragma once
// The line reader of the input loop and of every command that reads more lines.
#include <cstdio>

namespace zorva {

// Reads up to the next line feed into `buffer` (size `capacity`): characters
// past capacity - 1 are read and dropped, the line feed and a carriage return
// before it are removed. Returns false at end of input; the buffer then holds
// whatever part of a line was read.
bool readLine(std::FILE* in, char* buffer, int capacity);

}  // namespace zorva
