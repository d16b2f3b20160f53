#pragma once
// The analysis jobs of the think thread, by think mode, on the game position.

namespace zorva {

constexpr int kModeBalanceOne = 1;
constexpr int kModeBalanceTwo = 2;
constexpr int kModeNBest = 3;
constexpr int kModeSearchDefend = 4;
constexpr int kModeSwap2First = 5;   // after three stones
constexpr int kModeSwap2Second = 6;  // after five

// Runs the job of `mode` with the arguments its command stored; any other
// mode does nothing.
void runAnalysisJob(int mode);

}  // namespace zorva
