// The turn driver against a scripted search: stop rules, the value and depth
// it reports, and the report lines themselves.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "board/zobrist.h"
#include "protocol/engine_state.h"
#include "protocol/output.h"
#include "search/driver.h"
#include "search/tt.h"

namespace zorva {
namespace {

// A search whose every depth is a callback: it gets the depth and returns
// the value, setting bestMove and the flags itself.
class ScriptedSearch : public SearchBackend {
 public:
  std::function<int32_t(int)> onDepth;
  std::vector<int> depths;
  Line pv;
  Move winMove = makeMove(0, 0);

  SearchContext& context() override { return engine.search; }
  void prepare() override {}
  int32_t evaluate(Colour) override { return 0; }
  void startDepth() override {}
  int32_t searchRoot(int depth, Colour) override {
    depths.push_back(depth);
    return onDepth(depth);
  }
  const Line& principalVariation() override { return pv; }
  void mergeStatistics() override {}
  Move quickWinMove(Colour) override { return winMove; }
};

class DriverTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { initZobrist(); }
  void SetUp() override {
    Settings& s = engine.settings;
    s.timeoutTurn = 30000;
    s.timeLeft = 100000000;
    s.timeIncrement = 0;
    s.startDepth = 1;
    s.maxDepth = 484;
    s.maxNode = 2000000000;
    s.earlyStop = 1;
    s.showDetail = 0;
    s.rule = 0;
    engine.stopFlag = 0;
    engine.think.builtRule = -1;
    board.reset(15, 15, 0);
    board.placeStone(makeMove(7, 7), BLACK);
    search.pv.length = 2;
    search.pv.moves[0] = makeMove(7, 8);
    search.pv.moves[1] = makeMove(8, 8);
    output = open_memstream(&buffer, &size);
    setOutput(output);
  }
  void TearDown() override {
    setOutput(nullptr);
    std::fclose(output);
    std::free(buffer);
  }
  std::vector<std::string> lines() {
    std::fflush(output);
    std::vector<std::string> result;
    std::string text(buffer, size), line;
    for (char c : text)
      if (c == '\n') {
        result.push_back(line);
        line.clear();
      } else {
        line += c;
      }
    return result;
  }

  Board board;
  ScriptedSearch search;
  std::FILE* output = nullptr;
  char* buffer = nullptr;
  size_t size = 0;
};

TEST_F(DriverTest, ProvenWinEndsTheDeepeningAndShowsItsDistance) {
  search.onDepth = [](int depth) {
    engine.think.bestMove = makeMove(7, 8);
    return depth < 3 ? 10 : kWin + depth - 2;
  };
  EXPECT_EQ(runTurnDriver(search, board), makeMove(7, 8)) << "only a five on the board now calls the quick win";
  EXPECT_EQ(search.depths, (std::vector<int>{1, 2, 3}));
  std::vector<std::string> out = lines();
  ASSERT_EQ(out.size(), 2u);
  // The elapsed time is the wall clock's: a loaded machine may show a millisecond.
  const size_t ms = out[0].find("ms |"), from = out[0].rfind(' ', ms) + 1;
  out[0] = out[0].substr(0, from) + "_" + out[0].substr(ms);
  EXPECT_EQ(out, (std::vector<std::string>{"MESSAGE 3 | 3 | _ms | 0 | 10000 :-)", "MESSAGE [8,9] [9,9] "}));
  search.onDepth = [](int depth) {
    engine.think.bestMove = makeMove(7, 8);
    return kWin + depth;  // a five on the board now
  };
  EXPECT_EQ(runTurnDriver(search, board), makeMove(0, 0)) << "the quick winning move plays it";
}

TEST_F(DriverTest, StartDepthAboveMaxDepthSearchesNothing) {
  engine.settings.startDepth = 6;
  engine.settings.maxDepth = 5;
  search.onDepth = [](int) { return 0; };
  const Move m = runTurnDriver(search, board);
  EXPECT_TRUE(search.depths.empty());
  EXPECT_EQ(engine.think.currentDepth, 5);
  EXPECT_EQ(board.at(m), EMPTY) << "a move is still chosen";
}

TEST_F(DriverTest, AbortedDepthWithoutValueIsDiscarded) {
  search.onDepth = [](int depth) {
    engine.think.bestMove = makeMove(6, depth);
    if (depth < 6) return 40 + depth;
    engine.search.aborted = 1;
    return 0;
  };
  EXPECT_EQ(runTurnDriver(search, board), makeMove(6, 5)) << "the move of the last finished depth";
  EXPECT_EQ(engine.think.currentDepth, 5);
  EXPECT_EQ(engine.think.finalValue, 45);
}

TEST_F(DriverTest, AbortedDepthWithValueCountsAndIsStarred) {
  engine.settings.showDetail = 1;
  search.onDepth = [](int depth) {
    engine.think.bestMove = makeMove(7, 8);
    if (depth < 6) return 40;
    engine.search.aborted = 1;
    return -700;
  };
  runTurnDriver(search, board);
  EXPECT_EQ(engine.think.currentDepth, 6);
  const auto out = lines();
  ASSERT_EQ(out.size(), 5u) << "one DETAIL line for depth 5 and one for 6, then the report";
  EXPECT_EQ(out[0].rfind("MESSAGE DETAIL DEPTH:5-5 VAL:40 TIME:", 0), 0u);
  EXPECT_NE(out[0].find("NODE:0m [I,8]"), std::string::npos) << out[0];
  EXPECT_EQ(out[1].rfind("MESSAGE DETAIL DEPTH:6-6* VAL:-700 ", 0), 0u);
  EXPECT_EQ(out[2].rfind("MESSAGE Depth: 6-6 | Time: ", 0), 0u);
  EXPECT_EQ(out[3], "MESSAGE Speed: 0 | Evaluation: -700 :-(");
  EXPECT_EQ(out[4], "MESSAGE Bestline: [I8] [I7] ");
}

TEST_F(DriverTest, SingleReplyStopsAfterDepthFive) {
  search.onDepth = [](int) {
    engine.think.bestMove = makeMove(7, 8);
    engine.think.singleReply = 1;
    return 0;
  };
  runTurnDriver(search, board);
  EXPECT_EQ(search.depths.size(), 5u);
  engine.settings.earlyStop = 0;
  engine.settings.maxDepth = 8;
  search.depths.clear();
  runTurnDriver(search, board);
  EXPECT_EQ(search.depths.size(), 8u);
}

TEST_F(DriverTest, StableMoveEndsTheTurnEarlyButAChangingOneDoesNot) {
  engine.settings.timeLeft = 24000;  // budget 1000 ms, not plentiful
  engine.settings.timeoutTurn = 1000;
  const auto slowDepth = [](bool stable) {
    return [stable](int depth) {
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
      engine.think.bestMove = stable ? makeMove(7, 8) : makeMove(6, depth % 2);
      return 0;
    };
  };
  search.onDepth = slowDepth(true);
  runTurnDriver(search, board);
  const size_t stableDepths = search.depths.size();
  search.depths.clear();
  search.onDepth = slowDepth(false);
  runTurnDriver(search, board);
  EXPECT_GE(stableDepths, 6u);
  EXPECT_LT(stableDepths, search.depths.size()) << "a stable move stops once an eighth of the budget is spent";
  EXPECT_GE(search.depths.size(), 10u) << "otherwise a quarter of the budget";
}

TEST_F(DriverTest, NoNodeLimitIgnoresTimeUntilStopped) {
  engine.settings.maxNode = -1;
  engine.settings.timeoutTurn = 1;
  engine.settings.maxDepth = 30;
  search.onDepth = [](int depth) {
    engine.think.bestMove = makeMove(7, 8);
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
    if (depth == 12) engine.stopFlag = 1;
    return 0;
  };
  runTurnDriver(search, board);
  EXPECT_EQ(search.depths.size(), 12u);
}

TEST_F(DriverTest, DecisionSearchIgnoresSingleRepliesAndKeepsAnAbortedValue) {
  engine.settings.timeLeft = 80000;
  engine.settings.timeIncrement = 2000;
  engine.settings.maxDepth = 9;
  search.onDepth = [](int depth) {
    EXPECT_EQ(engine.think.timeBudget, 80000 / 8 + 1000) << "the budget stays as it started";
    engine.think.bestMove = makeMove(7, 8);
    engine.think.singleReply = 1;
    engine.think.dropFlagA = 1;  // would lengthen a turn's budget
    if (depth < 7) return -30;
    engine.search.aborted = 1;
    return -45;
  };
  EXPECT_EQ(runDecisionSearch(search, board), -45);
  EXPECT_EQ(search.depths.size(), 7u);
  EXPECT_TRUE(lines().empty()) << "a decision prints nothing of its own";
}

TEST_F(DriverTest, CheckmateThinkKeepsOnlyAnInterruptedWinAndJudgesNoDraw) {
  engine.settings.timeLeft = 64000;
  engine.settings.timeIncrement = 2000;
  engine.think.drawAcceptable = 1;
  search.onDepth = [](int depth) {
    EXPECT_EQ(engine.think.timeBudget, 64000 / 16) << "a 16th of the time left, no increment";
    engine.think.bestMove = makeMove(6, depth);
    engine.think.singleReply = 1;  // would end a turn after depth 5
    if (depth < 7) return -300;
    engine.search.aborted = 1;
    return kWin + depth - 5;
  };
  EXPECT_EQ(runCheckmateDriver(search, board, true), makeMove(6, 7)) << "the interrupted win is kept";
  EXPECT_EQ(engine.think.currentDepth, 7);
  EXPECT_EQ(engine.think.drawAcceptable, 0) << "a checkmate think offers no draw";
  search.onDepth = [](int depth) {
    engine.think.bestMove = makeMove(6, depth);
    if (depth < 3) return 20;
    engine.search.aborted = 1;
    return 0;
  };
  EXPECT_EQ(runCheckmateDriver(search, board, true), makeMove(6, 2)) << "an interrupted iteration without a value";
  EXPECT_EQ(engine.think.currentDepth, 2);
}

TEST_F(DriverTest, EmptyBoardNeedsNoSearch) {
  board.reset(15, 15, 0);
  search.onDepth = [](int) { return 0; };
  EXPECT_EQ(runTurnDriver(search, board), makeMove(7, 7));
  EXPECT_TRUE(search.depths.empty());
}

TEST(Budget, Formulas) {
  Settings s;
  s.timeLeft = 60000;
  s.timeoutTurn = 5000;
  s.timeIncrement = 1000;
  EXPECT_EQ(thinkBudget(s, Budget::kTurn), 60000 / 24 + 500);
  EXPECT_EQ(thinkBudget(s, Budget::kTurn, 3), 5000) << "capped by the turn limit";
  s.timeoutTurn = 30000;
  EXPECT_EQ(thinkBudget(s, Budget::kTurn, 3), 500 + 3 * 60000 / 24);
  s.timeoutTurn = 5000;
  s.timeLeft = 2147483647;
  EXPECT_EQ(thinkBudget(s, Budget::kTurn, 4), 5000) << "no overflow with a huge time left";
  s.timeoutTurn = 100;
  EXPECT_EQ(thinkBudget(s, Budget::kTurn), 100);
  s.timeoutTurn = 30000;
  s.timeLeft = 60000;
  EXPECT_EQ(thinkBudget(s, Budget::kDecision), 60000 / 8 + 500);
  EXPECT_EQ(thinkBudget(s, Budget::kPonder), 60000 / 16);
}

TEST(DrawAcceptance, FollowsValueAndStones) {
  static Board b;
  b.reset(15, 15, 0);
  engine.settings.rule = 0;
  updateDrawAcceptance(engine.search, -100, BLACK, false, b);
  EXPECT_EQ(engine.think.drawAcceptable, 1);
  updateDrawAcceptance(engine.search, -100, BLACK, true, b);
  EXPECT_EQ(engine.think.drawAcceptable, 0);
  updateDrawAcceptance(engine.search, 20, BLACK, false, b);
  EXPECT_EQ(engine.think.drawAcceptable, 0) << "few stones";
  for (int i = 0; i < 60; ++i) b.placeStone(makeMove(i / 15, i % 15), b.sideToMove());
  updateDrawAcceptance(engine.search, 20, BLACK, false, b);
  EXPECT_EQ(engine.think.drawAcceptable, 1) << "a quarter of the board is filled";
  engine.settings.rule = 2;
  updateDrawAcceptance(engine.search, 20 + 125, BLACK, false, b);
  EXPECT_EQ(engine.think.drawAcceptable, 1) << "black's Renju edge is taken out first";
  updateDrawAcceptance(engine.search, 250, WHITE, false, b);
  EXPECT_EQ(engine.think.drawAcceptable, 0);
  engine.settings.rule = 0;
}

}  // namespace
}  // namespace zorva
