#include "search/movegen.h"

#include <algorithm>

#include "board/forbid.h"
#include "board/values.h"
#include "protocol/engine_state.h"

namespace zorva {

namespace {

constexpr uint32_t kMaxCode = 15;

uint32_t maxCode(uint32_t patternWord) {
  uint32_t best = 0;
  for (int d = 0; d < kDirections; ++d) best = std::max(best, patternWord >> (4 * d) & kMaxCode);
  return best;
}

// Does the opponent's open three need an answer? Under Renju black's open
// four points that black may not play threaten nothing.
bool mustDefendThree(Board& b, Colour side) {
  return engine.settings.threeDef && hasPlayableOpenFour(b, opponent(side));
}

int32_t orderingScore(const Searcher& s, const Board& b, Move m, Colour side) {
  const CellInfo& info = b.info[m];
  return patternValue[info.patternWord[colourIndex(side)] & 0xFFFF] +
         patternValue[info.patternWord[colourIndex(opponent(side))] & 0xFFFF] / 2 + s.history[m];
}

}  // namespace

bool hasPlayableOpenFour(Board& b, Colour side) {
  const ThreatSet& set = b.threat(side, kOpenFourClass);
  if (set.empty()) return false;
  if (b.rule != kRenju || side != BLACK) return true;
  return !set.forEach([&](Move m) { return isForbidden(b, m); });
}

bool isTacticalMove(const Board& b, Move m, Colour side) {
  const CellInfo& info = b.info[m];
  return maxCode(info.patternWord[colourIndex(side)]) >= kCodeThreeOne ||
         maxCode(info.patternWord[colourIndex(opponent(side))]) >= kCodeFourDead;
}

int generateMoves(Searcher& s, const MoveRequest& request, ScoredMove* out) {
  Board& b = s.board;
  const Colour side = request.side, other = opponent(side);
  // Against an open three only the rows' cells of the defence and four sets count.
  const bool defend = mustDefendThree(b, side);
  uint32_t defence[kMaxSide] = {};
  if (defend)
    for (const ThreatSet* set : {&b.threat(other, kOpenFourClass), &b.threat(other, kFourClass),
                                 &b.threat(side, kFourClass), &b.threat(side, kOpenFourClass)})
      for (int row = 0; row < b.height; ++row) defence[row] |= set->rowMask[row];

  int count = 0;
  for (int row = 0; row < b.height; ++row)
    for (int col = 0; col < b.width; ++col) {
      const Move m = makeMove(row, col);
      const bool candidate = defend ? (defence[row] >> col & 1) != 0
                                    : (b.info[m].patternWord[0] | b.info[m].patternWord[1]) != 0;
      if (!candidate || b.at(m) != EMPTY) continue;
      if (request.blockTable && request.blockTable[m]) continue;
      if (b.rule == kRenju && side == BLACK && isForbidden(b, m)) continue;
      int32_t score = orderingScore(s, b, m, side);
      for (int i = 0; i < request.tableCount; ++i)
        if (request.tableMoves[i] == m) score = kTableMoveScore - i;
      if (request.killers && (request.killers[0] == m || request.killers[1] == m)) score = std::max(score, kKillerScore);
      out[count++] = {score, m};
    }
  std::sort(out, out + count, [](const ScoredMove& a, const ScoredMove& c) { return a.score > c.score; });
  return count;
}

}  // namespace zorva
