#include "search/movegen.h"

#include <algorithm>

#include "board/forbid.h"
#include "board/values.h"
#include "board/zobrist.h"
#include "search/vcf.h"
#include "search/vct.h"

namespace zorva {

namespace {

constexpr int kHistoryWeightCap = 24;  // history only breaks ties between similar cells

// Does the opponent's open three need an answer? Under Renju black's open
// four points that black may not play threaten nothing.
bool mustDefendThree(const SearchContext& ctx, Board& b, Colour side) {
  return ctx.settings.threeDef && hasPlayableOpenFour(b, opponent(side));
}

// The cells that answer an open three: its four and open-four points, and
// our own fours and open fours. Black's points that black may not play need
// no answer.
void defenceRows(Board& b, Colour side, uint32_t* rows) {
  const Colour other = opponent(side);
  const bool skipForbidden = b.rule == kRenju && other == BLACK;
  for (const ThreatSet* set : {&b.threat(other, kOpenFourClass), &b.threat(other, kFourClass)})
    set->forEach([&](Move m) {
      if (!(skipForbidden && isForbidden(b, m))) rows[rowOf(m)] |= 1u << colOf(m);
      return true;
    });
  for (int row = 0; row < b.height; ++row)
    rows[row] |= b.threat(side, kFourClass).rowMask[row] | b.threat(side, kOpenFourClass).rowMask[row];
}

// The mover's value of the cell plus half the opponent's: a cell that
// builds our shapes leads, and one that spoils theirs comes next, since
// the best defence in this game is usually the opponent's best point.
int32_t orderingScore(const Searcher& s, const Board& b, Move m, Colour side, int ply) {
  const CellInfo& info = b.info[m];
  const int32_t own = moveValue[info.patternWord[colourIndex(side)] & 0xFFFF];
  const int32_t theirs = moveValue[info.patternWord[colourIndex(opponent(side))] & 0xFFFF];
  return own + theirs / 2 + std::min(s.history[ply][m], kHistoryWeightCap);
}

// Two lines of at least a closed three through the cell: the stone there
// prepares a double four or a four-three, a threat no single code shows.
bool doubleClosedThree(uint32_t word) {
  int lines = 0;
  for (int d = 0; d < kDirections; ++d) lines += (word >> (4 * d) & 15) >= kCodeClosedThree;
  return lines >= 2;
}

int32_t stageScore(const Board& b, Move m, Colour side, const Killer* killers) {
  if (b.threat(side, kFourClass).contains(m)) return kFourStageScore;
  if (b.threat(side, kThreeClass).contains(m) || b.threat(opponent(side), kThreeClass).contains(m))
    return kThreeStageScore;
  if (doubleClosedThree(b.info[m].patternWord[colourIndex(side)])) return kThreeStageScore;
  if (killers)
    for (int i = 0; i < 2; ++i)
      if (killers[i].move == m && killers[i].count == (b.info[m].patternWord[colourIndex(side)] & 0xFFFF))
        return kKillerScore;
  return 0;
}

}  // namespace

bool leadsIntoBlockPath(const SearchContext& ctx, const Board& b, Move m, Colour side) {
  if (!ctx.blockPaths) return false;
  const BlockPaths& paths = *ctx.blockPaths;
  if (!paths.marked(m)) return false;
  // The front end's keys cover stones only, not the walls of a rectangle.
  uint64_t key = zobristKeys[m][side];
  for (int i = 0; i < b.moveCount; ++i) key ^= zobristKeys[b.moves[i]][b.at(b.moves[i])];
  return paths.contains(key);
}

bool declaredUnusable(const Board& b, Move m, Colour side) { return b.markedCount != 0 && b.isMarked(m, side); }

bool playable(const SearchContext& ctx, Board& b, Move m, Colour side) {
  return m >= 0 && m < kCellSlots && b.inside(rowOf(m), colOf(m)) && b.at(m) == EMPTY &&
         !declaredUnusable(b, m, side) && !(b.rule == kRenju && side == BLACK && isForbidden(b, m)) &&
         !leadsIntoBlockPath(ctx, b, m, side);
}

bool choosable(const SearchContext& ctx, Board& b, Move m, Colour side) {
  return playable(ctx, b, m, side) && !blocked(ctx, m);
}

bool hasPlayableOpenFour(Board& b, Colour side) {
  const ThreatSet& set = b.threat(side, kOpenFourClass);
  if (set.empty()) return false;
  if (b.rule != kRenju || side != BLACK) return true;
  return !set.forEach([&](Move m) { return isForbidden(b, m); });
}

int generateMoves(Searcher& s, const MoveRequest& request, ScoredMove* out) {
  Board& b = s.board;
  const Colour side = request.side;
  const bool defend = mustDefendThree(*s.ctx, b, side);
  uint32_t defence[kMaxSide] = {};
  if (defend) defenceRows(b, side, defence);

  int count = 0;
  for (int row = 0; row < b.height; ++row)
    for (int col = 0; col < b.width; ++col) {
      const Move m = makeMove(row, col);
      const bool candidate = defend ? (defence[row] >> col & 1) != 0
                                    : (b.info[m].patternWord[0] | b.info[m].patternWord[1]) != 0;
      if (!candidate || b.at(m) != EMPTY) continue;
      if (request.blockTable && request.blockTable[m]) continue;
      if (std::find(request.skip, request.skip + request.skipCount, m) != request.skip + request.skipCount) continue;
      if (declaredUnusable(b, m, side)) continue;
      if (b.rule == kRenju && side == BLACK && isForbidden(b, m)) continue;
      if (leadsIntoBlockPath(*s.ctx, b, m, side)) continue;
      out[count++] = {stageScore(b, m, side, request.killers) + orderingScore(s, b, m, side, request.ply), m};
    }
  return count;
}

namespace {

// A move after which the opponent wins by fours loses, whatever it blocks
// or threatens: a three of ours does not take the tempo from fours, and a
// cell of one win may leave another.
bool leavesWinByFours(Searcher& s, Colour side, Move m) {
  Board& b = s.board;
  b.placeStone<Update::Light>(m, side);
  const bool lost = vcfPlies(s, opponent(side), nullptr) >= 0;
  b.removeStone<Update::Light>(m);
  return lost;
}

}  // namespace

int keepThreatDefences(Searcher& s, Colour side, ScoredMove* moves, int count, int nodeBudget, int maxThrees) {
  Board& b = s.board;
  bool zone[kCellSlots] = {};
  if (vctPlies(s, opponent(side), nodeBudget, maxThrees, nullptr, zone) < 0) return count;
  int kept = 0;
  for (int i = 0; i < count; ++i) {
    const Move m = moves[i].move;
    const bool four = b.threat(side, kFourClass).contains(m) || b.threat(side, kOpenFourClass).contains(m);
    if (four || ((zone[m] || b.threat(side, kThreeClass).contains(m)) && !leavesWinByFours(s, side, m)))
      moves[kept++] = moves[i];
  }
  return kept > 0 ? kept : count;
}

void pickBest(ScoredMove* moves, int from, int count) {
  int best = from;
  for (int i = from + 1; i < count; ++i)
    if (moves[i].score > moves[best].score) best = i;
  std::swap(moves[from], moves[best]);
}

// Insertion sort: stable and allocation-free, and the lists are short or sorted once per depth.
void sortMoves(ScoredMove* moves, int count) {
  for (int i = 1; i < count; ++i) {
    const ScoredMove m = moves[i];
    int j = i;
    for (; j > 0 && moves[j - 1].score < m.score; --j) moves[j] = moves[j - 1];
    moves[j] = m;
  }
}

}  // namespace zorva
