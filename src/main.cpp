#include <cstdlib>
#include <ctime>

#if defined(__SSE__)
#include <xmmintrin.h>
#endif

#include <cstring>

#include "protocol/engine.h"
#include "search/bench.h"

namespace {
// Denormals buy no accuracy the engine needs and cost a great deal of time.
void flushDenormals() {
#if defined(__SSE__)
  constexpr unsigned kFlushToZero = 0x8000, kDenormalsAreZero = 0x0040;
  _mm_setcsr(_mm_getcsr() | kFlushToZero | kDenormalsAreZero);
#endif
}
}  // namespace

// "zorva bench [depth] [threads] [split depth]" runs the search benchmark; anything else
// starts the engine for a manager.
int main(int argc, char** argv) {
  flushDenormals();
  const bool bench = argc > 1 && std::strcmp(argv[1], "bench") == 0;
  // The benchmark's hash keys are always the same, so that its node count is too.
  constexpr unsigned kBenchSeed = 20261121;
  std::srand(bench ? kBenchSeed : unsigned(std::time(nullptr)));
  zorva::initEngine(argv[0]);
  if (bench) {
    const int depth = argc > 2 ? std::atoi(argv[2]) : zorva::kBenchDefaultDepth;
    const int threads = argc > 3 ? std::atoi(argv[3]) : 1;
    const int splitDepth = argc > 4 ? std::atoi(argv[4]) : 0;
    return zorva::runBench(depth > 0 ? depth : zorva::kBenchDefaultDepth, threads, splitDepth);
  }
  return zorva::runEngine();
}
