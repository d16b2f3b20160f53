#include <cstdlib>
#include <ctime>

#if defined(__SSE__)
#include <xmmintrin.h>
#endif

#include "protocol/engine.h"

namespace {
// Denormals buy no accuracy the engine needs and cost a great deal of time.
void flushDenormals() {
#if defined(__SSE__)
  constexpr unsigned kFlushToZero = 0x8000, kDenormalsAreZero = 0x0040;
  _mm_setcsr(_mm_getcsr() | kFlushToZero | kDenormalsAreZero);
#endif
}
}  // namespace

int main(int, char** argv) {
  flushDenormals();
  std::srand(unsigned(std::time(nullptr)));
  zorva::initEngine(argv[0]);
  return zorva::runEngine();
}
