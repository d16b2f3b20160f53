// Tactical positions with known answers: fives to complete and to stop, open
// fours, wins by continuous fours from three to fifteen fours long under
// every rule, defences against such wins, and the Renju positions where a
// forbidden point decides: black's win that runs through one is no win, and
// white's four whose completion black may not take is one.
//
// Every answer is established here by a brute-force search written on the
// referee's rules code, which shares nothing with the engine's pattern
// tables; the frozen answers in the table must match it. The engine's threat
// search and its turn driver, searching with one thread and with four, must
// then agree with those answers.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "board/board.h"
#include "board/zobrist.h"
#include "match/rules.h"
#include "search/searcher.h"
#include "search/vcf.h"
#include "tools/four_positions.h"
#include "tools/referee_search.h"
#include "protocol/engine_search.h"

namespace zorva {
namespace {

using namespace tactics;

bool inAnswer(const Tactic& t, Move m) { return inCells(t.answer, m); }

referee::Board refereeBoard(const Tactic& t) { return tactics::refereeBoard(t.size, t.black, t.white); }

bool winKind(Kind k) { return k == Kind::Five || k == Kind::OpenFour || k == Kind::Vcf || k == Kind::RenjuTrap; }

// Deep enough for every answer here to be proven or seen; the threat search
// does the long wins at any depth.
constexpr int kDriverDepth = 6;

class TacticsTest : public ::testing::TestWithParam<Tactic> {
 protected:
  static void SetUpTestSuite() { initZobrist(); }
  void SetUp() override {
    engine.search.aborted = 0;
    engine.stopFlag = 0;
    engine.settings.maxNode = -1;  // no clock: the verdict must not depend on the machine's speed
    prepareSearchContext();
  }

  // The threat search's plies to the five for `side`, or -1.
  static int threatSearchPlies(Searcher& s, Colour side) {
    s.clearThreatCache();
    const int32_t r = vcf(s, 0, side);
    return r > 0 ? kWin + kVcfDepthBase - r : -1;
  }

  // One turn of the engine on the position with `threads` search threads.
  static Move driverMove(const Tactic& t, int threads) {
    return engineTurn(t.rule, t.size, t.black, t.white, {.threads = threads, .maxDepth = kDriverDepth});
  }
};

TEST_P(TacticsTest, BruteForceOnTheRefereeRulesConfirmsTheAnswer) {
  const Tactic& t = GetParam();
  referee::Board b = refereeBoard(t);
  Verifier v(b, refereeRule(t.rule));
  const Stone x = b.toMove(), o = referee::other(x);
  const std::vector<Cell> ownFives = v.fivePoints(x), theirFives = v.fivePoints(o);
  if (t.kind != Kind::Five) {
    EXPECT_TRUE(ownFives.empty()) << "a five to complete would be the answer";
  }
  if (t.kind != Kind::Five && t.kind != Kind::Block) {
    EXPECT_TRUE(theirFives.empty()) << "a five to stop would be";
  }
  std::vector<Cell> answer;
  switch (t.kind) {
    case Kind::Five:
      answer = ownFives;
      break;
    case Kind::Block:
      ASSERT_EQ(theirFives.size(), 1u);
      answer = v.holdingMoves(x);
      EXPECT_EQ(cellsText(answer), cellsText(theirFives)) << "only the block may hold";
      break;
    case Kind::OpenFour:
    case Kind::Vcf:
    case Kind::RenjuTrap:
      EXPECT_EQ(v.shortest(x), 2 * t.fours);
      answer = v.winningFours(x, kPlyBudget);
      if (t.kind == Kind::RenjuTrap) {
        v.ignoreForbidden(true);
        EXPECT_EQ(v.win(x, kPlyBudget), -1) << "a black that could take every point would hold";
      }
      break;
    case Kind::Defend:
      EXPECT_EQ(v.shortest(o), 2 * t.fours);
      EXPECT_EQ(v.win(x, kPlyBudget), -1) << "the side to move must have no win of its own";
      answer = v.holdingMoves(x);
      break;
    case Kind::RenjuNoWin:
      EXPECT_EQ(x, referee::kBlack);
      EXPECT_EQ(v.win(x, kPlyBudget), -1);
      v.ignoreForbidden(true);
      EXPECT_EQ(v.shortest(x), 2 * t.fours) << "the win the forbidden points take away";
      break;
  }
  EXPECT_FALSE(v.exhausted) << "the brute force ran out of nodes";
  EXPECT_EQ(cellsText(answer), t.answer);
  if (t.kind != Kind::RenjuNoWin) {
    EXPECT_FALSE(answer.empty());
  }
}

TEST_P(TacticsTest, ThreatSearchAgrees) {
  const Tactic& t = GetParam();
  Searcher& s = searcher(0);
  setUpBoard(s.board, t.rule, t.size, t.black, t.white);
  const Colour side = s.board.sideToMove(), other = opponent(side);
  if (winKind(t.kind)) {
    const int plies = threatSearchPlies(s, side);
    ASSERT_GE(plies, 0) << "no win found";
    EXPECT_GE(plies, 2 * t.fours) << "a win shorter than the shortest there is";
    s.clearThreatCache();
    const Move m = quickWinMove(s, side);
    EXPECT_TRUE(inAnswer(t, m)) << "starts with " << moveText(m) << ", answers " << t.answer;
  } else if (t.kind == Kind::RenjuNoWin) {
    EXPECT_EQ(threatSearchPlies(s, side), -1);
    s.clearThreatCache();
    EXPECT_EQ(quickWinMove(s, side), kNoMove);
  } else {
    // The opponent's win is seen, and every holding move stops it.
    EXPECT_GE(threatSearchPlies(s, other), 0);
    for (const Cell& c : cellsOf(t.answer)) {
      s.board.placeStone(makeMove(c.x, c.y), side);
      EXPECT_EQ(threatSearchPlies(s, other), -1) << "after " << moveText(makeMove(c.x, c.y));
      s.board.removeStone(makeMove(c.x, c.y));
    }
  }
}

TEST_P(TacticsTest, TurnDriverPlaysAnAnswerWithOneAndFourThreads) {
  const Tactic& t = GetParam();
  const SavedSettings saved;
  referee::Board b = refereeBoard(t);
  for (int threads : {1, 4}) {
    const Move m = driverMove(t, threads);
    ASSERT_NE(m, kNoMove);
    ASSERT_EQ(b.at(rowOf(m), colOf(m)), referee::kEmpty) << moveText(m) << " with " << threads << " threads";
    if (t.kind == Kind::RenjuNoWin) {
      EXPECT_FALSE(referee::isForbidden(b, rowOf(m), colOf(m)))
          << "played the forbidden " << moveText(m) << " with " << threads << " threads";
    } else {
      EXPECT_TRUE(inAnswer(t, m)) << "played " << moveText(m) << " with " << threads << " threads, answers "
                                  << t.answer;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Tactics, TacticsTest, ::testing::ValuesIn(kTactics),
                         [](const ::testing::TestParamInfo<Tactic>& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace zorva
