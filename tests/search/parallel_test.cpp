// The search with helper threads: it must stop when asked, whatever the
// threads are doing, and find what one thread finds. Run under the thread
// sanitizer too.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <thread>

#include "board/zobrist.h"
#include "protocol/engine_state.h"
#include "search/driver.h"
#include "protocol/engine_search.h"
#include "search/tt.h"

namespace zorva {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kSlack = 8;  // sanitizers slow the search several times over
#else
constexpr int kSlack = 1;
#endif

// A quiet middle game: no side has a forced win, so the search has work.
constexpr int kMiddleGame[][2] = {{7, 7}, {8, 8}, {6, 8}, {7, 8}, {7, 9}, {6, 7}, {8, 9}};

class ThreadsTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { initZobrist(); }
  void SetUp() override {
    Settings& s = engine.settings;
    s.timeoutTurn = 100000;
    s.timeLeft = 100000000;
    s.maxNode = 2000000000;
    s.startDepth = 1;
    s.maxDepth = 484;
    s.showDetail = 0;
    s.rule = 0;
    s.hashSize = 16;
    s.threadSplitDepth = 3;
    engine.stopFlag = 0;
    engine.think.builtRule = -1;
    engine.think.finalValue = 0;
    engine.board.reset(15, 15, 0);
    for (const auto& cell : kMiddleGame) engine.board.placeStone(makeMove(cell[0], cell[1]), engine.board.sideToMove());
  }
  void TearDown() override {
    engine.settings.threadNum = 1;
    engine.settings.maxDepth = 484;
    engine.settings.maxNode = 2000000000;
  }
  Move think() {
    EngineSearch search;
    return runTurnDriver(search, engine.board, true);
  }
};

TEST_F(ThreadsTest, StopReachesEveryThreadAtOnce) {
  engine.settings.threadNum = 4;
  engine.settings.maxNode = -1;  // only the stop request ends it
  Move chosen = kNoMove;
  std::thread thinker([&] { chosen = think(); });
  std::this_thread::sleep_for(std::chrono::milliseconds(300 * kSlack));
  const auto asked = std::chrono::steady_clock::now();
  engine.stopFlag = 1;
  thinker.join();
  const auto waited = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - asked);
  EXPECT_LT(waited.count(), 200);
  EXPECT_EQ(engine.board.at(chosen), EMPTY);
  EXPECT_GT(engine.think.currentDepth, 3) << "the threads got somewhere before the stop";
}

TEST_F(ThreadsTest, ManyThreadsSearchTheSameTreeAsOne) {
  engine.settings.maxDepth = 7;
  engine.settings.threadNum = 1;
  transpositionTable.clear();
  const Move alone = think();
  const int32_t aloneValue = engine.think.finalValue;
  const int64_t aloneNodes = engine.think.nodeCount;
  transpositionTable.clear();
  EXPECT_EQ(think(), alone) << "one thread is deterministic";
  EXPECT_EQ(engine.think.nodeCount, aloneNodes);
  for (int threads : {2, 4, 8, 12}) {  // 12 is taken as 8
    engine.settings.threadNum = threads;
    transpositionTable.clear();
    const Move m = think();
    EXPECT_EQ(engine.board.at(m), EMPTY);
    EXPECT_EQ(engine.think.currentDepth, 7);
    EXPECT_EQ(std::abs(engine.think.finalValue) > kProvenBound, std::abs(aloneValue) > kProvenBound)
        << threads << " threads: a proven result is proven whoever searches";
  }
}

}  // namespace
}  // namespace zorva
