#pragma once
// Start-up, the input loop and shutdown of the engine process.

namespace zorva {

// Finds the program folder and fills the tables; `programPath` is argv[0].
void initEngine(const char* programPath);

// Reads and runs commands until END or end of input, then shuts the think
// thread down; or, when the configuration asks for it, runs the start-up
// benchmark instead. Returns the process exit status.
int runEngine();

}  // namespace zorva
