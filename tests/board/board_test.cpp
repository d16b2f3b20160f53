#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <random>
#include <vector>

#include "board/board.h"
#include "board/board_check.h"
#include "board/forbid.h"
#include "board/values.h"
#include "board/zobrist.h"

namespace zorva {
namespace {

class BoardTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { initZobrist(); }
};

int roomNibble(const Board& b, int row, int col, int d, int colourIndex = 0) {
  return b.info[makeMove(row, col)].room[colourIndex] >> (4 * d) & 15;
}

TEST_F(BoardTest, EmptyBoardGeometry) {
  static Board b;
  b.reset(15, 15, 0);
  EXPECT_EQ(checkBoard(b), "");
  // Corner: four cells of room along the edges, none along the diagonal
  // that leads off the board, four along the one that crosses it.
  EXPECT_EQ(roomNibble(b, 0, 0, 0), 4);
  EXPECT_EQ(roomNibble(b, 0, 0, 1), 4);
  EXPECT_EQ(roomNibble(b, 0, 0, 2), 0);
  EXPECT_EQ(roomNibble(b, 0, 0, 3), 4);
  EXPECT_EQ(roomNibble(b, 7, 7, 0), 8);
  EXPECT_EQ(roomNibble(b, 7, 13, 0), 15 + 3 - 13);
  // Line words carry a wall just before the first and just after the last cell.
  EXPECT_EQ(b.line[0][3], (uint64_t(3) << 8) | (uint64_t(3) << (2 * 15 + 10)));
  EXPECT_EQ(b.lineCell(2, makeMove(0, 0)), EMPTY);
}

TEST_F(BoardTest, RectangleInsideTheSquare) {
  static Board b;
  b.reset(15, 20, 0);  // 15 columns, 20 rows in a 20x20 square
  EXPECT_EQ(b.size, 20);
  EXPECT_EQ(checkBoard(b), "");
  EXPECT_NE(b.hash, 0u) << "cells outside the rectangle key the hash";
  EXPECT_EQ(b.at(makeMove(0, 15)), WALL);
  EXPECT_EQ(b.at(makeMove(19, 14)), EMPTY);
  EXPECT_EQ(roomNibble(b, 5, 14, 0), 4);  // the last column is closed by the rectangle
  EXPECT_FALSE(b.inside(0, 15));
  EXPECT_TRUE(b.inside(19, 0));
}

// The same stones on boards of other sizes or shapes never hash alike, so
// the table never lends one board's proven results to another.
TEST_F(BoardTest, EverySizeKeysTheHash) {
  static Board b;
  std::vector<uint64_t> hashes;
  for (auto [width, height] : {std::pair{15, 15}, {20, 20}, {19, 19}, {22, 22}, {15, 20}, {20, 15}, {10, 22}}) {
    b.reset(width, height, 0);
    b.placeStone(makeMove(7, 7), BLACK);
    b.placeStone(makeMove(7, 8), WHITE);
    EXPECT_EQ(checkBoard(b), "") << width << "x" << height;
    EXPECT_EQ(std::count(hashes.begin(), hashes.end(), b.hash), 0) << width << "x" << height;
    hashes.push_back(b.hash);
  }
}

// A learned worth may be negative: cell values and running totals follow it
// through play exactly as they follow the built-in ones.
TEST_F(BoardTest, NegativeLearnedValuesKeepTheTotals) {
  initValueTables();
  const std::vector<int16_t> builtIn(learningTable, learningTable + kLearningEntries);
  for (int16_t& v : learningTable) v = int16_t(-v - 1);
  applyLearningTable();
  static Board b;
  b.reset(15, 15, kFreestyle);
  std::mt19937 rng(11);
  for (int stones = 0; stones < 60; ++stones) {
    Move m;
    do m = makeMove(int(rng() % 15), int(rng() % 15));
    while (b.at(m) != EMPTY);
    b.placeStone(m, b.sideToMove());
    ASSERT_EQ(checkBoard(b), "") << "after stone " << stones;
  }
  std::copy(builtIn.begin(), builtIn.end(), learningTable);
  applyLearningTable();
}

TEST_F(BoardTest, BlockedCellsAndMarksNarrowTheRoom) {
  static Board b;
  b.reset(15, 15, 0);
  const uint64_t empty = b.hash;
  const Move block = makeMove(7, 9);
  b.placeStone(block, WALL);
  EXPECT_EQ(b.moveCount, 0) << "a blocked cell is never a move";
  EXPECT_EQ(roomNibble(b, 7, 7, 0), 4 + 1);
  EXPECT_EQ(checkBoard(b), "");
  b.markCell(makeMove(7, 5), BLACK);
  EXPECT_EQ(roomNibble(b, 7, 7, 0, 0), 1 + 1);
  EXPECT_EQ(roomNibble(b, 7, 7, 0, 1), 4 + 1) << "white does not see black's marks";
  b.markCell(makeMove(7, 5), BLACK);
  EXPECT_EQ(b.markedCount, 1) << "marking twice counts once";
  EXPECT_EQ(checkBoard(b), "");
  b.unmarkCell(makeMove(7, 5), BLACK);
  b.removeStone(block);
  EXPECT_EQ(b.markedCount, 0);
  EXPECT_EQ(b.hash, empty);
  EXPECT_EQ(checkBoard(b), "");
}

// Steps of random play per rule: ZORVA_LONG_TESTS=1 asks for the long run
// (240,000 per rule, of which over 200,000 are moves and takebacks), any
// other number for that many.
int randomSteps() {
  const char* env = std::getenv("ZORVA_LONG_TESTS");
  if (!env || !*env) return 3000;
  const int n = std::atoi(env);
  return n > 1 ? n : 240000;
}

// Play biased to the neighbourhood of the last stones, so that threes, fours
// and fives come and go, with takebacks, blocked cells and marks. After every
// step the board must equal its from-scratch recomputation; every move is
// also taken back and replayed now and then, with the full and the light
// update, and must restore the board bit for bit; so must a forbidden-point
// test.
void randomPlay(int rule, int steps, uint32_t seed) {
  static Board b, before, rebuilt;
  std::mt19937 rng(seed);
  const int shapes[][2] = {{15, 15}, {20, 20}, {15, 20}, {20, 15}, {7, 22}, {22, 22}, {9, 6}};
  const int perShape = steps / int(std::size(shapes)) + 1;
  for (auto [width, height] : shapes) {
    b.reset(width, height, rule);
    auto randomEmpty = [&]() -> Move {
      for (int tries = 0; tries < 50; ++tries) {
        int row, col;
        if (b.moveCount > 0 && rng() % 8 != 0) {
          const Move near = b.moves[b.moveCount - 1 - int(rng() % std::min(b.moveCount, 4))];
          row = rowOf(near) + int(rng() % 5) - 2;
          col = colOf(near) + int(rng() % 5) - 2;
        } else {
          row = int(rng() % height);
          col = int(rng() % width);
        }
        if (b.inside(row, col) && b.at(makeMove(row, col)) == EMPTY) return makeMove(row, col);
      }
      return kNoMove;
    };
    for (int step = 0; step < perShape; ++step) {
      const int filled = 100 * (b.moveCount + 8) / (width * height);
      const int action = int(rng() % 100);
      const Move m = randomEmpty();
      if (action < 55 + 20 * (filled < 40) - 30 * (filled > 70) && m != kNoMove) {
        const Colour c = b.sideToMove();
        if (rng() % 4 == 0) {
          before = b;
          b.placeStone(m, c);
          b.removeStone(m);
          ASSERT_TRUE(b == before) << "full place and remove must restore the board";
          b.placeStone<Update::Light>(m, c);
          b.removeStone<Update::Light>(m);
          ASSERT_TRUE(b == before) << "light place and remove must restore the board";
        }
        b.placeStone(m, c);
      } else if (action < 90 && b.moveCount > 0) {
        b.removeStone(b.lastMove());
      } else if (action < 92 && m != kNoMove) {
        b.placeStone(m, WALL);
      } else if (action < 95 && m != kNoMove) {
        const Colour c = rng() % 2 ? BLACK : WHITE;
        if (b.markedCount > 3 || b.isMarked(m, c)) {
          for (Move n = 0; n < kCellSlots; ++n)
            if (b.inside(rowOf(n), colOf(n)) && b.isMarked(n, c)) b.unmarkCell(n, c);
        } else {
          b.markCell(m, c);
        }
      } else if (action < 98 && m != kNoMove && rule == kRenju) {
        before = b;
        isForbidden(b, m);
        ASSERT_TRUE(b == before) << "the forbidden-point test must leave the board as it found it";
      } else if (b.moveCount > 0) {
        const Move taken = b.moves[rng() % b.moveCount];
        ASSERT_EQ(b.takeBack(rowOf(taken), colOf(taken)), TakeBackResult::Done);
      }
      ASSERT_EQ(checkBoard(b), "") << "rule " << rule << " step " << step << " on " << width << "x" << height;
      if (step % 211 == 0) {
        rebuilt = b;
        rebuilt.rebuild();
        ASSERT_TRUE(rebuilt == b) << "rebuilding from scratch must give the same board";
      }
    }
  }
}

TEST_F(BoardTest, RandomPlayFreestyle) { randomPlay(kFreestyle, randomSteps(), 12345); }
TEST_F(BoardTest, RandomPlayStandard) { randomPlay(kStandard, randomSteps(), 23456); }
TEST_F(BoardTest, RandomPlayRenju) { randomPlay(kRenju, randomSteps(), 34567); }

TEST_F(BoardTest, TakeBack) {
  static Board b;
  b.reset(15, 15, 0);
  b.placeStone(makeMove(7, 7), BLACK);
  b.placeStone(makeMove(7, 8), WHITE);
  b.placeStone(makeMove(8, 8), BLACK);
  b.placeStone(makeMove(3, 3), WALL);
  EXPECT_EQ(b.takeBack(3, 3), TakeBackResult::NotAStone);
  EXPECT_EQ(b.takeBack(0, 0), TakeBackResult::BadCell);
  EXPECT_EQ(b.takeBack(15, 0), TakeBackResult::BadCell);
  EXPECT_EQ(b.takeBack(7, 8), TakeBackResult::Done) << "an earlier stone can be taken back";
  EXPECT_EQ(b.moveCount, 2);
  EXPECT_EQ(b.moves[0], makeMove(7, 7));
  EXPECT_EQ(b.moves[1], makeMove(8, 8));
  EXPECT_EQ(b.at(makeMove(8, 8)), BLACK) << "the other stones keep their colours";
  EXPECT_EQ(b.at(makeMove(3, 3)), WALL);
  EXPECT_EQ(checkBoard(b), "");
}

TEST_F(BoardTest, CopyBoard) {
  static Board a, b;
  a.reset(15, 15, 0);
  a.placeStone(makeMove(7, 7), BLACK);
  b.reset(20, 20, 0);
  copyBoard(a, b);
  EXPECT_TRUE(a == b);
  // Same stones on another size: the hashes agree, the boards must not be taken as equal.
  b.reset(20, 20, 0);
  b.placeStone(makeMove(7, 7), BLACK);
  copyBoard(a, b);
  EXPECT_EQ(b.size, 15);
}

TEST_F(BoardTest, InvalidSizeGivesNoCells) {
  static Board b;
  b.reset(23, 15, 0);
  EXPECT_EQ(b.width, 0);
  EXPECT_FALSE(b.inside(0, 0));
  b.reset(-3, -3, 0);
  EXPECT_EQ(b.height, 0);
  EXPECT_EQ(checkBoard(b), "");
}

}  // namespace
}  // namespace zorva
