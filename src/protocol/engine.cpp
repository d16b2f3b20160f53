#include "protocol/engine.h"

#include <string>

#include "board/zobrist.h"
#include "protocol/commands.h"
#include "protocol/engine_state.h"
#include "protocol/think_thread.h"

namespace zorva {

namespace {
std::string programFolder;

// The folder of the executable, with its trailing separator; empty when the
// path names none.
std::string folderOf(const char* path) {
  const std::string p = path ? path : "";
  const size_t cut = p.find_last_of("/\\");
  return cut == std::string::npos ? std::string() : p.substr(0, cut + 1);
}
}  // namespace

void initEngine(const char* programPath) {
  programFolder = folderOf(programPath);
  initZobrist();
  engine.maxSide = engine.settings.boardSize;
}

int runEngine() {
  startThinkThread();
  while (readInputLine())
    if (handleCommand()) break;
  shutdownThinkThread();
  return 0;
}

}  // namespace zorva
