#include "protocol/line_reader.h"

namespace zorva {

bool readLine(std::FILE* in, char* buffer, int capacity) {
  int stored = 0;
  bool truncated = false;
  for (;;) {
    const int c = getc_unlocked(in);
    if (c == EOF) {
      buffer[stored] = '\0';
      return false;
    }
    if (c == '\n') break;
    if (stored < capacity - 1)
      buffer[stored++] = char(c);
    else
      truncated = true;
  }
  if (!truncated && stored > 0 && buffer[stored - 1] == '\r') --stored;
  buffer[stored] = '\0';
  return true;
}

}  // namespace zorva
