// The analyses on the engine's own search, at fixed depths so that nothing
// depends on the clock: N-best against the turn's move, the moves it may
// list, symmetric positions; a balanced reply found within reach.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <vector>

#include "analysis/balance.h"
#include "analysis/nbest.h"
#include "analysis/swap2.h"
#include "analysis/symmetry.h"
#include "board/forbid.h"
#include "board/zobrist.h"
#include "protocol/engine_state.h"
#include "protocol/output.h"
#include "search/driver.h"
#include "protocol/engine_search.h"
#include "search/tt.h"

namespace zorva {
namespace {

// Records the last list and balance answer reported.
class Recorder : public AnalysisReporter {
 public:
  std::vector<RankedMove> moves;
  std::vector<Move> stones;
  int32_t score = -1;
  std::vector<std::pair<SwapStep, bool>> swaps;

  void balance(const Progress&, int32_t, int32_t s, std::span<const Move> cells, bool) override {
    score = s;
    stones.assign(cells.begin(), cells.end());
  }
  void nbest(std::span<const RankedMove> list) override { moves.assign(list.begin(), list.end()); }
  void defence(std::span<const RankedMove>) override {}
  void noDefence(const RankedMove&, int) override {}
  void swapAnswer(SwapStep step, bool swap) override { swaps.push_back({step, swap}); }
  void swapStones(Move fourth, Move fifth) override { stones = {fourth, fifth}; }
};

class EngineAnalysisTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    initZobrist();
    sink = std::fopen("/dev/null", "w");
  }
  static void TearDownTestSuite() { std::fclose(sink); }
  void SetUp() override {
    Settings& s = engine.settings;
    s.rule = kFreestyle;
    s.timeoutTurn = 100000000;
    s.timeLeft = 100000000;
    s.startDepth = 1;
    s.maxDepth = 6;
    s.maxNode = -1;  // depth alone ends the deepening
    s.threadNum = 1;
    s.hashSize = 16;
    s.nbestSym = 0;
    std::fill(std::begin(engine.blockTable), std::end(engine.blockTable), 0);
    engine.blockPaths.reset();
    setOutput(sink);
  }
  void TearDown() override {
    setOutput(nullptr);
    std::fill(std::begin(engine.blockTable), std::end(engine.blockTable), 0);
    engine.blockPaths.reset();
  }

  // Stones alternate black, white, ... as two-letter cells, row then column from 'a'.
  static void setUp(int size, const char* cells) {
    engine.board.reset(size, size, engine.settings.rule);
    for (int i = 0; cells[i] && cells[i + 1]; i += 2)
      engine.board.placeStone(makeMove(cells[i] - 'a', cells[i + 1] - 'a'), engine.board.sideToMove());
  }
  // Every run starts cold, as a fresh engine would.
  static void coldStart() {
    engine.stopFlag = 0;
    engine.think.builtRule = -1;
    engine.think.finalValue = 0;
    engine.think.currentDepth = 0;
    if (transpositionTable.allocated()) transpositionTable.clear();
  }
  static std::vector<RankedMove> nbest(int count) {
    coldStart();
    GameAnalysis search;
    Recorder reporter;
    runNBest(search, reporter, count);
    return reporter.moves;
  }
  static Move turn() {
    coldStart();
    EngineSearch search;
    return runTurnDriver(search, engine.board, true);
  }

  static Recorder swap2(bool afterFive) {
    coldStart();
    GameAnalysis search;
    Recorder reporter;
    if (afterFive)
      runSwap2Second(search, reporter);
    else
      runSwap2First(search, reporter);
    return reporter;
  }

  static std::FILE* sink;
};
std::FILE* EngineAnalysisTest::sink = nullptr;

TEST_F(EngineAnalysisTest, NBestLeadsWithTheTurnsMoveListsDistinctMovesAndOrdersTheirValues) {
  const char* positions[] = {"hhhi",         "hhgiih",         "hhhiig",       "hhgigg",         "hhiijj",
                             "ghhghhigihjg", "hhhihjijiigg",   "fghghhhhhjgi", "hhgiiijhhjgg", "gghhhhiiijigfhhg"};
  int agree = 0;
  for (const char* p : positions) {
    setUp(15, p);
    const Move played = turn();
    const std::vector<RankedMove> lines = nbest(5);
    ASSERT_EQ(lines.size(), 5u) << p;
    agree += lines[0].move == played;
    std::set<Move> distinct;
    for (size_t i = 0; i < lines.size(); ++i) {
      distinct.insert(lines[i].move);
      if (i > 0) {
        EXPECT_LE(lines[i].value, lines[i - 1].value) << p;
      }
    }
    EXPECT_EQ(distinct.size(), lines.size()) << p;
  }
  EXPECT_GE(agree, 9);
}

TEST_F(EngineAnalysisTest, NBestListsEveryPlayableCellAndNoBlockedOne) {
  engine.settings.maxDepth = 2;
  setUp(5, "cccdbb");
  engine.board.placeStone(makeMove(0, 0), WALL);
  engine.blockTable[makeMove(4, 4)] = 1;
  // White's stone on (0, 4) leads into a blocked path.
  uint64_t key = zobristKeys[makeMove(0, 4)][WHITE];
  for (int i = 0; i < engine.board.moveCount; ++i)
    key ^= zobristKeys[engine.board.moves[i]][engine.board.at(engine.board.moves[i])];
  engine.blockPaths.add(key);
  engine.blockPaths.mark(makeMove(0, 4));
  const std::vector<RankedMove> lines = nbest(40);
  std::set<Move> listed;
  for (const RankedMove& m : lines) listed.insert(m.move);
  EXPECT_EQ(listed.size(), 25u - 3 - 3) << "22 empty cells less the wall, the blocked cell and the blocked path";
  EXPECT_EQ(listed.size(), lines.size());
  for (Move m : {makeMove(0, 0), makeMove(4, 4), makeMove(0, 4)}) EXPECT_EQ(listed.count(m), 0u);
}

TEST_F(EngineAnalysisTest, NBestCountsSymmetricImagesOnceWhenAsked) {
  engine.settings.maxDepth = 3;
  setUp(15, "hh");
  EXPECT_EQ(symmetricImages(engine.board, makeMove(7, 8), WHITE, std::vector<Move>(8).data()), 3);
  engine.settings.nbestSym = 1;
  const std::vector<RankedMove> lines = nbest(6);
  ASSERT_EQ(lines.size(), 6u);
  for (size_t i = 0; i < lines.size(); ++i) {
    Move images[8];
    const int n = symmetricImages(engine.board, lines[i].move, WHITE, images);
    for (size_t j = 0; j < lines.size(); ++j)
      EXPECT_EQ(std::count(images, images + n, lines[j].move), 0) << "moves " << i << " and " << j << " are images";
  }
  setUp(15, "hhhi");
  Move images[8];
  EXPECT_EQ(symmetricImages(engine.board, makeMove(8, 8), BLACK, images), 1) << "only the flip of the rows";
  EXPECT_EQ(images[0], makeMove(6, 8));
}

TEST_F(EngineAnalysisTest, BalanceOneFindsAReplyWorthTheOffset) {
  constexpr int kDepth = 4;
  engine.settings.maxDepth = kDepth;
  setUp(15, "hhhighii");
  // The offset is what one reply is worth to the mover at the depth searched.
  coldStart();
  GameAnalysis search;
  search.prepare();
  auto moverValue = [&](Move m) {
    Board& b = search.board();
    b.placeStone(m, b.sideToMove());
    search.startDepth(kDepth + 1);
    const int32_t v = -search.searchNode(kDepth, 1, -9999999, 10000000, b.sideToMove());
    b.removeStone(m);
    return v;
  };
  const int32_t offset = moverValue(makeMove(9, 6));
  ASSERT_LT(std::abs(offset), kMaxBalanceOffset);
  coldStart();
  Recorder reporter;
  runBalance(search, reporter, 1, offset);
  ASSERT_EQ(reporter.stones.size(), 1u);
  EXPECT_LE(reporter.score, 30);
  EXPECT_LE(std::abs(moverValue(reporter.stones[0]) - offset), 30);
}

// Black's two stones together against a lone white one far off, and the
// reverse; then a Renju opening close to even, which gets two stones added.
TEST_F(EngineAnalysisTest, Swap2AfterThreeStonesSwapsKeepsOrAddsAPair) {
  engine.settings.maxDepth = 4;
  using Answers = std::vector<std::pair<SwapStep, bool>>;
  setUp(15, "hhaahi");
  EXPECT_EQ(swap2(false).swaps, (Answers{{SwapStep::First, true}}));
  setUp(15, "aahhoo");
  EXPECT_EQ(swap2(false).swaps, (Answers{{SwapStep::First, false}}));
  engine.settings.rule = kRenju;
  engine.settings.maxDepth = 3;
  setUp(15, "hhhijf");
  const Recorder r = swap2(false);
  EXPECT_TRUE(r.swaps.empty());
  ASSERT_EQ(r.stones.size(), 2u);
  const Move fourth = r.stones[0], fifth = r.stones[1];
  ASSERT_NE(fourth, fifth);
  for (Move m : {fourth, fifth}) ASSERT_TRUE(engine.board.inside(rowOf(m), colOf(m)) && engine.board.at(m) == EMPTY);
  engine.board.placeStone(fourth, WHITE);
  EXPECT_FALSE(isForbidden(engine.board, fifth)) << "black's fifth stone is playable";
}

// The answer after five stones follows the sign of the turn's value for
// the side to move, both at the same depth from a cold table.
TEST_F(EngineAnalysisTest, Swap2AfterFiveStonesSwapsExactlyWhenTheSideToMoveStandsWorse) {
  engine.settings.maxDepth = 4;
  int swaps = 0;
  for (const char* five : {"hhhiiiggjj", "hhaahiaoob", "aahhoohiob", "hhhiigjjgh", "hhgiiijhhj", "hhhijfgicc"}) {
    setUp(15, five);
    turn();
    const int32_t value = engine.think.finalValue;
    const Recorder r = swap2(true);
    ASSERT_EQ(r.swaps.size(), 1u) << five;
    EXPECT_EQ(r.swaps[0].second, value < 0) << five << " " << value;
    swaps += r.swaps[0].second;
  }
  EXPECT_GT(swaps, 0);
  EXPECT_LT(swaps, 6);
}

}  // namespace
}  // namespace zorva
