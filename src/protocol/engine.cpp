#include "protocol/engine.h"

#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include "board/values.h"
#include "board/zobrist.h"
#include "database/learning.h"
#include "config/script.h"
#include "protocol/benchmark.h"
#include "protocol/commands.h"
#include "protocol/database_commands.h"
#include "protocol/engine_state.h"
#include "protocol/messages.h"
#include "protocol/output.h"
#include "protocol/settings.h"
#include "protocol/think_thread.h"

namespace zorva {

namespace {

constexpr char kConfigFile[] = "config.c";
constexpr char kLearningFile[] = "learning.txt";
constexpr int kConfigExitStatus = 1;

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

// Runs "config.c" from the program folder on the settings it may change. A
// missing file leaves the defaults; an error ends the program before any
// setting has changed.
void runConfiguration() {
  std::ifstream file(programFolder + kConfigFile, std::ios::binary);
  if (!file) return;
  std::stringstream text;
  text << file.rdbuf();

  Settings& s = engine.settings;
  struct Bound {
    const char* name;
    SettingField setting;
  };
  constexpr Bound bound[] = {{"info_caution_factor", &Settings::cautionFactor},
                             {"info_hash_size", &Settings::hashSize},
                             {"info_rule", &Settings::rule},
                             {"info_show_detail", &Settings::showDetail},
                             {"info_max_depth", &Settings::maxDepth},
                             {"info_max_node", &Settings::maxNode},
                             {"board_size", &Settings::boardSize},
                             {"info_benchmark", &Settings::benchmark},
                             {"info_learning", &Settings::learning},
                             {"info_thread_num", &Settings::threadNum},
                             {"info_thread_split_depth", &Settings::threadSplitDepth},
                             {"info_three_def", &Settings::threeDef},
                             {"info_pondering", &Settings::pondering},
                             {"info_usedatabase", &Settings::useDatabase}};
  constexpr int kBound = int(std::size(bound));
  int32_t values[kBound];
  config::Binding bindings[kBound];
  for (int i = 0; i < kBound; ++i) {
    values[i] = s.*bound[i].setting;
    bindings[i] = {bound[i].name, &values[i]};
  }
  const config::ScriptResult result = config::runScript(text.str(), bindings);
  if (!result.ok) {
    sendLine(reply::kConfigError, result.error.c_str());
    std::exit(kConfigExitStatus);
  }
  for (int i = 0; i < kBound; ++i) s.*bound[i].setting = settingValue(bound[i].setting, values[i]);
}

// Learning is asked for, so a file that does not give every value is worth a word.
void readLearning(const std::string& path) {
  const int read = db::readLearningFile(path, learningTable);
  if (read > 0) applyLearningTable();
  if (read < 0)
    sendLine(reply::kLearningMissing, path.c_str());
  else if (read < db::kLearningValues)
    sendLine(reply::kLearningShort, path.c_str(), read, db::kLearningValues);
}

}  // namespace

void initEngine(const char* programPath) {
  programFolder = findProgramFolder(programPath);
  initZobrist();
  runConfiguration();
  engine.maxSide = engine.settings.boardSize;
  engine.benchmarkMode = engine.settings.benchmark;
  openDatabaseAtStart(programFolder.c_str());
  initValueTables();
  if (engine.settings.learning) readLearning(programFolder + kLearningFile);
}

int runEngine() {
  if (engine.benchmarkMode) {
    runStartupBenchmark();
    return 0;
  }
  if (isatty(STDIN_FILENO)) std::fputs(reply::kTerminalHint, stderr);
  startThinkThread();
  while (readInputLine())
    if (handleCommand()) break;
  shutdownThinkThread();
  closeDatabaseAtEnd();  // a manager that closes the input without END keeps its edits too
  return 0;
}

}  // namespace zorva
