#include "board/eval.h"

#include <bit>
#include <initializer_list>

#include "board/forbid.h"
#include "board/values.h"

namespace zorva {

namespace {

constexpr int kRenjuTrap = 200;         // white threat on a cell black may not take
constexpr int kRenjuTrapStrong = 120;   // the same where black's own shapes are strong
constexpr int kOpponentThreats = 100;   // the opponent's threes and fours still need an answer
constexpr int kOpenFourRoom = 50;
constexpr int kOpenFourCrowd = 20;
constexpr int kDoubleThreat = 200;

int roomSum(const Board& b, Move m, Colour c) { return b.info[m].roomSum[colourIndex(c)]; }

// Step 2: white's fours, then white's threes, on cells black may not take.
// A cell in both sets counts twice.
int renjuTraps(Board& b, Colour c, Move* scratch) {
  int score = 0;
  for (ThreatClass t : {kFourClass, kThreeClass}) {
    const int n = b.threat(WHITE, t).collect(scratch);
    for (int i = 0; i < n; ++i) {
      const Move m = scratch[i];
      if (!isForbidden(b, m)) continue;
      const bool strong = blackValue[b.info[m].patternWord[0] & 0xFFFF] >= kBlackValueThreshold;
      const int trap = strong ? kRenjuTrapStrong : kRenjuTrap;
      score += c == BLACK ? -trap : trap;
    }
  }
  return score;
}

// True when every black three and four point is forbidden for black.
bool blackThreatsAllForbidden(Board& b) {
  auto forbidden = [&b](Move m) { return isForbidden(b, m); };
  return b.threat(BLACK, kThreeClass).forEach(forbidden) && b.threat(BLACK, kFourClass).forEach(forbidden);
}

uint32_t shiftToColumn(uint32_t mask, int start) { return start >= 0 ? mask << start : mask >> -start; }

// Four and three points of `o` in the star around an open-four point:
// three cells apart on rows r +- 3, five wide on rows r +- 1, 2, seven on row r.
int crowdAround(const Board& b, Colour o, Move m) {
  const ThreatSet& fours = b.threat(o, kFourClass);
  const ThreatSet& threes = b.threat(o, kThreeClass);
  const int r = rowOf(m), c = colOf(m);
  auto row = [&](int rr) { return rr >= 0 ? fours.rowMask[rr] | threes.rowMask[rr] : 0u; };
  const uint32_t star = shiftToColumn(0b1001001, c - 3), narrow = shiftToColumn(0b11111, c - 2),
                 wide = shiftToColumn(0b1111111, c - 3);
  int count = std::popcount(row(r - 3) & star) + std::popcount(row(r + 3) & star);
  for (int k = 1; k <= 2; ++k) count += std::popcount(row(r - k) & narrow) + std::popcount(row(r + k) & narrow);
  return count + std::popcount(row(r) & wide);
}

// Directions in which a colour has fives or open fours; two or more is a
// threat the opponent cannot meet with one stone.
uint32_t winningDirections(const Board& b, Colour c) {
  uint32_t dirs = 0;
  for (ThreatClass t : {kFiveClass, kOpenFourClass})
    b.threat(c, t).forEach([&](Move m) {
      dirs |= b.threat(c, t).cellDirs[m];
      return true;
    });
  return dirs;
}

}  // namespace

int threatPointScore(const Board& b, Colour c) {
  const Colour o = opponent(c);
  return kThreatPointWeights[0] * b.threat(c, kFourClass).count() +
         kThreatPointWeights[1] * b.threat(c, kThreeClass).count() +
         kThreatPointWeights[2] * b.threat(o, kFourClass).count() +
         kThreatPointWeights[3] * b.threat(o, kThreeClass).count();
}

int evaluate(Board& b, Colour c, Move* scratch) {
  const Colour o = opponent(c);
  int score = b.total(c) - b.total(o);

  if (b.rule == kRenju) score += renjuTraps(b, c, scratch);

  if (!b.threat(o, kFourClass).empty() || !b.threat(o, kThreeClass).empty()) {
    score += kOpponentThreats;
    if (b.rule == kRenju && c == WHITE && blackThreatsAllForbidden(b)) score -= kOpponentThreats;
  }

  const int openFours = b.threat(o, kOpenFourClass).collect(scratch);
  if (openFours > 0) score += roomSum(b, scratch[0], o) * kOpenFourRoom >> 5;
  for (int i = 0; i < openFours; ++i) {
    const Move m = scratch[i];
    const int crowd = rowOf(m) + 3 < b.height ? crowdAround(b, o, m) : 0;
    score -= roomSum(b, m, o) * kOpenFourCrowd * crowd >> 5;
  }

  if (std::popcount(winningDirections(b, o)) >= 2) score -= kDoubleThreat;
  if (std::popcount(winningDirections(b, c)) >= 2) score += kDoubleThreat;
  score += threatPointScore(b, c);
  return score + kSideToMove;
}

}  // namespace zorva
