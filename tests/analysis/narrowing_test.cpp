// Successive narrowing against a scripted search: the tie and race rules,
// the early end on a perfect balance, a stop in the middle of a pass, the
// shortening of the list; and the balance search's offset and answer.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <vector>

#include "analysis/balance.h"
#include "analysis/narrowing.h"
#include "analysis/swap2.h"
#include "board/zobrist.h"
#include "protocol/engine_state.h"

namespace zorva {
namespace {

// Every search returns the value the script gives the candidate's first
// stone at that depth, held inside the window as a fail-hard search does.
class ScriptedSearch : public AnalysisSearch {
 public:
  std::function<int32_t(int depth, Move first)> value = [](int, Move) { return 0; };
  int searches = 0;
  int stopAtSearch = -1;  // the search that finds the stop request
  DecisionResult decision{0, 1};
  bool twoStones = false;  // candidates are pairs: the first stone is the one before last
  Board b;

  ScriptedSearch() { b.reset(15, 15, kFreestyle); }
  SearchContext& context() override { return engine.search; }
  void prepare() override {}
  Board& board() override { return b; }
  int32_t evaluate(Colour) override { return value(0, firstStone()); }
  void startDepth(int) override {}
  int32_t searchNode(int depth, int, int32_t alpha, int32_t beta, Colour) override {
    if (++searches == stopAtSearch) stopped_ = true;
    return stopped_ ? 0 : std::clamp(value(depth, firstStone()), alpha, beta);
  }
  RootResult searchRoot(int, Colour, std::span<const Move>, Move) override { return {0, kNoMove, false}; }
  DecisionResult searchDecision() override { return decision; }
  int threatWinPlies(Colour, int) override { return -1; }
  bool aborted() override { return stopped_; }
  void mergeStatistics() override {}

 private:
  Move firstStone() const { return b.moves[b.moveCount - (twoStones ? 2 : 1)]; }
  bool stopped_ = false;
};

class NarrowingTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { initZobrist(); }
  void SetUp() override {
    Settings& s = engine.settings;
    s.maxNode = -1;  // passes end by depth only
    s.maxDepth = 1;
    engine.stopFlag = 0;
    startAnalysisClock(engine.search, 100000);
  }
  // Candidates on cells (7, 0), (7, 1), ... in this order, scored as given.
  void list(std::initializer_list<int32_t> scores) {
    candidates.count = 0;
    for (int32_t score : scores) {
      const int i = candidates.count++;
      candidates.entries[i] = {score, makeMove(7, i), kNoMove};
    }
  }
  std::vector<int> columns() const {
    std::vector<int> cols;
    for (int i = 0; i < candidates.count; ++i) cols.push_back(colOf(candidates.entries[i].first));
    return cols;
  }
  int narrowOnce() {
    return narrow(search, rules, candidates, [&](int depth) { passes.push_back(depth); });
  }

  ScriptedSearch search;
  const NarrowingRules rules{BLACK, 1, WHITE, 0};
  CandidateList& candidates = analysisCandidates();
  std::vector<int> passes;
};

TEST_F(NarrowingTest, ATieKeepsTheEarlierCandidateAheadAndABetterOneMovesToTheFront) {
  list({10, 20, 30, 40});
  // Cell 0 scores 5; cell 1 ties it, cell 2 beats it, cell 3 ties the new best.
  search.value = [](int, Move m) { return int32_t(std::vector<int>{5, -5, 2, -2}[colOf(m)]); };
  EXPECT_EQ(narrowOnce(), 1);
  EXPECT_EQ(columns(), (std::vector<int>{2, 3, 0, 1}));
  std::vector<int32_t> scores;
  for (int i = 0; i < candidates.count; ++i) scores.push_back(candidates.entries[i].score);
  EXPECT_EQ(scores, (std::vector<int32_t>{2, 3, 5, 6})) << "a tie counts one worse";
  EXPECT_EQ(passes, (std::vector<int>{1}));
}

TEST_F(NarrowingTest, APerfectBalanceEndsTheShortListsPass) {
  list({1, 2, 3});
  search.value = [](int, Move m) { return colOf(m) == 1 ? 0 : 50; };
  narrowOnce();
  EXPECT_EQ(search.searches, 3) << "the first two are searched, the zero ends the pass";
  EXPECT_EQ(colOf(candidates.entries[0].first), 1);
  EXPECT_EQ(candidates.entries[0].score, 0);
}

TEST_F(NarrowingTest, AStopInAPassKeepsTheBestFoundAndTheLastDepthDone) {
  engine.settings.maxDepth = 5;
  list({10, 20, 30});
  // Depth 2 finds cell 1 better, then the stop comes in the search of cell 2.
  search.value = [](int depth, Move m) { return depth == 2 && colOf(m) == 1 ? 1 : 5 + colOf(m); };
  search.stopAtSearch = 3 + 4;  // three at depth 1, then cell 0, cell 1's race and full search, cell 2
  EXPECT_EQ(narrowOnce(), 1);
  EXPECT_EQ(passes, (std::vector<int>{1}));
  EXPECT_EQ(colOf(candidates.entries[0].first), 1);
  EXPECT_EQ(candidates.entries[0].score, 1);
}

TEST_F(NarrowingTest, ListsShrinkByDepthWhenLongAndByTheirTailWhenShortAndClose) {
  EXPECT_EQ(shortenedLength(5000, 1, 0), 1024);
  EXPECT_EQ(shortenedLength(700, 2, 0), 512);
  EXPECT_EQ(shortenedLength(200, 4, 0), 128);
  EXPECT_EQ(shortenedLength(100, 5, 0), 60);
  EXPECT_EQ(shortenedLength(40, 9, 0), 31);
  EXPECT_EQ(shortenedLength(20, 3, 16), 17);
  EXPECT_EQ(shortenedLength(12, 3, 0), 10);
  EXPECT_EQ(shortenedLength(5, 3, 0), 4);
  EXPECT_EQ(shortenedLength(4, 3, 0), 4);
  EXPECT_EQ(shortenedLength(20, 3, 17), 20) << "no close candidate yet: keep them all";
}

// Records what the balance search and the swap decisions report.
class BalanceLines : public AnalysisReporter {
 public:
  struct Line {
    int32_t offset, score;
    std::vector<Move> stones;
    bool final;
  };
  std::vector<Line> lines;
  std::vector<std::pair<SwapStep, bool>> swaps;
  std::vector<Move> offered;
  void balance(const Progress&, int32_t offset, int32_t score, std::span<const Move> stones, bool final) override {
    lines.push_back({offset, score, {stones.begin(), stones.end()}, final});
  }
  void nbest(std::span<const RankedMove>) override {}
  void defence(std::span<const RankedMove>) override {}
  void noDefence(const RankedMove&, int) override {}
  void swapAnswer(SwapStep step, bool swap) override { swaps.push_back({step, swap}); }
  void swapStones(Move fourth, Move fifth) override { offered = {fourth, fifth}; }
};

TEST_F(NarrowingTest, BalanceClampsTheOffsetAndAnswersAfterAStop) {
  search.b.placeStone(makeMove(7, 7), BLACK);
  engine.settings.maxDepth = 3;
  // The position is worth its first stone's column to the searched side:
  // balance one's target for white is -2000 after the clamp.
  search.value = [](int, Move m) { return int32_t(-2000 + 10 * colOf(m)); };
  for (int32_t offset : {5000, -5000}) {
    BalanceLines reporter;
    runBalance(search, reporter, 1, offset);
    ASSERT_FALSE(reporter.lines.empty());
    EXPECT_EQ(reporter.lines.back().offset, offset > 0 ? 2000 : -2000);
    EXPECT_TRUE(reporter.lines.back().final);
    EXPECT_EQ(std::count_if(reporter.lines.begin(), reporter.lines.end(), [](auto& l) { return l.final; }), 1);
  }
  BalanceLines stopped;
  search.stopAtSearch = search.searches + 1;
  search.twoStones = true;
  runBalance(search, stopped, 2, 0);
  ASSERT_EQ(stopped.lines.size(), 1u) << "only the answer: no pass was completed";
  EXPECT_TRUE(stopped.lines[0].final);
  EXPECT_EQ(stopped.lines[0].stones.size(), 2u);
}

// Swap2 on a three-stone opening; pairs are scored by their fourth stone:
// the one on (2, 2) balances the game at every depth but the second.
class Swap2Test : public NarrowingTest {
 protected:
  void SetUp() override {
    NarrowingTest::SetUp();
    for (Move m : {makeMove(3, 3), makeMove(5, 5), makeMove(4, 4)}) search.b.placeStone(m, search.b.sideToMove());
    search.twoStones = true;
    search.value = [](int depth, Move first) { return first == kBalancing ? (depth == 2 ? 9 : 0) : 3; };
  }
  BalanceLines first(int32_t value, int depth = 4) {
    search.decision = {value, depth};
    BalanceLines reporter;
    runSwap2First(search, reporter);
    return reporter;
  }
  static constexpr Move kBalancing = makeMove(2, 2);
};

TEST_F(Swap2Test, FirstDecisionSwapsKeepsOrOffersTheMostBalancedPairWithinTheMargin) {
  using Answers = std::vector<std::pair<SwapStep, bool>>;
  EXPECT_EQ(first(201).swaps, (Answers{{SwapStep::First, false}}));
  EXPECT_EQ(first(-201).swaps, (Answers{{SwapStep::First, true}}));
  EXPECT_EQ(first(-10000005, 3).swaps, (Answers{{SwapStep::First, true}})) << "a proven loss less its distance";
  for (int32_t value : {200, -200}) {
    const BalanceLines r = first(value);
    EXPECT_TRUE(r.swaps.empty()) << value;
    ASSERT_EQ(r.offered.size(), 2u) << value;
    EXPECT_EQ(r.offered[0], kBalancing);
    EXPECT_EQ(search.b.at(r.offered[1]), EMPTY);
    EXPECT_NE(r.offered[1], kBalancing);
  }
  EXPECT_EQ(search.b.moveCount, 3) << "every pair was taken back";
}

TEST_F(Swap2Test, AStopKeepsThePairOfTheLastFinishedPass) {
  engine.settings.maxDepth = 3;
  // Pass 1 puts the pairs on (2, 2) first; pass 2 finds another pair better
  // than them after they are searched, and the stop comes two searches later.
  const NarrowingRules rules{WHITE, 2, WHITE, 0};
  collectPairs(search, rules, false, candidates);
  const int pairs = candidates.count;
  const int balancing = int(std::count_if(candidates.entries, candidates.entries + pairs,
                                          [](const Candidate& c) { return c.first == kBalancing; }));
  ASSERT_GE(pairs, 32);
  search.stopAtSearch = pairs + balancing + 2;
  const BalanceLines r = first(0);
  ASSERT_EQ(r.offered.size(), 2u);
  EXPECT_EQ(r.offered[0], kBalancing);
  EXPECT_NE(candidates.entries[0].first, kBalancing) << "the cut pass did move a better pair to the front";
}

TEST_F(Swap2Test, SecondDecisionSwapsExactlyOnANegativeValue) {
  for (const auto& [value, swap] : std::vector<std::pair<int32_t, bool>>{
           {-1, true}, {0, false}, {1, false}, {-10000002, true}, {10000002, false}}) {
    search.decision = {value, 2};
    BalanceLines r;
    runSwap2Second(search, r);
    EXPECT_EQ(r.swaps, (std::vector<std::pair<SwapStep, bool>>{{SwapStep::Second, swap}})) << value;
  }
}

}  // namespace
}  // namespace zorva
