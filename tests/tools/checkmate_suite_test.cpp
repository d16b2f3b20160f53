// The checkmate solvers against the tactical positions of every rule: each
// level's think, through the checkmate driver, on the wins by fours, the
// wins that need threes and the positions without a win. Every win a level
// claims is checked by the brute force on the referee's rules against every
// defence; no level may claim one the brute force cannot confirm.
//
// ZORVA_CHECKMATE_REPORT=1 runs the measured suite instead: every winning
// position at every level with a ten-second budget, and prints per level
// how many it proves within 1 s and 10 s and its median time.
#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "analysis/checkmate.h"
#include "protocol/engine_search.h"
#include "board/zobrist.h"
#include "search/threat_solver.h"
#include "search/tt.h"
#include "tools/four_positions.h"
#include "tools/referee_search.h"
#include "tools/threat_positions.h"
#include "tools/threat_verifier.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define ZORVA_SUITE_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define ZORVA_SUITE_SANITIZED 1
#endif
#endif

namespace zorva {
namespace {

using namespace tactics;

enum class Known { Win, NoWin, Open };

struct Position {
  const char* name;
  int rule;
  int size;
  const char* black;
  const char* white;
  Known known;
  bool foursWin;  // a five to make, or a win by fours: every level proves it
};

std::ostream& operator<<(std::ostream& out, const Position& p) { return out << p.name; }

std::vector<Position> suitePositions() {
  std::vector<Position> all;
  for (const Tactic& t : kTactics) {
    const bool win = t.kind == Kind::Five || t.kind == Kind::OpenFour || t.kind == Kind::Vcf ||
                     t.kind == Kind::RenjuTrap;
    all.push_back({t.name, t.rule, t.size, t.black, t.white, win ? Known::Win : Known::Open, win});
  }
  for (const ThreatTactic& t : kWins) all.push_back({t.name, t.rule, t.size, t.black, t.white, Known::Win, false});
  // The side to move wins neither by fours nor by three threats here.
  for (const ThreatTactic& t : kDefences) all.push_back({t.name, t.rule, t.size, t.black, t.white, Known::NoWin, false});
  return all;
}

struct Verdict {
  bool proven;
  Move move;
  int64_t ms;
};

constexpr int kConfirmBudgetMs = 2000;

// One checkmate think of `level` on a cold start, within `budgetMs`.
Verdict think(const Position& p, int level, int budgetMs) {
  const Move m = coldThink(p.rule, p.size, p.black, p.white, {1, 100, budgetMs}, [level] {
    CheckmateSearch search(level);
    return runCheckmateDriver(search, engine.board, true);
  });
  return {engine.think.finalValue >= kProvenBound, m, engine.think.elapsedMs};
}

// The brute force's word on a claimed win: the move makes five, or wins by
// threats against every defence, or (a quiet move of level 4) against
// every reply followed by such a win. Short wins first: a fresh brute
// force per budget keeps its node limit for the longer ones.
bool confirmedAtOnce(const referee::Board& board, Rule rule, Cell c, int level) {
  const Stone x = board.toMove();
  for (int threats = 0; threats <= kLongWinThreats; ++threats) {
    referee::Board copy = board;
    ThreatVerifier v(copy, rule);
    if (v.winsAfter(x, c, threats) || (level == 4 && v.winsAfterQuiet(x, c, threats))) return true;
    if (v.exhausted()) return false;
  }
  return false;
}

Verdict think(const Position& p, int level, int budgetMs);

// Move by move: a claim the brute force cannot confirm at once may still
// be a four whose block is forced, after which the level's next claim is
// checked the same way.
bool confirmed(const Position& p, Move m, int level, int fours = 0) {
  constexpr int kMaxForcedFours = 8;
  referee::Board board = refereeBoard(p.size, p.black, p.white);
  const Stone x = board.toMove(), o = referee::other(x);
  const Cell c{rowOf(m), colOf(m)};
  const Rule rule = refereeRule(p.rule);
  Verifier v(board, rule);
  if (m == kNoMove || board.at(c.x, c.y) != referee::kEmpty || !v.legal(x, c.x, c.y)) return false;
  if (v.five(c.x, c.y, x) || confirmedAtOnce(board, rule, c, level)) return true;
  v.put(c.x, c.y, x);
  const std::vector<Cell> fives = v.fivePoints(x);
  if (fives.size() != 1 || !v.fivePoints(o).empty() || fours == kMaxForcedFours) return false;
  std::string black = p.black, white = p.white;
  (x == referee::kBlack ? black : white) += moveText(m);
  (x == referee::kBlack ? white : black) += moveText(makeMove(fives[0].x, fives[0].y));
  const Position next{p.name, p.rule, p.size, black.c_str(), white.c_str(), Known::Open, false};
  const Verdict after = think(next, level, kConfirmBudgetMs);
  return after.proven && confirmed(next, after.move, level, fours + 1);
}

std::string nameOf(const ::testing::TestParamInfo<Position>& info) { return info.param.name; }

// Under the sanitizers a sample of the positions, with time for their slowness.
#ifdef ZORVA_SUITE_SANITIZED
constexpr size_t kStride = 8;
constexpr int kCiBudgetMs = 600;
#else
constexpr size_t kStride = 1;
constexpr int kCiBudgetMs = 100;
#endif

std::vector<Position> sampled() {
  std::vector<Position> kept;
  const std::vector<Position> all = suitePositions();
  for (size_t i = 0; i < all.size(); i += kStride) kept.push_back(all[i]);
  return kept;
}

using TacticsCheckmate = ::testing::TestWithParam<Position>;

TEST_P(TacticsCheckmate, EveryLevelClaimsOnlyForcedWinsAndFindsTheFoursWins) {
  initZobrist();
  const SavedSettings saved;
  const Position& p = GetParam();
  Move confirmedMove = kNoMove;
  for (int level = 1; level <= kSolverLevels; ++level) {
    const Verdict v = think(p, level, kCiBudgetMs);
    EXPECT_TRUE(v.proven || !p.foursWin) << "level " << level << " misses a win by fours";
    if (!v.proven) continue;
    EXPECT_NE(p.known, Known::NoWin) << "level " << level << " claims " << moveText(v.move) << " with no win";
    if (v.move == confirmedMove) continue;
    EXPECT_TRUE(confirmed(p, v.move, level)) << "level " << level << ": the brute force does not confirm "
                                             << moveText(v.move);
    confirmedMove = v.move;
  }
}

INSTANTIATE_TEST_SUITE_P(Tactics, TacticsCheckmate, ::testing::ValuesIn(sampled()), nameOf);

bool reportOn() {
  const char* on = std::getenv("ZORVA_CHECKMATE_REPORT");
  return on && std::string(on) == "1";
}

TEST(TacticsCheckmateReport, ProvenWithinOneAndTenSecondsAndMedianTime) {
  if (!reportOn()) GTEST_SKIP() << "a measurement, not a check: ZORVA_CHECKMATE_REPORT=1 runs it";
  initZobrist();
  const SavedSettings saved;
  constexpr int kBudgetMs = 10000;
  std::vector<Position> wins;
  for (const Position& p : suitePositions())
    if (p.known == Known::Win) wins.push_back(p);
  for (int level = 1; level <= kSolverLevels; ++level) {
    std::vector<int64_t> times;
    int withinOne = 0, withinTen = 0;
    for (const Position& p : wins) {
      const Verdict v = think(p, level, kBudgetMs);
      const bool ok = v.proven && confirmed(p, v.move, level);
      EXPECT_TRUE(!v.proven || ok) << p.name << " level " << level << ": unconfirmed " << moveText(v.move);
      times.push_back(ok ? v.ms : kBudgetMs);
      withinOne += ok && v.ms <= 1000;
      withinTen += ok;
    }
    std::sort(times.begin(), times.end());
    std::printf("  level %d: %d of %zu proven within 1 s, %d within 10 s, median %lld ms\n", level, withinOne,
                wins.size(), withinTen, (long long)times[times.size() / 2]);
  }
}

}  // namespace
}  // namespace zorva
