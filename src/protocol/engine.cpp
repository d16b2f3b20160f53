#include "protocol/engine.h"

#include <unistd.h>

#include <climits>
#include <string>

#include "board/zobrist.h"
#include "protocol/commands.h"
#include "protocol/database_commands.h"
#include "protocol/engine_state.h"
#include "protocol/think_thread.h"

namespace zorva {

namespace {

std::string programFolder;

// The folder of the executable, with its trailing separator. The running
// image's own path is preferred to argv[0], which may be a bare name.
std::string findProgramFolder(const char* argv0) {
  char path[PATH_MAX];
  const ssize_t length = readlink("/proc/self/exe", path, sizeof path - 1);
  std::string p = length > 0 ? std::string(path, size_t(length)) : std::string(argv0 ? argv0 : "");
  const size_t cut = p.find_last_of("/\\");
  return cut == std::string::npos ? std::string() : p.substr(0, cut + 1);
}

}  // namespace

void initEngine(const char* programPath) {
  programFolder = findProgramFolder(programPath);
  initZobrist();
  engine.maxSide = engine.settings.boardSize;
  engine.benchmarkMode = engine.settings.benchmark;
  openDatabaseAtStart(programFolder.c_str());
}

int runEngine() {
  startThinkThread();
  while (readInputLine())
    if (handleCommand()) break;
  shutdownThinkThread();
  return 0;
}

}  // namespace zorva
