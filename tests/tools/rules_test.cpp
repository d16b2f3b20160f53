#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "match/rules.h"

namespace zorva::referee {
namespace {

// A 15 x 15 position drawn as text: X black, O white, * the cell under test,
// anything else empty. The picture's top-left corner lands on (top, left).
struct Position {
  Board board{15, 15};
  Cell mark{-1, -1};
};

Position draw(std::initializer_list<const char*> rows, int top = 4, int left = 4) {
  Position p;
  int x = top;
  for (const char* row : rows) {
    for (int y = left; *row; ++row, ++y) {
      if (*row == 'X') p.board.set(x, y, kBlack);
      if (*row == 'O') p.board.set(x, y, kWhite);
      if (*row == '*') p.mark = {x, y};
    }
    ++x;
  }
  return p;
}

Forbidden kindAt(Position p) { return forbiddenKind(p.board, p.mark.x, p.mark.y); }
Verdict judgeAt(Position p, Stone s, Rule r) { return judge(p.board, p.mark.x, p.mark.y, s, r); }

TEST(RefereeRules, FivesInEveryDirection) {
  EXPECT_EQ(judgeAt(draw({"XXXX*"}), kBlack, Rule::Freestyle), Verdict::Win);
  EXPECT_EQ(judgeAt(draw({"X", "X", "*", "X", "X"}), kBlack, Rule::ExactFive), Verdict::Win);
  EXPECT_EQ(judgeAt(draw({"O....", ".O...", "..O..", "...O.", "....*"}), kWhite, Rule::Renju), Verdict::Win);
  EXPECT_EQ(judgeAt(draw({"....X", "...X.", "..*..", ".X...", "X...."}), kBlack, Rule::Renju), Verdict::Win);
  // Four stones and a gap, or another colour's stones, make no five.
  EXPECT_EQ(judgeAt(draw({"XXX.*"}), kBlack, Rule::Freestyle), Verdict::Normal);
  EXPECT_EQ(judgeAt(draw({"XXXX*"}), kWhite, Rule::Freestyle), Verdict::Normal);
  // Along the board's edge and into its corner.
  EXPECT_EQ(judgeAt(draw({"*XXXX"}, 0, 0), kBlack, Rule::Freestyle), Verdict::Win);
  EXPECT_EQ(judgeAt(draw({"XXX*"}, 14, 11), kBlack, Rule::Freestyle), Verdict::Normal);
}

TEST(RefereeRules, OverlineWinsOnlyWhereTheRuleSaysSo) {
  Position black = draw({"XXX*XX"});
  EXPECT_EQ(judgeAt(black, kBlack, Rule::Freestyle), Verdict::Win);
  EXPECT_EQ(judgeAt(black, kBlack, Rule::ExactFive), Verdict::Normal);
  EXPECT_EQ(judgeAt(black, kBlack, Rule::Renju), Verdict::Forbidden);
  EXPECT_EQ(kindAt(black), Forbidden::Overline);
  Position white = draw({"OO*OOO"});
  EXPECT_EQ(judgeAt(white, kWhite, Rule::Freestyle), Verdict::Win);
  EXPECT_EQ(judgeAt(white, kWhite, Rule::ExactFive), Verdict::Normal);
  EXPECT_EQ(judgeAt(white, kWhite, Rule::Renju), Verdict::Win);
}

TEST(RefereeRules, DoubleThreeIsForbidden) {
  EXPECT_EQ(kindAt(draw({"..X", "..X", "XX*"})), Forbidden::DoubleThree);
  // A split three (X_X + the move) counts as well.
  EXPECT_EQ(kindAt(draw({"...X", "...X", "X.X*"})), Forbidden::DoubleThree);
  // Diagonal with anti-diagonal.
  EXPECT_EQ(kindAt(draw({"X...X", ".X.X.", "..*.."})), Forbidden::DoubleThree);
}

TEST(RefereeRules, ThreesThatCannotBecomeStraightFoursDoNotCount) {
  // Closed by a white stone.
  EXPECT_EQ(kindAt(draw({"...X", "...X", "OXX*."})), Forbidden::None);
  // Closed by the board's edge.
  EXPECT_EQ(kindAt(draw({"..X", "..X", "XX*"}, 5, 0)), Forbidden::None);
  // Row 6 reads X _ _ X X * _ _: the left four point leaves a black stone
  // behind its end (that completion would be six), the right one is fine.
  EXPECT_EQ(kindAt(draw({".....X", ".....X", "X..XX*."})), Forbidden::DoubleThree);
  // X _ _ X X * _ _ X: both four points now have a black stone behind an end.
  EXPECT_EQ(kindAt(draw({".....X", ".....X", "X..XX*..X"})), Forbidden::None);
}

TEST(RefereeRules, DoubleFourIsForbiddenAlsoInOneLine) {
  EXPECT_EQ(kindAt(draw({"...X", "...X", "...X", "XXX*"})), Forbidden::DoubleFour);
  EXPECT_EQ(kindAt(draw({"....O", "....X", "....X", "....X", "OXXX*"})), Forbidden::DoubleFour);
  // Two fours on one line: X_X*X_X, XXX_*_XXX and XX_*X_XX.
  EXPECT_EQ(kindAt(draw({"X.X*X.X"}, 7, 2)), Forbidden::DoubleFour);
  EXPECT_EQ(kindAt(draw({"XXX.*.XXX"}, 7, 2)), Forbidden::DoubleFour);
  EXPECT_EQ(kindAt(draw({"XX.*X.XX"}, 7, 2)), Forbidden::DoubleFour);
  // One completion blocked leaves a single four.
  EXPECT_EQ(kindAt(draw({"X.X*XOX"}, 7, 2)), Forbidden::None);
}

TEST(RefereeRules, CountingFoursAlongALine) {
  Position open = draw({".XX*X."}, 7, 2);
  open.board.set(open.mark.x, open.mark.y, kBlack);
  EXPECT_EQ(foursAlong(open.board, open.mark.x, open.mark.y, 0), 1);
  Position two = draw({"X.X*X.X"}, 7, 2);
  two.board.set(two.mark.x, two.mark.y, kBlack);
  EXPECT_EQ(foursAlong(two.board, two.mark.x, two.mark.y, 0), 2);
  // A completion that would make six is no four: X_XXXX with the move inside.
  Position six = draw({"X.XX*X."}, 7, 2);
  six.board.set(six.mark.x, six.mark.y, kBlack);
  EXPECT_EQ(foursAlong(six.board, six.mark.x, six.mark.y, 0), 1);
}

TEST(RefereeRules, FiveBeatsForbidden) {
  Position p = draw({"....X", "....X", "XXXX*", "....X", "....X", "....X"});
  EXPECT_EQ(kindAt(p), Forbidden::None);
  EXPECT_EQ(judgeAt(p, kBlack, Rule::Renju), Verdict::Win);
  // Five together with a double four.
  Position q = draw({"X.......", ".X..X...", "..X.X...", "...XX...", ".XXX*..."});
  EXPECT_EQ(kindAt(q), Forbidden::None);
  EXPECT_EQ(judgeAt(q, kBlack, Rule::Renju), Verdict::Win);
}

TEST(RefereeRules, LoneShapesAndFourThreeAreAllowed) {
  EXPECT_EQ(kindAt(draw({".XX*.."})), Forbidden::None);
  EXPECT_EQ(kindAt(draw({".XXX*."})), Forbidden::None);
  Position fourThree = draw({"..O", "..X", "..X", "..X", "XX*"});
  EXPECT_EQ(kindAt(fourThree), Forbidden::None);
  EXPECT_EQ(judgeAt(fourThree, kBlack, Rule::Renju), Verdict::Normal);
}

TEST(RefereeRules, WhiteIsNeverForbidden) {
  EXPECT_EQ(judgeAt(draw({"..O", "..O", "OO*"}), kWhite, Rule::Renju), Verdict::Normal);
  EXPECT_EQ(judgeAt(draw({"...O", "...O", "...O", "OOO*"}), kWhite, Rule::Renju), Verdict::Normal);
  EXPECT_EQ(judgeAt(draw({"OOO*OO"}), kWhite, Rule::Renju), Verdict::Win);
}

// Row 7: O _ X X * _ _ gives the move one three whose only straight-four
// point is (7,8); column 7 gives it a second, real one. Column 8 decides
// whether (7,8) is itself playable for black.
Position threeWithDoubtfulFourPoint(bool overlineAtFourPoint) {
  Position p;
  Board& b = p.board;
  b.set(7, 3, kWhite);
  b.set(7, 5, kBlack);
  b.set(7, 6, kBlack);
  b.set(5, 7, kBlack);
  b.set(6, 7, kBlack);
  for (int x : {4, 5, 6, 8}) b.set(x, 8, kBlack);
  if (overlineAtFourPoint) b.set(9, 8, kBlack);
  p.mark = {7, 7};
  return p;
}

TEST(RefereeRules, ThreeWhoseFourPointIsForbiddenIsNoThree) {
  // (7,8) would make six in column 8: forbidden, so row 7 is no real three.
  EXPECT_EQ(kindAt(threeWithDoubtfulFourPoint(true)), Forbidden::None);
  // Without (9,8), (7,8) makes exactly five: allowed, and the three is real.
  EXPECT_EQ(kindAt(threeWithDoubtfulFourPoint(false)), Forbidden::DoubleThree);
}

// One level deeper. The move (7,7) again has row 7's three with the single
// four point (7,8) and column 7's real three. Now (7,8) makes row 7's straight
// four, a three in column 8 ((5,8), (6,8)) and, with (5,10), a three on its
// anti-diagonal ((6,9), (5,10)): a four-three-three, forbidden when both of its
// threes are real, which takes a further look at their own four points.
Position threeWhoseFourPointIsADoubleThree(bool withSecondThree) {
  Position p;
  Board& b = p.board;
  b.set(7, 3, kWhite);
  for (auto [x, y] : {std::pair{7, 5}, {7, 6}, {5, 7}, {6, 7}, {5, 8}, {6, 8}, {6, 9}}) b.set(x, y, kBlack);
  if (withSecondThree) b.set(5, 10, kBlack);
  p.mark = {7, 7};
  return p;
}

TEST(RefereeRules, ThreeWhoseFourPointIsADoubleThreeIsNoThree) {
  EXPECT_EQ(kindAt(threeWhoseFourPointIsADoubleThree(true)), Forbidden::None);
  EXPECT_EQ(kindAt(threeWhoseFourPointIsADoubleThree(false)), Forbidden::DoubleThree);
  Position p = threeWhoseFourPointIsADoubleThree(true);
  p.board.set(7, 7, kBlack);
  EXPECT_EQ(forbiddenKind(p.board, 7, 8), Forbidden::DoubleThree);
}

TEST(RefereeRules, CheckingLeavesTheBoardAsFoundAndAgreesWithFives) {
  std::mt19937 rng(7);
  for (int round = 0; round < 20; ++round) {
    Board b(15, 15);
    for (int n = 0; n < 60; ++n) {
      int x = int(rng() % 9) + 3, y = int(rng() % 9) + 3;
      if (b.at(x, y) == kEmpty) b.set(x, y, rng() % 2 ? kBlack : kWhite);
    }
    Board before = b;
    for (int x = 0; x < 15; ++x)
      for (int y = 0; y < 15; ++y) {
        if (b.at(x, y) != kEmpty) continue;
        Forbidden f = forbiddenKind(b, x, y);
        if (makesFive(b, x, y, kBlack, Rule::Renju)) {
          EXPECT_EQ(f, Forbidden::None);
        }
        bool overline = false;
        for (int d = 0; d < kDirections; ++d) overline |= runThrough(b, x, y, d, kBlack) > 5;
        if (overline && !makesFive(b, x, y, kBlack, Rule::Renju)) {
          EXPECT_EQ(f, Forbidden::Overline);
        }
      }
    for (int x = 0; x < 15; ++x)
      for (int y = 0; y < 15; ++y) ASSERT_EQ(b.at(x, y), before.at(x, y));
    EXPECT_EQ(b.stones(), before.stones());
  }
}

TEST(RefereeRules, RectangularBoardAndNotation) {
  Board b(20, 15);  // width 20, height 15: x < 15, y < 20
  EXPECT_TRUE(b.inside(14, 19));
  EXPECT_FALSE(b.inside(15, 0));
  EXPECT_FALSE(b.inside(0, 20));
  EXPECT_EQ(cellName({7, 7}), "h8");
  EXPECT_EQ(cellsName({{0, 13}, {21, 21}}), "a14v22");
}

}  // namespace
}  // namespace zorva::referee
