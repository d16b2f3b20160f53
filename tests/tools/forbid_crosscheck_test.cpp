// The engine's Renju forbidden points against the referee's, which decides
// them from the rules by walking lines and trying stones, sharing no code
// with the engine: the two must agree on every empty cell of thousands of
// play-like positions.
#include <gtest/gtest.h>

#include <random>

#include "board/board.h"
#include "board/forbid.h"
#include "board/zobrist.h"
#include "match/rules.h"

namespace zorva {
namespace {

constexpr int kSide = 15;

// Compares every empty cell; returns how many the referee forbids.
int compareAllCells(Board& engineBoard, referee::Board& refereeBoard, int game) {
  int forbidden = 0;
  for (int x = 0; x < kSide; ++x)
    for (int y = 0; y < kSide; ++y) {
      if (engineBoard.at(makeMove(x, y)) != EMPTY) continue;
      const bool expected = referee::isForbidden(refereeBoard, x, y);
      const uint64_t hash = engineBoard.hash;
      EXPECT_EQ(isForbidden(engineBoard, makeMove(x, y)), expected)
          << "cell " << x << "," << y << " in game " << game << " ("
          << referee::forbiddenName(referee::forbiddenKind(refereeBoard, x, y)) << ")";
      EXPECT_EQ(engineBoard.hash, hash);
      forbidden += expected;
    }
  return forbidden;
}

// Games of alternating moves, black first, clustered like real play: each
// stone near an earlier one. Black never plays a forbidden cell and a game
// ends at the first five.
TEST(RefereeCrossCheck, EngineAndRefereeAgreeOnForbiddenPoints) {
  initZobrist();
  static Board engineBoard;
  std::mt19937 rng(4242);
  int positions = 0, forbiddenSeen = 0;
  for (int game = 0; positions < 6000; ++game) {
    engineBoard.reset(kSide, kSide, kRenju);
    referee::Board refereeBoard(kSide, kSide);
    int lastX = kSide / 2, lastY = kSide / 2;
    for (int move = 0; move < 60; ++move) {
      const referee::Stone stone = refereeBoard.toMove();
      int x = 0, y = 0, tries = 0;
      do {
        x = lastX + int(rng() % 5) - 2;
        y = lastY + int(rng() % 5) - 2;
      } while (++tries < 50 && (!refereeBoard.inside(x, y) || refereeBoard.at(x, y) != referee::kEmpty ||
                                (stone == referee::kBlack && referee::isForbidden(refereeBoard, x, y))));
      if (tries >= 50) break;
      const bool five = referee::makesFive(refereeBoard, x, y, stone, referee::Rule::Renju);
      refereeBoard.set(x, y, stone);
      engineBoard.placeStone(makeMove(x, y), stone == referee::kBlack ? BLACK : WHITE);
      if (five) break;
      if (rng() % 3 == 0) lastX = x, lastY = y;
      if (move >= 8) {
        forbiddenSeen += compareAllCells(engineBoard, refereeBoard, game);
        ++positions;
        if (::testing::Test::HasFailure()) return;
      }
    }
  }
  EXPECT_GT(forbiddenSeen, 500) << "the positions must exercise the rule";
}

}  // namespace
}  // namespace zorva
