#pragma once
// The analysis jobs of the think thread, by think mode, on the game position.

namespace zorva {

constexpr int kModeBalanceOne = 1;
constexpr int kModeBalanceTwo = 2;
constexpr int kModeNBest = 3;
constexpr int kModeSearchDefend = 4;
constexpr int kModeSwap2First = 5;   // after three stones
constexpr int kModeSwap2Second = 6;  // after five
constexpr int kModeSoosorvOffers = 7;  // fifth moves to offer, after four stones
constexpr int kModeSoosorvChoice = 8;  // one of the offers to take

// Runs the job of `mode` with the arguments its command stored; any other
// mode does nothing.
void runAnalysisJob(int mode);

}  // namespace zorva
