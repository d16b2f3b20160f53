// The threat search over threes claims wins against a chosen set of
// defences. These tests let the defender answer with every legal cell of the
// board instead, on random crowded positions of every rule, and demand that
// each claimed win survives all of them.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "board/forbid.h"
#include "board/zobrist.h"
#include "protocol/engine_state.h"
#include "search/search.h"
#include "search/searcher.h"
#include "search/movegen.h"
#include "search/tt.h"
#include "search/vcf.h"
#include "search/vct.h"
#include "protocol/engine_search.h"

namespace zorva {
namespace {

constexpr int kSide = 15;
constexpr int kNodes = 4000;
constexpr int kThrees = 4;
constexpr int kCheckNodes = 200000;  // a claimed win is checked again with room to spare

bool legalFor(Board& b, Move m, Colour c) {
  return b.at(m) == EMPTY && !(b.rule == kRenju && c == BLACK && isForbidden(b, m));
}

// True when `attacker`, to move, wins against every legal defence, each
// win of the threat search checked again one threat deeper.
bool winHolds(Searcher& s, Colour attacker, int levels) {
  Board& b = s.board;
  if (!b.threat(attacker, kFiveClass).empty() || vcfPlies(s, attacker, nullptr) >= 0) return true;
  Move first = kNoMove;
  if (vctPlies(s, attacker, kCheckNodes, kThrees, &first) < 0) return false;
  if (levels == 0) return true;
  const Colour defender = opponent(attacker);
  b.placeStone(first, attacker);
  bool holds = b.threat(defender, kFiveClass).empty();
  for (int row = 0; holds && row < kSide; ++row)
    for (int col = 0; holds && col < kSide; ++col) {
      const Move m = makeMove(row, col);
      if (!legalFor(b, m, defender)) continue;
      b.placeStone(m, defender);
      holds = winHolds(s, attacker, levels - 1);
      b.removeStone(m);
    }
  b.removeStone(first);
  return holds;
}

// A defender's four is checked like any other reply: the attacker, to move
// with the four standing, must block it inside its own win.
TEST(Threes, EveryClaimedWinHoldsAgainstEveryDefence) {
  initZobrist();
  engine.settings.maxNode = -1;
  engine.search.aborted = 0;
  prepareSearchContext();
  Searcher& s = searcher(2);
  std::mt19937 rng(7);
  int wins = 0, checked = 0;
  for (int rule : {kFreestyle, kStandard, kRenju})
    for (int game = 0; game < 60; ++game) {
      s.board.reset(kSide, kSide, rule);
      s.clearThreatCache();
      std::uniform_int_distribution<int> near(-2, 2);
      Move last = makeMove(7, 7);
      for (int ply = 0; ply < 40; ++ply) {
        Board& b = s.board;
        const Colour side = b.sideToMove();
        if (!b.threat(BLACK, kFiveClass).empty() || !b.threat(WHITE, kFiveClass).empty()) break;
        if (ply >= 8 && b.threat(opponent(side), kFourClass).empty() && vcfPlies(s, side, nullptr) < 0 &&
            vctPlies(s, side, kNodes, kThrees, nullptr) >= 0) {
          ++wins;
          EXPECT_TRUE(winHolds(s, side, 2)) << "rule " << rule << " game " << game << " ply " << ply;
        }
        ++checked;
        Move m = kNoMove;
        for (int tries = 0; tries < 50 && m == kNoMove; ++tries) {
          const int r = rowOf(last) + near(rng), c = colOf(last) + near(rng);
          if (b.inside(r, c) && legalFor(b, makeMove(r, c), side)) m = makeMove(r, c);
        }
        if (m == kNoMove) break;
        b.placeStone(m, side);
        last = b.moves[rng() % b.moveCount];
      }
    }
  EXPECT_GT(wins, 30) << "too few wins by threes to test (" << checked << " positions)";
}

// White's twos on row 7 and column 8 meet at (7,8): a double three there
// wins by threes alone, which no chain of fours can show.
void doubleThreePosition(Searcher& s, Colour toMove) {
  s.board.reset(kSide, kSide, kFreestyle);
  s.clearThreatCache();
  const Move white[] = {makeMove(7, 5), makeMove(7, 6), makeMove(5, 8), makeMove(6, 8)};
  const Move black[] = {makeMove(8, 6), makeMove(12, 2), makeMove(2, 12), makeMove(13, 13)};
  for (int i = 0; i < 4; ++i) {
    s.board.placeStone(black[i], BLACK);
    s.board.placeStone(white[i], WHITE);
  }
  if (toMove == WHITE) s.board.placeStone(makeMove(0, 14), BLACK);
}

TEST(Threes, RootPlaysTheWinAndDefendsAgainstIt) {
  initZobrist();
  transpositionTable.resize(16);
  engine.settings.maxNode = -1;
  engine.search.aborted = 0;
  prepareSearchContext();
  Searcher& s = searcher(2);
  doubleThreePosition(s, WHITE);
  ASSERT_LT(vcfPlies(s, WHITE, nullptr), 0);
  Move first = kNoMove;
  EXPECT_GE(vctPlies(s, WHITE, kNodes, kThrees, &first), 0);
  EXPECT_EQ(first, makeMove(7, 8));
  engine.think.bestMove = kNoMove;
  EXPECT_GT(searchRoot(s, 3, WHITE), 9000000) << "the root proves the win";
  EXPECT_EQ(engine.think.bestMove, makeMove(7, 8));

  // Black to move: only cells of white's win, or black's own threats, can
  // stop it; the others are dropped.
  doubleThreePosition(s, BLACK);
  ScoredMove moves[kMaxStones], generated[kMaxStones];
  const MoveRequest request{BLACK, 1, nullptr, 0, nullptr, nullptr};
  const int all = generateMoves(s, request, moves);
  std::copy(moves, moves + all, generated);
  const int kept = keepThreatDefences(s, BLACK, moves, all, kNodes, kThrees);
  EXPECT_LT(kept, all);
  auto isKept = [&](Move m) {
    return std::find_if(moves, moves + kept, [m](const ScoredMove& k) { return k.move == m; }) != moves + kept;
  };
  EXPECT_TRUE(isKept(makeMove(7, 8)));
  // Every answer dropped must leave white's win standing. The list is
  // compacted in place, so the dropped ones are found in the copy.
  for (int i = 0; i < all; ++i) {
    const Move m = generated[i].move;
    if (isKept(m)) continue;
    s.board.placeStone(m, BLACK);
    EXPECT_GE(vctPlies(s, WHITE, kCheckNodes, kThrees, nullptr), 0)
        << rowOf(m) << "," << colOf(m) << " stops white's win but was dropped";
    s.board.removeStone(m);
  }
}

// White, to move, would win by seven fours on 20x20. Black's threes and the
// cells of a longer white win that leave those fours standing lose.
TEST(Threes, DefenceFilterDropsMovesThatLeaveAWinByFours) {
  initZobrist();
  engine.settings.maxNode = -1;
  engine.search.aborted = 0;
  prepareSearchContext();
  Searcher& s = searcher(2);
  s.clearThreatCache();
  const char* black = "cdcgefeggdhhjhjnkckgklknnbohqi";
  const char* white = "ggghhgijjfjijljmmcmenfpfqgshth";
  s.board.reset(20, 20, kFreestyle);
  for (int i = 0; black[i]; i += 2) {
    s.board.placeStone(makeMove(black[i] - 'a', black[i + 1] - 'a'), BLACK);
    s.board.placeStone(makeMove(white[i] - 'a', white[i + 1] - 'a'), WHITE);
  }
  ASSERT_GE(vcfPlies(s, WHITE, nullptr), 0);
  ScoredMove moves[kMaxStones];
  const MoveRequest request{BLACK, 1, nullptr, 0, nullptr, nullptr};
  const int kept = keepThreatDefences(s, BLACK, moves, generateMoves(s, request, moves), 20000, 8);
  ASSERT_GT(kept, 0);
  for (int i = 0; i < kept; ++i) {
    const Move m = moves[i].move;
    if (s.board.threat(BLACK, kFourClass).contains(m)) continue;
    s.board.placeStone(m, BLACK);
    EXPECT_LT(vcfPlies(s, WHITE, nullptr), 0) << rowOf(m) << "," << colOf(m) << " kept, but white still wins by fours";
    s.board.removeStone(m);
  }
}

}  // namespace
}  // namespace zorva
