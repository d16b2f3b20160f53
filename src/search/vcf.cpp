#include "search/vcf.h"

#include "board/forbid.h"
#include "search/limits.h"
#include "search/searcher.h"
#include "search/tt.h"

namespace zorva {

namespace {

constexpr uint64_t kWhiteAttacks = 0x9E3779B97F4A7C15ull;
constexpr uint64_t kSkippingRuns = 0xC2B2AE3D27D4EB4Full;
constexpr uint64_t kRuleKeys[kRuleCount] = {0, 0xD1B54A32D192ED03ull, 0x8CB92BA72F3D8DD7ull};

struct VcfRun {
  Searcher& s;
  int nodeLimit;
  bool* zone;  // when given, the cells of the win found are marked
  bool skipIdleFours = false;
  int nodes = 0;
  bool truncated = false;
};

bool renjuBlack(const Board& b, Colour c) { return b.rule == kRenju && c == BLACK; }

// The cells where `side` makes a four: open fours first.
int fourMoves(const Board& b, Colour side, Move* out) {
  int n = b.threat(side, kOpenFourClass).collect(out);
  const ThreatSet& openFours = b.threat(side, kOpenFourClass);
  b.threat(side, kFourClass).forEach([&](Move m) {
    if (!openFours.contains(m)) out[n++] = m;
    return true;
  });
  return n;
}

VcfCacheEntry& cacheSlot(Searcher& s, uint64_t key) { return s.vcfCache[key & (kVcfCacheSize - 1)]; }

// True when no line of `word` holds more than a dead two, except lines of code `allowed`.
bool deadTwosAtMost(uint32_t word, uint32_t allowed = kCodeNone) {
  for (int d = 0; d < kDirections; ++d)
    if (const uint32_t c = word >> (4 * d) & 15; c > kCodeClosedTwo && c != allowed) return false;
  return true;
}

// A four that dies with its block and makes nothing better than a dead two
// elsewhere adds no four point, now or after one more stone: it rarely
// helps a win by fours, and every such four doubles the tree.
bool idleFour(uint32_t word) { return deadTwosAtMost(word, kCodeFourDead); }

// Under Renju black's forced block may make a later block point forbidden,
// unless the stone builds nothing for black: no three or four, hence no
// forbidden point, can then run through it.
bool harmlessBlock(const Board& b, Colour attacker, Move block) {
  return b.rule != kRenju || attacker != WHITE || deadTwosAtMost(b.info[block].patternWord[0]);
}

}  // namespace

void markFives(const Board& b, Colour side, bool* zone) {
  if (zone)
    b.threat(side, kFiveClass).forEach([zone](Move m) {
      zone[m] = true;
      return true;
    });
}

namespace {

// Plies until `side` (to move) has a five on the board by continuous fours,
// or -1. `firstMove`, when given, receives the four that starts the win.
int attack(VcfRun& run, Colour side, int budget, Move* firstMove) {
  Board& b = run.s.board;
  if (!b.threat(side, kFiveClass).empty()) {
    if (firstMove) b.threat(side, kFiveClass).firstOf(firstMove);
    markFives(b, side, run.zone);
    return 0;
  }
  if (budget < 2 || countNode(run.s)) return -1;
  if (++run.nodes > run.nodeLimit) {
    run.truncated = true;
    return -1;
  }
  // Runs that skip idle fours fail more often: they keep their own entries.
  const uint64_t key =
      b.hash ^ (side == WHITE ? kWhiteAttacks : 0) ^ kRuleKeys[b.rule] ^ (run.skipIdleFours ? kSkippingRuns : 0);
  VcfCacheEntry& slot = cacheSlot(run.s, key);
  // A stored budget of 0 marks an empty slot: results are only stored with budgets of 2 and more.
  // A remembered win names no cells, so a run that marks them searches again.
  if (slot.key == key && slot.budget > 0 && !firstMove && !(run.zone && slot.plies >= 0) &&
      (slot.plies >= 0 ? slot.plies <= budget : budget <= slot.budget))
    return slot.plies;

  const Colour other = opponent(side);
  Move moves[kMaxStones];
  int count = 0;
  Move block = kNoMove;
  const int threats = b.threat(other, kFiveClass).firstOf(&block);
  if (threats >= 2) return -1;
  if (threats == 1) {
    // The opponent's four must be blocked; only a block that is a four of ours keeps the attack going.
    if (b.threat(side, kFourClass).contains(block) || b.threat(side, kOpenFourClass).contains(block))
      moves[count++] = block;
  } else {
    count = fourMoves(b, side, moves);
  }

  for (int i = 0; i < count; ++i) {
    const Move m = moves[i];
    if (renjuBlack(b, side) && isForbidden(b, m)) continue;
    const uint32_t before = b.info[m].patternWord[colourIndex(side)];
    b.placeStone<Update::Light>(m, side);
    Move five = kNoMove;
    const int fives = b.threat(side, kFiveClass).firstOf(&five);
    int plies = -1;
    if (fives >= 2 || (fives == 1 && renjuBlack(b, other) && isForbidden(b, five))) {
      plies = 2;  // two fives, or one black may not take
      markFives(b, side, run.zone);
    } else if (fives == 1 && !(run.skipIdleFours && idleFour(before) && harmlessBlock(b, side, five))) {
      b.placeStone<Update::Light>(five, other);
      const int rest = attack(run, side, budget - 2, nullptr);
      b.removeStone<Update::Light>(five);
      if (rest >= 0) plies = rest + 2;
      if (rest >= 0 && run.zone) run.zone[five] = true;
    }
    b.removeStone<Update::Light>(m);
    if (plies >= 0) {
      if (run.zone) run.zone[m] = true;
      slot = {key, int16_t(plies), int16_t(budget)};
      if (firstMove) *firstMove = m;
      return plies;
    }
  }
  if (!run.truncated && !run.s.ctx->aborted) slot = {key, -1, int16_t(budget)};
  return -1;
}

}  // namespace

// The search's depth does not limit the threat search: fours force their
// replies, so a fixed ply budget keeps it cheap at any depth. Idle fours are
// skipped: in crowded positions they made this search most of the work.
int32_t vcf(Searcher& s, int, Colour side) {
  const int plies = vcfPlies(s, side, nullptr, kVcfNodeLimit, nullptr, true);
  return plies < 0 ? 0 : kWin + kVcfDepthBase - plies;
}

int vcfPlies(Searcher& s, Colour side, Move* firstMove, int nodeLimit, bool* zone, bool skipIdleFours) {
  VcfRun run{s, nodeLimit, zone, skipIdleFours};
  return attack(run, side, kMaxVcfPlies, firstMove);
}

Move quickWinMove(Searcher& s, Colour side) {
  const Board& b = s.board;
  Move m = kNoMove;
  if (b.threat(side, kFiveClass).firstOf(&m)) return m;
  VcfRun run{s, kVcfNodeLimit, nullptr};
  m = kNoMove;
  return attack(run, side, kMaxVcfPlies, &m) >= 0 ? m : kNoMove;
}

}  // namespace zorva
