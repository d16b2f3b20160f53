#pragma once
// The search benchmark: fixed positions of every rule searched to a fixed
// depth. With one thread its node count is a signature of the search: a
// change that alters it changes what the search does.

namespace zorva {

constexpr int kBenchDefaultDepth = 7;

// Prints one line per position and the total; returns the exit status.
// A split depth of 0 keeps the default (8); config.c does not reach the
// benchmark, so its count depends on the code alone.
int runBench(int depth, int threads, int splitDepth);

}  // namespace zorva
