// The pattern table against a slow reference that places stones on a text
// line and looks for fives, and the threat sets on hand-made positions.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "board/board.h"
#include "board/board_check.h"
#include "board/patterns.h"
#include "board/zobrist.h"

namespace zorva {
namespace {

// A line as one colour sees it: 'x' its stones, '.' empty, '#' anything else.
// Cells past either end of the eleven are '#'.
class ReferenceLine {
 public:
  ReferenceLine(int rule, Colour colour, const char* view) {
    std::memcpy(c_, view, kSpanCells);
    exact_ = rule == kStandard || (rule == kRenju && colour == BLACK);
    overlineCode_ = rule == kRenju && colour == BLACK;
  }

  // Code of the middle cell (index 5).
  int code() {
    if (c_[kMid] != '.') return 0;
    c_[kMid] = 'x';
    const int result = placedCode();
    c_[kMid] = '.';
    return result;
  }

 private:
  static constexpr int kMid = 5;

  char at(int i) const { return i >= 0 && i < kSpanCells ? c_[i] : '#'; }

  // A window of five stones holding the given cells, not extended by another
  // stone where only exactly five wins.
  bool fiveHolding(int a, int b) const {
    for (int start = std::max(a, b) - 4; start <= std::min(a, b); ++start) {
      bool full = true;
      for (int i = start; i < start + 5; ++i) full = full && at(i) == 'x';
      if (full && (!exact_ || (at(start - 1) != 'x' && at(start + 5) != 'x'))) return true;
    }
    return false;
  }

  bool sixHolding(int p) const {
    for (int start = p - 5; start <= p; ++start) {
      bool full = true;
      for (int i = start; i < start + 6; ++i) full = full && at(i) == 'x';
      if (full) return true;
    }
    return false;
  }

  std::vector<int> fivePoints() {
    std::vector<int> points;
    for (int i = 0; i < kSpanCells; ++i)
      if (c_[i] == '.') {
        c_[i] = 'x';
        if (fiveHolding(kMid, i)) points.push_back(i);
        c_[i] = '.';
      }
    return points;
  }

  bool openFour() {
    const std::vector<int> p = fivePoints();
    if (!overlineCode_) return p.size() >= 2;
    for (int a : p)
      for (int b : p)
        if (b - a == 5) return true;
    return false;
  }

  template <class Test>
  std::vector<int> movesWhere(Test test) {
    std::vector<int> moves;
    for (int i = 0; i < kSpanCells; ++i)
      if (c_[i] == '.') {
        c_[i] = 'x';
        if (test()) moves.push_back(i);
        c_[i] = '.';
      }
    return moves;
  }

  int placedCode() {
    if (fiveHolding(kMid, kMid)) return 12;
    if (sixHolding(kMid)) return overlineCode_ ? 13 : 0;
    const std::vector<int> points = fivePoints();
    if (openFour()) return 11;
    if (points.size() >= 2) return 10;
    if (points.size() == 1) {
      c_[points[0]] = '#';
      const bool again = !movesWhere([this] { return !fivePoints().empty(); }).empty();
      c_[points[0]] = '.';
      return again ? 10 : 9;
    }
    const size_t openFourMoves = movesWhere([this] { return openFour(); }).size();
    if (openFourMoves > 0) return openFourMoves >= 2 ? 8 : 7;
    if (!movesWhere([this] { return !fivePoints().empty(); }).empty())
      return movesWhere([this] { return placedCode() == 10; }).empty() ? 5 : 6;
    const size_t threeMoves = movesWhere([this] { return !movesWhere([this] { return openFour(); }).empty(); }).size();
    if (threeMoves > 0) return threeMoves <= 2 ? 2 : std::min<int>(int(threeMoves), 4);
    for (int start = kMid - 4; start <= kMid; ++start) {
      int stones = 0;
      bool free = true;
      for (int i = start; i < start + 5; ++i) {
        free = free && at(i) != '#';
        stones += at(i) == 'x';
      }
      if (free && stones >= 2) return 1;
    }
    return 0;
  }

  char c_[kSpanCells];
  bool exact_, overlineCode_;
};

constexpr int kViews = 59049;  // 3^10: every side cell '.', 'x' or '#'

void viewOf(int index, char* view) {
  for (int k = 0; k < kSpanCells; ++k) {
    if (k == 5) {
      view[k] = '.';
      continue;
    }
    view[k] = ".x#"[index % 3];
    index /= 3;
  }
}

// Every one of the 4^11 spans, for both colours and all three rules: the
// table must give the reference's code of the colour's view of the span.
TEST(PatternTable, AgreesWithTheReferenceOnEverySpan) {
  static uint8_t reference[kRuleCount][2][kViews];
  for (int rule = 0; rule < kRuleCount; ++rule)
    for (int ci = 0; ci < 2; ++ci) {
      if (ci == 1 && rule != kRenju) {
        std::memcpy(reference[rule][1], reference[rule][0], kViews);
        continue;
      }
      for (int v = 0; v < kViews; ++v) {
        char view[kSpanCells];
        viewOf(v, view);
        reference[rule][ci][v] = uint8_t(ReferenceLine(rule, Colour(ci + 1), view).code());
      }
    }

  // Base-3 digit of each span cell as each colour sees it.
  constexpr int kDigit[2][4] = {{0, 1, 2, 2}, {0, 2, 1, 2}};
  for (int rule = 0; rule < kRuleCount; ++rule) {
    const uint8_t* table = patternTable(rule);
    int mismatches = 0;
    for (uint32_t span = 0; span <= kSpanMask && mismatches < 5; ++span) {
      const bool middleEmpty = (span >> 10 & 3) == 0;
      for (int ci = 0; ci < 2; ++ci) {
        int index = 0;
        for (int k = kSpanCells - 1; k >= 0; --k)
          if (k != 5) index = index * 3 + kDigit[ci][span >> (2 * k) & 3];
        const int expected = middleEmpty ? reference[rule][ci][index] : 0;
        const int actual = ci == 0 ? table[span] & 15 : table[span] >> 4;
        if (expected != actual) {
          ++mismatches;
          ADD_FAILURE() << "rule " << rule << " colour " << ci + 1 << " span " << std::hex << span << std::dec
                        << ": table " << actual << ", reference " << expected;
        }
      }
    }
  }
}

// Text shapes for one colour, 'X' the cell classified.
int codeOf(int rule, Colour colour, const char* shape) {
  const int centre = int(std::strchr(shape, 'X') - shape), length = int(std::strlen(shape));
  const uint32_t own = colour, other = opponent(colour);
  uint32_t span = 0;
  for (int k = -5; k <= 5; ++k) {
    const int i = centre + k;
    const char ch = i >= 0 && i < length ? shape[i] : '#';
    const uint32_t v = ch == 'x' ? own : ch == 'o' ? other : ch == '#' ? uint32_t(WALL) : uint32_t(EMPTY);
    span |= v << (2 * (k + 5));
  }
  return classifySpan(rule, colour, span);
}

// The shapes the codes are documented with, and where the rules part ways.
TEST(PatternTable, DocumentedShapes) {
  struct Case {
    int rule;
    Colour colour;
    const char* shape;
    int code;
  };
  const Case cases[] = {
      {kFreestyle, BLACK, "____X____", 0},    {kFreestyle, BLACK, "#x__X__", 1},
      {kFreestyle, BLACK, "___xX___", 4},     {kFreestyle, BLACK, "#xxX__", 5},
      {kFreestyle, BLACK, "__X_x_x_", 6},     {kFreestyle, BLACK, "_x_xX_", 7},
      {kFreestyle, BLACK, "__xxX__", 8},      {kFreestyle, BLACK, "oxxxX_", 9},
      {kFreestyle, BLACK, "x_xxX__", 10},     {kFreestyle, BLACK, "_xxxX_", 11},
      {kFreestyle, BLACK, "#xx_X_#", 5},      {kFreestyle, BLACK, "#x_X_#", 0},
      {kFreestyle, BLACK, "__xxXo_", 5},      {kFreestyle, WHITE, "__ooX__", 0},
      // Filling the gap of x _ x x x X makes six: a win only where six wins.
      {kFreestyle, BLACK, "_x_xxxX_", 11},    {kStandard, BLACK, "_x_xxxX_", 9},
      {kRenju, BLACK, "_x_xxxX_", 9},         {kRenju, WHITE, "_x_xxxX_", 11},
      {kFreestyle, BLACK, "_xxxXxx_", 12},    {kStandard, BLACK, "_xxxXxx_", 0},
      {kRenju, BLACK, "_xxxXxx_", 13},        {kRenju, WHITE, "_xxxXxx_", 12},
      // The double four in one line is an open four but for Renju black.
      {kFreestyle, WHITE, "_x_xXx_x_", 11},   {kRenju, BLACK, "_x_xXx_x_", 10},
  };
  for (const Case& c : cases) EXPECT_EQ(codeOf(c.rule, c.colour, c.shape), c.code) << c.shape << " rule " << c.rule;
}

class ThreatSetTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { initZobrist(); }
  static void place(Board& b, std::initializer_list<std::pair<int, int>> cells, Colour c) {
    for (auto [row, col] : cells) b.placeStone(makeMove(row, col), c);
  }
};

TEST_F(ThreatSetTest, EmptyBoardHasNoCodes) {
  static Board b;
  b.reset(15, 15, kRenju);
  for (Move m = 0; m < kCellSlots; ++m) ASSERT_EQ(b.info[m].patternWord[0] | b.info[m].patternWord[1], 0u);
  for (int ci = 0; ci < 2; ++ci)
    for (int c = 0; c < kThreatClasses; ++c) EXPECT_TRUE(b.threats[ci][c].empty());
  EXPECT_EQ(b.totalValue[0], 0);
  EXPECT_EQ(b.totalValue[1], 0);
}

TEST_F(ThreatSetTest, CellsMoveBetweenClasses) {
  static Board b;
  b.reset(15, 15, kFreestyle);
  // x x x . on row 7 with (7,3) blocked by white: (7,7) is a dead four point.
  place(b, {{7, 4}, {7, 5}, {7, 6}}, BLACK);
  place(b, {{7, 3}}, WHITE);
  const Move point = makeMove(7, 7);
  const ThreatSet& fours = b.threat(BLACK, kFourClass);
  const ThreatSet& openFours = b.threat(BLACK, kOpenFourClass);
  EXPECT_EQ(b.code(point, BLACK, 0), 9u);
  EXPECT_TRUE(fours.contains(point));
  // The white stone goes: the same cell now makes an open four.
  b.removeStone(makeMove(7, 3));
  EXPECT_EQ(b.code(point, BLACK, 0), 11u);
  EXPECT_FALSE(fours.contains(point));
  EXPECT_TRUE(openFours.contains(point));
  EXPECT_EQ(openFours.rowMask[7] >> 7 & 1, 1u);
  EXPECT_EQ(openFours.summary >> 7 & 1, 1u);
  b.placeStone(makeMove(7, 3), WHITE);

  // A four point in two directions stays a four point when one goes.
  place(b, {{4, 7}, {5, 7}, {6, 7}}, BLACK);
  place(b, {{3, 7}}, WHITE);
  EXPECT_EQ(fours.cellDirs[point], 0b0011);
  b.removeStone(makeMove(3, 7));
  EXPECT_EQ(fours.cellDirs[point], 0b0001);
  EXPECT_TRUE(fours.contains(point));
  EXPECT_EQ(checkBoard(b), "");
}

TEST_F(ThreatSetTest, CornerDiagonalNeverGetsACode) {
  static Board b;
  b.reset(15, 15, kFreestyle);
  place(b, {{1, 1}, {2, 2}, {0, 1}, {1, 0}}, BLACK);
  EXPECT_EQ(b.code(makeMove(0, 0), BLACK, 2), 0u) << "the anti-diagonal of the corner has no room";
  EXPECT_NE(b.code(makeMove(0, 0), BLACK, 3), 0u);
}

TEST_F(ThreatSetTest, MarksCloseTheLineForOneColour) {
  static Board b, edge;
  b.reset(15, 15, kFreestyle);
  edge.reset(15, 15, kFreestyle);
  // Row 7, columns 5..7 black with a black mark on column 4, against the
  // same stones at the left edge.
  place(b, {{7, 5}, {7, 6}, {7, 7}}, BLACK);
  place(b, {{9, 5}, {9, 6}, {9, 7}}, WHITE);
  b.markCell(makeMove(7, 4), BLACK);
  b.markCell(makeMove(9, 4), BLACK);
  place(edge, {{7, 0}, {7, 1}, {7, 2}}, BLACK);
  for (int k = 0; k < 5; ++k)
    EXPECT_EQ(b.code(makeMove(7, 8 + k), BLACK, 0), edge.code(makeMove(7, 3 + k), BLACK, 0)) << k;
  EXPECT_EQ(b.code(makeMove(7, 8), BLACK, 0), 9u);
  EXPECT_EQ(b.code(makeMove(9, 8), WHITE, 0), 11u) << "white does not see black's marks";
  EXPECT_EQ(b.code(makeMove(7, 4), BLACK, 0), 0u) << "a marked cell holds no code for its colour";
  EXPECT_EQ(checkBoard(b), "");
  b.unmarkCell(makeMove(7, 4), BLACK);
  b.unmarkCell(makeMove(9, 4), BLACK);
  EXPECT_EQ(b.code(makeMove(7, 8), BLACK, 0), 11u);
  EXPECT_EQ(checkBoard(b), "");
}

TEST_F(ThreatSetTest, RuleChangeRebuildsTheCodes) {
  static Board b;
  b.reset(15, 15, kFreestyle);
  place(b, {{7, 2}, {7, 4}, {7, 5}, {7, 6}, {7, 7}}, BLACK);
  const Move gap = makeMove(7, 3);
  EXPECT_EQ(b.code(gap, BLACK, 0), 12u);
  b.setRule(kRenju);
  EXPECT_EQ(b.code(gap, BLACK, 0), 13u);
  EXPECT_EQ(b.moveCount, 5);
  EXPECT_EQ(checkBoard(b), "");
  b.setRule(kStandard);
  EXPECT_EQ(b.code(gap, BLACK, 0), 0u);
  EXPECT_EQ(checkBoard(b), "");
}

}  // namespace
}  // namespace zorva
