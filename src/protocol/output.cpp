#include "protocol/output.h"

#include <cstdarg>
#include <mutex>

namespace zorva {

namespace {
std::mutex outputMutex;
std::FILE* outputStream = nullptr;
}  // namespace

void setOutput(std::FILE* stream) {
  std::lock_guard lock(outputMutex);
  outputStream = stream;
}

void sendLine(const char* format, ...) {
  std::lock_guard lock(outputMutex);
  std::FILE* out = outputStream ? outputStream : stdout;
  va_list args;
  va_start(args, format);
  std::vfprintf(out, format, args);
  va_end(args);
  std::fputc('\n', out);
  std::fflush(out);
}

}  // namespace zorva
