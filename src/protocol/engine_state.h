#pragma once
// The engine's one global record: settings, game size, think-thread flags and
// the position. The input thread owns it; the think and search threads read
// the settings and flags while they run.
#include <cstdint>
#include <mutex>

#include "board/board.h"
#include "database/database.h"
#include "search/relaxed.h"
#include "search/settings.h"
#include "search/block_paths.h"
#include "search/context.h"
#include "search/driver.h"

namespace zorva {

constexpr int kLineBuffer = 8192;

struct EngineState {
  // Points the search context at the stop flag, the blocks, the database
  // and the protocol's progress lines.
  EngineState();

  Settings settings;

  // First and second number of START/RECTSTART; 0 until a game starts.
  int32_t boardWidth = 0;
  int32_t boardHeight = 0;
  int32_t maxSide = 15;

  // Think-thread hand-shake. thinkRequested and thinkIdle are guarded by
  // their mutexes; the others are polled without a lock.
  Relaxed<int32_t> thinkMode{0};
  Relaxed<int32_t> stopFlag{0};
  Relaxed<int32_t> ponderActive{0};
  int32_t thinkRequested = 0;
  int32_t thinkIdle = 1;
  int32_t benchmarkMode = 0;

  // Arguments of the analysis jobs, written by their commands before the
  // preamble stops the job that may still be reading the last ones.
  Relaxed<int32_t> balanceParam{0};
  Relaxed<int32_t> nbestCount{1};

  // Cells the engine must not choose, set by the front end (1 = blocked).
  int32_t blockTable[kCellSlots] = {};
  // Positions the engine must not steer into; changed only while idle.
  BlockPaths blockPaths;

  // The think driver's state between depths and turns.
  ThinkState think;
  // What the engine's searches read; its settings are taken as each think
  // starts (prepareSearchContext).
  SearchContext search;

  // The game position; changed by the input thread while the think thread
  // is idle, and by the think thread (its own move, the rule set-up) while
  // it runs. Those writes, and every read that does not stop the think
  // thread first, hold boardLock.
  Board board;
  std::mutex boardLock;

  // The opening database; its own lock guards it.
  db::Database database;

  char inputLine[kLineBuffer] = {};
};

extern EngineState engine;

}  // namespace zorva
