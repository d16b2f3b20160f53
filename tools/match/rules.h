#pragma once
// The referee's own board and rules. Deliberately written from the rules of
// the game rather than from the engine's pattern tables: it walks lines and
// tries moves, slowly and plainly, so that it can also serve as an independent
// reference for the engine's fast code.
#include <cstdint>
#include <string>
#include <vector>

namespace zorva::referee {

enum class Rule : int { Freestyle = 0, ExactFive = 1, Renju = 2 };

enum Stone : uint8_t { kEmpty = 0, kBlack = 1, kWhite = 2 };

constexpr Stone other(Stone s) { return s == kBlack ? kWhite : kBlack; }

constexpr int kMaxSide = 22;

// x is the row (below height), y the column (below width), as on the wire.
struct Cell {
  int x = 0;
  int y = 0;
  friend bool operator==(const Cell&, const Cell&) = default;
};

class Board {
 public:
  Board(int width, int height);

  int width() const { return width_; }
  int height() const { return height_; }
  int stones() const { return stones_; }
  bool full() const { return stones_ == width_ * height_; }
  bool inside(int x, int y) const { return x >= 0 && y >= 0 && x < height_ && y < width_; }
  // Off-board cells read as empty; callers that care test inside() first.
  Stone at(int x, int y) const { return inside(x, y) ? cells_[index(x, y)] : kEmpty; }
  void set(int x, int y, Stone s);
  // Side to move when the stones were played alternately, black first.
  Stone toMove() const { return stones_ % 2 == 0 ? kBlack : kWhite; }

 private:
  int index(int x, int y) const { return x * width_ + y; }
  int width_;
  int height_;
  int stones_ = 0;
  std::vector<Stone> cells_;
};

// The four line directions as (dx, dy) steps.
constexpr int kDirections = 4;
constexpr int kDx[kDirections] = {0, 1, 1, 1};
constexpr int kDy[kDirections] = {1, 0, -1, 1};

// Length of the run of `s` stones through (x, y) along direction d, counting
// (x, y) itself as an `s` stone whatever it holds.
int runThrough(const Board& b, int x, int y, int d, Stone s);

// Whether a stone of `s` on the empty cell (x, y) wins under `rule`:
// five or more in freestyle, exactly five in standard, and in Renju exactly
// five for black but five or more for white.
bool makesFive(const Board& b, int x, int y, Stone s, Rule rule);

enum class Forbidden { None, Overline, DoubleFour, DoubleThree };

// Whether black may not play the empty cell (x, y) under Renju, and why: the
// move does not make exactly five, and it makes an overline, two or more
// fours, or two or more real threes. A three is real when one of the cells
// that turn it into a straight four is itself allowed for black, a question
// asked recursively on the board with the move made. The board is left as it
// was found.
Forbidden forbiddenKind(Board& b, int x, int y);
inline bool isForbidden(Board& b, int x, int y) { return forbiddenKind(b, x, y) != Forbidden::None; }
const char* forbiddenName(Forbidden f);

// The number of fours a black stone on (x, y) makes along direction d: the
// distinct sets of four stones (the new one among them) that one more stone
// would complete to exactly five. An open four counts once; the two fours of
// X_XXX_X made from its middle count twice. Expects (x, y) to hold the stone.
int foursAlong(Board& b, int x, int y, int d);

// Whether the black stone on (x, y) is part of a real three along direction d:
// some empty cell of that line turns it into a straight four (_XXXX_ with
// both ends completing exactly five) and is not itself forbidden.
bool realThreeAlong(Board& b, int x, int y, int d);

enum class Verdict { Normal, Win, Forbidden };

// What happens when `s` plays the empty on-board cell (x, y); the board is not
// changed. Under Renju a black five wins even where the move would otherwise
// be forbidden.
Verdict judge(Board& b, int x, int y, Stone s, Rule rule);

// Letter-number notation of the opening books: the letter is x (a = 0), the
// number y + 1, so "h8" is x = 7, y = 7.
std::string cellName(Cell c);
std::string cellsName(const std::vector<Cell>& cells);

}  // namespace zorva::referee
