#include "match/rules.h"

#include <cstdlib>
#include <set>
#include <stdexcept>

namespace zorva::referee {

Board::Board(int width, int height) : width_(width), height_(height) {
  if (width < 1 || height < 1 || width > kMaxSide || height > kMaxSide)
    throw std::invalid_argument("board size out of range");
  cells_.assign(size_t(width) * size_t(height), kEmpty);
}

void Board::set(int x, int y, Stone s) {
  Stone& c = cells_[index(x, y)];
  stones_ += (s != kEmpty) - (c != kEmpty);
  c = s;
}

namespace {

// Steps from (x, y) along direction d while the cells hold `s`; returns how
// many steps were taken.
int walk(const Board& b, int x, int y, int dx, int dy, Stone s) {
  int n = 0;
  for (int i = 1;; ++i) {
    int cx = x + i * dx, cy = y + i * dy;
    if (!b.inside(cx, cy) || b.at(cx, cy) != s) return n;
    ++n;
  }
}

// Places a stone for the lifetime of the object, so that every early return
// of the recursive checks leaves the board as it was.
class TryStone {
 public:
  TryStone(Board& b, int x, int y, Stone s) : b_(b), x_(x), y_(y) { b_.set(x, y, s); }
  ~TryStone() { b_.set(x_, y_, kEmpty); }
  TryStone(const TryStone&) = delete;
  TryStone& operator=(const TryStone&) = delete;

 private:
  Board& b_;
  int x_, y_;
};

}  // namespace

int runThrough(const Board& b, int x, int y, int d, Stone s) {
  return 1 + walk(b, x, y, kDx[d], kDy[d], s) + walk(b, x, y, -kDx[d], -kDy[d], s);
}

bool makesFive(const Board& b, int x, int y, Stone s, Rule rule) {
  bool overlineWins = rule == Rule::Freestyle || (rule == Rule::Renju && s == kWhite);
  for (int d = 0; d < kDirections; ++d) {
    int n = runThrough(b, x, y, d, s);
    if (n == 5 || (n > 5 && overlineWins)) return true;
  }
  return false;
}

int foursAlong(Board& b, int x, int y, int d) {
  // Each completing cell q (offset k from the stone along d) yields a five
  // [lo, hi]; the four is that five without q, kept as a bit set of offsets
  // -4..4 so that the two ends of an open four collapse into one.
  std::set<unsigned> fours;
  for (int k = -4; k <= 4; ++k) {
    int qx = x + k * kDx[d], qy = y + k * kDy[d];
    if (k == 0 || !b.inside(qx, qy) || b.at(qx, qy) != kEmpty) continue;
    TryStone q(b, qx, qy, kBlack);
    int lo = -walk(b, x, y, -kDx[d], -kDy[d], kBlack);
    int hi = walk(b, x, y, kDx[d], kDy[d], kBlack);
    if (hi - lo + 1 != 5 || k < lo || k > hi) continue;
    unsigned stones = 0;
    for (int i = lo; i <= hi; ++i)
      if (i != k) stones |= 1u << (i + 4);
    fours.insert(stones);
  }
  return int(fours.size());
}

namespace {

// After the black stones at p and q: is the run through p along d a straight
// four, _XXXX_, whose two ends each complete exactly five?
bool straightFourThrough(const Board& b, int x, int y, int d, int k) {
  int dx = kDx[d], dy = kDy[d];
  int lo = -walk(b, x, y, -dx, -dy, kBlack);
  int hi = walk(b, x, y, dx, dy, kBlack);
  if (hi - lo + 1 != 4 || k < lo || k > hi) return false;
  for (int end : {lo - 1, hi + 1}) {
    int ex = x + end * dx, ey = y + end * dy;
    if (!b.inside(ex, ey) || b.at(ex, ey) != kEmpty) return false;
  }
  // A black stone just beyond an end would make that completion six.
  for (int beyond : {lo - 2, hi + 2})
    if (b.at(x + beyond * dx, y + beyond * dy) == kBlack) return false;
  return true;
}

}  // namespace

bool realThreeAlong(Board& b, int x, int y, int d) {
  for (int k = -3; k <= 3; ++k) {
    int qx = x + k * kDx[d], qy = y + k * kDy[d];
    if (k == 0 || !b.inside(qx, qy) || b.at(qx, qy) != kEmpty) continue;
    bool straight;
    {
      TryStone q(b, qx, qy, kBlack);
      straight = straightFourThrough(b, x, y, d, k);
    }
    if (straight && !isForbidden(b, qx, qy)) return true;
  }
  return false;
}

Forbidden forbiddenKind(Board& b, int x, int y) {
  bool overline = false;
  for (int d = 0; d < kDirections; ++d) {
    int n = runThrough(b, x, y, d, kBlack);
    if (n == 5) return Forbidden::None;
    if (n > 5) overline = true;
  }
  if (overline) return Forbidden::Overline;

  TryStone p(b, x, y, kBlack);
  int fours = 0;
  bool hasFour[kDirections];
  for (int d = 0; d < kDirections; ++d) {
    int n = foursAlong(b, x, y, d);
    hasFour[d] = n > 0;
    fours += n;
  }
  if (fours >= 2) return Forbidden::DoubleFour;
  // A line that holds a four never also offers a straight four through this
  // stone (that five would need a black stone just beyond one of the straight
  // four's ends), so threes are looked for on the other lines only.
  int threes = 0;
  for (int d = 0; d < kDirections && threes < 2; ++d)
    if (!hasFour[d] && realThreeAlong(b, x, y, d)) ++threes;
  return threes >= 2 ? Forbidden::DoubleThree : Forbidden::None;
}

const char* forbiddenName(Forbidden f) {
  switch (f) {
    case Forbidden::Overline: return "overline";
    case Forbidden::DoubleFour: return "double four";
    case Forbidden::DoubleThree: return "double three";
    case Forbidden::None: break;
  }
  return "allowed";
}

Verdict judge(Board& b, int x, int y, Stone s, Rule rule) {
  if (makesFive(b, x, y, s, rule)) return Verdict::Win;
  if (rule == Rule::Renju && s == kBlack && isForbidden(b, x, y)) return Verdict::Forbidden;
  return Verdict::Normal;
}

std::string cellName(Cell c) {
  std::string s(1, char('a' + c.x));
  s += std::to_string(c.y + 1);
  return s;
}

std::string cellsName(const std::vector<Cell>& cells) {
  std::string s;
  for (const Cell& c : cells) s += cellName(c);
  return s;
}

}  // namespace zorva::referee
