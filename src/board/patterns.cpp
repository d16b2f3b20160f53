#include "board/patterns.h"

#include <algorithm>
#include <mutex>

namespace zorva {

namespace {

// Cells of a line seen by one colour: its own stones, empties, and blockers
// (the other colour, walls and the edge are all the same to it).
enum : int8_t { kEmpty = 0, kOwn = 1, kBlocked = 2 };

constexpr int kMid = kSpanHalf;  // the cell being classified
constexpr int kReach = 4;        // a five through the middle lies within four cells of it

struct LineRules {
  bool exactFive;      // a run of six or more does not win
  bool overlineCode;   // a run of six or more is reported as code 13
  bool straightOpen;   // only _xxxx_ counts as an open four (Renju black)
};

LineRules lineRules(int rule, Colour colour) {
  if (rule == kRenju && colour == BLACK) return {true, true, true};
  if (rule == kStandard) return {true, false, false};
  return {false, false, false};
}

// The classifier works on a copy of the span with the middle stone placed.
class SpanClassifier {
 public:
  SpanClassifier(const LineRules& rules, int8_t* cells) : r_(rules), c_(cells) {}

  int code() {
    const int run = runLength(kMid);
    if (wins(run)) return kCodeFive;
    if (run > 5) return r_.overlineCode ? kCodeOverline : kCodeNone;
    int points[kSpanCells];
    const int completions = completionPoints(points);
    if (isOpen(points, completions)) return kCodeOpenFour;
    if (completions >= 2) return kCodeFourAlive;
    if (completions == 1) return fourSurvivesBlock(points[0]) ? kCodeFourAlive : kCodeFourDead;
    const int openFourMoves = countMoves([this] { return makesOpenFour(); });
    if (openFourMoves > 0) return openFourMoves >= 2 ? kCodeThreeTwo : kCodeThreeOne;
    if (countMoves([this] { return hasCompletion(); }) > 0)
      return countMoves([this] { return code() == kCodeFourAlive; }) > 0 ? kCodeClosedThreeAlive : kCodeClosedThree;
    const int threeMoves = countMoves([this] { return isThree(); });
    if (threeMoves > 0) return threeMoves <= 2 ? 2 : std::min(threeMoves, 4);
    return sharesFive() ? kCodeClosedTwo : kCodeNone;
  }

 private:
  bool wins(int run) const { return r_.exactFive ? run == 5 : run >= 5; }

  int runLength(int p) const {
    int lo = p, hi = p;
    while (lo > 0 && c_[lo - 1] == kOwn) --lo;
    while (hi < kSpanCells - 1 && c_[hi + 1] == kOwn) ++hi;
    return hi - lo + 1;
  }

  // Empty cells that complete a winning run through the middle stone. A run
  // through both a filled cell f and the middle is the run through f, so
  // checking f's run is enough when f lies next to or inside the middle's.
  int completionPoints(int* points) {
    int n = 0;
    for (int f = kMid - kReach; f <= kMid + kReach; ++f) {
      if (c_[f] != kEmpty) continue;
      c_[f] = kOwn;
      if (sameRun(f) && wins(runLength(kMid))) points[n++] = f;
      c_[f] = kEmpty;
    }
    return n;
  }

  bool sameRun(int f) const {
    const int lo = f < kMid ? f : kMid, hi = f < kMid ? kMid : f;
    for (int i = lo; i <= hi; ++i)
      if (c_[i] != kOwn) return false;
    return true;
  }

  bool hasCompletion() {
    int points[kSpanCells];
    return completionPoints(points) > 0;
  }

  bool isOpen(const int* points, int n) const {
    if (!r_.straightOpen) return n >= 2;
    for (int i = 0; i < n; ++i)
      for (int j = i + 1; j < n; ++j)
        if (points[j] - points[i] == 5) return true;
    return false;
  }

  bool makesOpenFour() {
    int points[kSpanCells];
    return isOpen(points, completionPoints(points));
  }

  // One more stone somewhere makes an open four through the middle.
  bool isThree() {
    if (runLength(kMid) > 4) return false;
    return countMoves([this] { return makesOpenFour(); }) > 0;
  }

  // With the completion point taken by the opponent, can a further stone
  // make a four through the middle again?
  bool fourSurvivesBlock(int point) {
    c_[point] = kBlocked;
    const bool survives = countMoves([this] { return hasCompletion(); }) > 0;
    c_[point] = kEmpty;
    return survives;
  }

  // Empty cells within reach where one more stone makes `test` true.
  template <class Test>
  int countMoves(Test test) {
    int n = 0;
    for (int e = kMid - kReach; e <= kMid + kReach; ++e) {
      if (c_[e] != kEmpty) continue;
      c_[e] = kOwn;
      n += test();
      c_[e] = kEmpty;
    }
    return n;
  }

  // Some five-cell window through the middle is free of blockers and holds
  // another stone of the colour.
  bool sharesFive() const {
    for (int start = kMid - kReach; start <= kMid; ++start) {
      int own = 0;
      bool free = true;
      for (int i = start; i < start + 5; ++i) {
        free = free && c_[i] != kBlocked;
        own += c_[i] == kOwn;
      }
      if (free && own >= 2) return true;
    }
    return false;
  }

  const LineRules& r_;
  int8_t* c_;
};

int classify(const LineRules& rules, int8_t* cells) {
  cells[kMid] = kOwn;
  const int code = SpanClassifier(rules, cells).code();
  cells[kMid] = kEmpty;
  return code;
}

// Beyond the first blocker on each side nothing matters, so a side of the
// span reduces to its free length k (0..5) and the own stones among those k
// cells: id = 2^k - 1 + stones, 63 ids in all.
constexpr int kSideIds = 63;

int sideId(const int (&nearestFirst)[kSpanHalf], Colour colour) {
  int k = 0, stones = 0;
  for (; k < kSpanHalf; ++k) {
    const int v = nearestFirst[k];
    if (v == colour)
      stones |= 1 << k;
    else if (v != EMPTY)
      break;
  }
  return (1 << k) - 1 + stones;
}

void decodeSide(int id, int8_t* cells, int step) {
  int k = 0;
  while ((2 << k) - 1 <= id) ++k;
  const int stones = id - ((1 << k) - 1);
  for (int i = 0; i < kSpanHalf; ++i) {
    const int8_t v = i < k ? ((stones >> i & 1) ? kOwn : kEmpty) : kBlocked;
    cells[kMid + step * (i + 1)] = v;
  }
}

// Left half: bits 0..9 of the span, the nearest cell in bits 8-9.
void leftHalf(uint32_t half, int (&nearestFirst)[kSpanHalf]) {
  for (int i = 0; i < kSpanHalf; ++i) nearestFirst[i] = int(half >> (2 * (kSpanHalf - 1 - i)) & 3);
}
// Right half: bits 12..21 of the span shifted down, the nearest cell lowest.
void rightHalf(uint32_t half, int (&nearestFirst)[kSpanHalf]) {
  for (int i = 0; i < kSpanHalf; ++i) nearestFirst[i] = int(half >> (2 * i) & 3);
}

using ShapeCodes = uint8_t[kSideIds][kSideIds];

void classifyShapes(const LineRules& rules, ShapeCodes& codes) {
  int8_t cells[kSpanCells];
  for (int left = 0; left < kSideIds; ++left)
    for (int right = 0; right < kSideIds; ++right) {
      decodeSide(left, cells, -1);
      decodeSide(right, cells, 1);
      cells[kMid] = kEmpty;
      codes[left][right] = uint8_t(classify(rules, cells));
    }
}

constexpr uint32_t kHalves = 1 << (2 * kSpanHalf);

// Only spans with an empty middle are written; the rest stay 0 from static
// initialisation, since a stone or a wall in the middle makes nothing.
void buildTable(int rule, uint8_t* table) {
  ShapeCodes black, white;
  classifyShapes(lineRules(rule, BLACK), black);
  if (rule == kRenju)
    classifyShapes(lineRules(rule, WHITE), white);
  else
    std::copy(&black[0][0], &black[0][0] + kSideIds * kSideIds, &white[0][0]);

  uint8_t leftId[2][kHalves], rightId[2][kHalves];
  for (uint32_t h = 0; h < kHalves; ++h) {
    int cells[kSpanHalf];
    leftHalf(h, cells);
    leftId[0][h] = uint8_t(sideId(cells, BLACK));
    leftId[1][h] = uint8_t(sideId(cells, WHITE));
    rightHalf(h, cells);
    rightId[0][h] = uint8_t(sideId(cells, BLACK));
    rightId[1][h] = uint8_t(sideId(cells, WHITE));
  }
  for (uint32_t right = 0; right < kHalves; ++right) {
    const uint8_t rb = rightId[0][right], rw = rightId[1][right];
    uint8_t* row = table + (right << (2 * kSpanHalf + 2));
    for (uint32_t left = 0; left < kHalves; ++left)
      row[left] = uint8_t(black[leftId[0][left]][rb] | white[leftId[1][left]][rw] << 4);
  }
}

uint8_t tables[kRuleCount][1 << kSpanBits];
std::once_flag built[kRuleCount];

}  // namespace

const uint8_t* patternTable(int rule) {
  if (rule < 0 || rule >= kRuleCount) rule = kFreestyle;
  std::call_once(built[rule], [rule] { buildTable(rule, tables[rule]); });
  return tables[rule];
}

int classifySpan(int rule, Colour colour, uint32_t span) {
  if ((span >> (2 * kSpanHalf) & 3) != EMPTY) return kCodeNone;
  int left[kSpanHalf], right[kSpanHalf];
  leftHalf(span & (kHalves - 1), left);
  rightHalf(span >> (2 * kSpanHalf + 2), right);
  int8_t cells[kSpanCells];
  decodeSide(sideId(left, colour), cells, -1);
  decodeSide(sideId(right, colour), cells, 1);
  cells[kMid] = kEmpty;
  return classify(lineRules(rule, colour), cells);
}

}  // namespace zorva
