#include "protocol/think_thread.h"

#include <condition_variable>
#include <mutex>
#include <thread>

#include "protocol/jobs.h"
#include "protocol/engine_state.h"
#include "protocol/game.h"
#include "protocol/messages.h"
#include "protocol/output.h"
#include "protocol/progress.h"
#include "protocol/engine_search.h"
#include "search/think.h"

namespace zorva {

namespace {

constexpr int kModeTurn = 0;
constexpr int kModeExit = -1;

std::thread thinker;
std::mutex wakeMutex;
std::condition_variable wakeCondition;
std::mutex idleMutex;
std::condition_variable idleCondition;
// The job a wake-up asks for, taken from thinkMode (and thinkMode cleared)
// when the request is made: shutdown sets thinkMode before it stops the
// running job, so the job must neither read nor clear it later.
int requestedMode = kModeTurn;

// A turn plays the chosen move on the game board and answers with it: the
// search's, or in checkmate mode (the level read now) the solver's.
void playTurn(bool checkmate) {
  const Move move = checkmate ? chooseCheckmateMove() : chooseTurnMove();
  if (move == kNoMove) {
    playOwnMove(-1, -1);
    return;
  }
  const int x = rowOf(move), y = colOf(move);
  playOwnMove(x, y);
  sendLine(reply::kMove, x, y);
}

bool requestPending() {
  std::lock_guard lock(wakeMutex);
  return engine.thinkRequested != 0;
}

// After its move the engine keeps thinking on the opponent's time, unless a
// new request is already waiting or the think was a checkmate one; any
// command that changes the position stops it through stopThinking.
void playTurnAndPonder() {
  const bool checkmate = engine.settings.checkmate != 0;
  playTurn(checkmate);
  if (checkmate || !engine.settings.pondering || requestPending() || engine.stopFlag) return;
  engine.ponderActive = 1;
  ponder();
  engine.ponderActive = 0;
}

// A turn, or one of the analysis jobs.
void runJob(int mode) {
  if (mode == kModeTurn)
    playTurnAndPonder();
  else
    runAnalysisJob(mode);
}

void thinkLoop() {
  for (;;) {
    int mode;
    {
      std::unique_lock lock(wakeMutex);
      wakeCondition.wait(lock, [] { return engine.thinkRequested != 0; });
      engine.thinkRequested = 0;
      mode = requestedMode;
    }
    if (mode == kModeExit) return;
    runJob(mode);
    {
      std::lock_guard lock(idleMutex);
      engine.thinkIdle = 1;
    }
    idleCondition.notify_all();
  }
}

}  // namespace

void startThinkThread() { thinker = std::thread(thinkLoop); }

void waitUntilIdle() {
  std::unique_lock lock(idleMutex);
  idleCondition.wait(lock, [] { return engine.thinkIdle != 0; });
}

void prepareTableWhileIdle() {
  // Only this thread starts the think thread, so an idle one stays idle here.
  std::unique_lock lock(idleMutex);
  if (!engine.thinkIdle) return;
  lock.unlock();
  prepareTable(progressLines());
}

void stopThinking() {
  engine.stopFlag = 1;
  waitUntilIdle();
}

void startThinking() {
  engine.stopFlag = 0;
  {
    std::lock_guard lock(idleMutex);
    engine.thinkIdle = 0;
  }
  {
    std::lock_guard lock(wakeMutex);
    engine.thinkRequested = 1;
    requestedMode = engine.thinkMode;
    if (requestedMode != kModeExit) engine.thinkMode = kModeTurn;
  }
  wakeCondition.notify_one();
}

void shutdownThinkThread() {
  engine.thinkMode = kModeExit;
  if (engine.settings.pondering) engine.ponderActive = 0;
  stopThinking();
  startThinking();
  thinker.join();
}

}  // namespace zorva
