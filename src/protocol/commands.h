#pragma once
// The command dispatcher of the input loop.
#include <cstdio>

namespace zorva {

// Case-insensitive prefix test with no word boundary: returns the text behind
// the keyword and the white space after it, or nullptr when `line` does not
// begin with `keyword`.
const char* matchCommand(const char* keyword, const char* line);

// Stops the think thread (a ponder too) and waits until it is idle, before
// a change that the search must not see happen under it.
void stopForChange();

// Runs the command in engine.inputLine; returns 1 for END, otherwise 0.
int handleCommand();

// Where handleCommand and the multi-line commands read further lines from.
void setInput(std::FILE* stream);

// Reads the next line into engine.inputLine; false at end of input.
bool readInputLine();

// Every command that changes the position or starts a search begins here:
// pondering off, the think thread stopped, a game started if none was.
void preamble();

// BOARD up to its search: the preamble, then the "x,y,who" lines until DONE.
// zvboard is exactly this.
void readBoardCommand();

}  // namespace zorva
