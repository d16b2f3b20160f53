#pragma once
// The start-up benchmark: a fixed series of short openings under each rule,
// each answered by the think driver on the input thread, then the program ends.

namespace zorva {

void runStartupBenchmark();

}  // namespace zorva
