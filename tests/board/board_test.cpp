#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "board/board.h"
#include "board/board_check.h"
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
  EXPECT_EQ(b.hash, 0u);
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

TEST_F(BoardTest, BlockedCellsAndMarksNarrowTheRoom) {
  static Board b;
  b.reset(15, 15, 0);
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
  EXPECT_EQ(b.hash, 0u);
  EXPECT_EQ(checkBoard(b), "");
}

// Random play with takebacks, blocks and marks must always leave the board
// equal to one rebuilt from its stones, and undo must restore it bit for bit.
TEST_F(BoardTest, RandomPlayMatchesRebuild) {
  static Board b, before, rebuilt;
  std::mt19937 rng(12345);
  const int shapes[][2] = {{15, 15}, {20, 20}, {15, 20}, {20, 15}, {7, 22}, {22, 22}, {5, 5}};
  for (auto [width, height] : shapes) {
    b.reset(width, height, 0);
    std::vector<Move> empties;
    for (int step = 0; step < 1500; ++step) {
      empties.clear();
      for (int r = 0; r < height; ++r)
        for (int c = 0; c < width; ++c)
          if (b.at(makeMove(r, c)) == EMPTY) empties.push_back(makeMove(r, c));
      const int action = int(rng() % 10);
      if (action < 6 && !empties.empty()) {
        const Move m = empties[rng() % empties.size()];
        before = b;
        b.placeStone(m, action == 0 ? WALL : b.sideToMove());
        if (rng() % 2) {
          b.removeStone(m);
          ASSERT_TRUE(b == before) << "place and remove must restore the board";
          b.placeStone(m, action == 0 ? WALL : b.sideToMove());
        }
      } else if (action < 8 && b.moveCount > 0) {
        b.removeStone(b.lastMove());
      } else if (action == 8 && !empties.empty()) {
        const Move m = empties[rng() % empties.size()];
        const Colour c = rng() % 2 ? BLACK : WHITE;
        if (b.isMarked(m, c))
          b.unmarkCell(m, c);
        else
          b.markCell(m, c);
      } else if (b.moveCount > 0) {
        const Move m = b.moves[rng() % b.moveCount];
        ASSERT_EQ(b.takeBack(rowOf(m), colOf(m)), TakeBackResult::Done);
      }
      ASSERT_EQ(checkBoard(b), "") << "step " << step << " on " << width << "x" << height;
      if (step % 97 == 0) {
        rebuilt = b;
        rebuilt.rebuild();
        ASSERT_TRUE(rebuilt == b) << "rebuilding from scratch must give the same board";
      }
    }
  }
}

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
