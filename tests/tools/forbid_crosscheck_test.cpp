// The engine's Renju forbidden points against the referee's, which decides
// them from the rules by walking lines: two independent implementations must
// agree on every empty cell of many random positions.
#include <gtest/gtest.h>

#include <random>

#include "board/board.h"
#include "board/forbid.h"
#include "board/zobrist.h"
#include "match/rules.h"

namespace zorva {
namespace {

TEST(RefereeCrossCheck, EngineAndRefereeAgreeOnForbiddenPoints) {
  initZobrist();
  static Board engineBoard;
  std::mt19937 rng(4242);
  int forbiddenSeen = 0;
  for (int game = 0; game < 3000; ++game) {
    engineBoard.reset(15, 15, kRenju);
    referee::Board refereeBoard(15, 15);
    // Stones clustered near the centre make threes and fours often.
    const int stones = 10 + int(rng() % 30);
    for (int i = 0; i < stones; ++i) {
      const int x = 4 + int(rng() % 7), y = 4 + int(rng() % 7);
      if (engineBoard.at(makeMove(x, y)) != EMPTY) continue;
      const Colour c = rng() % 2 ? BLACK : WHITE;
      engineBoard.placeStone(makeMove(x, y), c);
      refereeBoard.set(x, y, c == BLACK ? referee::kBlack : referee::kWhite);
    }
    for (int x = 0; x < 15; ++x)
      for (int y = 0; y < 15; ++y) {
        if (engineBoard.at(makeMove(x, y)) != EMPTY) continue;
        const bool expected = referee::isForbidden(refereeBoard, x, y);
        ASSERT_EQ(isForbidden(engineBoard, makeMove(x, y)), expected)
            << "cell " << x << "," << y << " in game " << game << " ("
            << referee::forbiddenName(referee::forbiddenKind(refereeBoard, x, y)) << ")";
        forbiddenSeen += expected;
      }
  }
  EXPECT_GT(forbiddenSeen, 100) << "the positions must exercise the rule";
}

}  // namespace
}  // namespace zorva
