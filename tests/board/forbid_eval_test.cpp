// Known positions: Renju forbidden points and the static evaluation.
#include <gtest/gtest.h>

#include <initializer_list>
#include <utility>

#include "board/board.h"
#include "board/board_check.h"
#include "board/eval.h"
#include "board/forbid.h"
#include "board/values.h"
#include "board/zobrist.h"

namespace zorva {
namespace {

using Cells = std::initializer_list<std::pair<int, int>>;

class KnownPositions : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { initZobrist(); }
  void SetUp() override { b.reset(15, 15, kRenju); }
  void put(Cells cells, Colour c) {
    for (auto [row, col] : cells) b.placeStone(makeMove(row, col), c);
  }
  // The answer, after checking that the test left the board as it was.
  bool forbidden(int row, int col) {
    before = b;
    const bool result = isForbidden(b, makeMove(row, col));
    EXPECT_TRUE(b == before) << "the board must be left as it was found";
    return result;
  }
  static inline Board b, before;
};

TEST_F(KnownPositions, DoublesAndOverlines) {
  put({{7, 5}, {7, 6}, {5, 8}, {6, 8}}, BLACK);
  EXPECT_TRUE(forbidden(7, 8)) << "two open threes";
  EXPECT_FALSE(forbidden(7, 4)) << "a single three";

  SetUp();
  put({{7, 3}, {7, 5}, {7, 7}, {7, 9}}, BLACK);
  EXPECT_TRUE(forbidden(7, 6)) << "x _ x X x _ x: two fours in one line";
  SetUp();
  put({{7, 2}, {7, 3}, {7, 5}, {7, 8}, {7, 9}}, BLACK);
  EXPECT_TRUE(forbidden(7, 6)) << "x x _ x X _ x x: two fours in one line";

  SetUp();
  put({{7, 3}, {7, 4}, {7, 5}, {7, 7}, {7, 8}}, BLACK);
  EXPECT_TRUE(forbidden(7, 6)) << "overline only";
  // A five in the column beats the overline in the row.
  put({{3, 6}, {4, 6}, {5, 6}, {6, 6}}, BLACK);
  EXPECT_FALSE(forbidden(7, 6));

  SetUp();
  put({{7, 4}, {7, 5}, {7, 7}}, BLACK);
  EXPECT_FALSE(forbidden(7, 6)) << "a lone open four";
  put({{8, 6}, {9, 6}}, BLACK);
  EXPECT_FALSE(forbidden(7, 6)) << "four and three";
  put({{6, 5}, {5, 4}}, BLACK);
  EXPECT_TRUE(forbidden(7, 6)) << "four and two threes: the threes still count two";
}

// x x X three in row 7 whose only open-four point (7, 9) is an overline
// point, beside an open three in column 6: only one three is real.
TEST_F(KnownPositions, ThreeWhoseOpenFourPointIsForbidden) {
  put({{7, 7}, {7, 8}, {8, 6}, {9, 6}}, BLACK);
  put({{7, 4}}, WHITE);
  EXPECT_TRUE(forbidden(7, 6)) << "while (7, 9) is playable both threes are real";
  put({{4, 9}, {5, 9}, {6, 9}, {8, 9}, {9, 9}, {10, 9}}, BLACK);
  EXPECT_TRUE(forbidden(7, 9));
  EXPECT_FALSE(forbidden(7, 6));
}

TEST_F(KnownPositions, FivePointsCanBeSkippedByTheThreeTest) {
  // (7, 9) completes the row's open four and is also a five point in column 9.
  put({{7, 7}, {7, 8}, {8, 6}, {9, 6}, {3, 9}, {4, 9}, {5, 9}, {6, 9}}, BLACK);
  put({{7, 4}, {2, 9}, {8, 9}}, WHITE);
  EXPECT_TRUE(forbidden(7, 6));
  b.threeTestSkipsFivePoints = true;
  EXPECT_FALSE(forbidden(7, 6));
  b.threeTestSkipsFivePoints = false;
}

TEST_F(KnownPositions, EmptyBoardScoresTheTempoOnly) {
  static Move scratch[kMaxStones];
  for (int rule = 0; rule < kRuleCount; ++rule) {
    b.reset(20, 20, rule);
    EXPECT_EQ(evaluate(b, BLACK, scratch), kSideToMove);
    EXPECT_EQ(evaluate(b, WHITE, scratch), kSideToMove);
  }
}

TEST_F(KnownPositions, QuietPositionsAreSymmetric) {
  static Move scratch[kMaxStones];
  b.reset(15, 15, kFreestyle);
  put({{7, 7}, {11, 9}}, BLACK);
  put({{7, 8}}, WHITE);
  const int black = evaluate(b, BLACK, scratch), white = evaluate(b, WHITE, scratch);
  EXPECT_EQ(black - kSideToMove, -(white - kSideToMove));
  EXPECT_GT(black, white) << "two stones against one";
}

TEST(Values, GrowWithTheCodes) {
  initValueTables();
  // Fitted weights may tie neighbouring codes, never invert them.
  for (uint32_t code = 1; code <= kCodeFive; ++code)
    EXPECT_GE(patternValue[code], patternValue[code - 1]) << "code " << code;
  EXPECT_GT(patternValue[kCodeFourDead], 2 * patternValue[kCodeThreeTwo]) << "a four forces, a three prepares";
  EXPECT_GT(patternValue[kCodeThreeOne << 4], patternValue[0x0444]) << "any three beats twos on three lines";
  EXPECT_GT(patternValue[0x0088], patternValue[0x0008] + patternValue[0x0080]) << "a double three is worth more";
  EXPECT_LT(blackValue[0x1688], kBlackValueThreshold) << "a double three stays below the threshold";
  EXPECT_GE(blackValue[0x0079], kBlackValueThreshold) << "a four and a three reach it";
}

// A white four point that black may not take (a black double three) counts
// for white only under Renju.
TEST_F(KnownPositions, RenjuTrapTermOnlyUnderRenju) {
  static Move scratch[kMaxStones];
  const Cells black = {{7, 5}, {7, 6}, {5, 7}, {6, 7}, {11, 11}};
  const Cells white = {{8, 8}, {9, 9}, {10, 10}, {12, 3}};
  int score[kRuleCount][2];
  for (int rule = 0; rule < kRuleCount; ++rule) {
    b.reset(15, 15, rule);
    put(black, BLACK);
    put(white, WHITE);
    ASSERT_EQ(checkBoard(b), "");
    ASSERT_EQ(b.code(makeMove(7, 7), WHITE, 3), 9u);
    // Only the threat terms: the totals differ a little between the rules.
    before = b;
    score[rule][0] = evaluate(b, BLACK, scratch) - (b.total(BLACK) - b.total(WHITE));
    score[rule][1] = evaluate(b, WHITE, scratch) - (b.total(WHITE) - b.total(BLACK));
    EXPECT_TRUE(b == before);
  }
  EXPECT_EQ(score[kStandard][0], score[kFreestyle][0]);
  EXPECT_EQ(score[kStandard][1], score[kFreestyle][1]);
  EXPECT_TRUE(isForbidden(b, makeMove(7, 7)));
  EXPECT_EQ(score[kRenju][0], score[kFreestyle][0] - 200);
  EXPECT_EQ(score[kRenju][1], score[kFreestyle][1] + 200);
}

}  // namespace
}  // namespace zorva
