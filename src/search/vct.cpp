#include "search/vct.h"

#include <algorithm>

#include "board/forbid.h"
#include "board/values.h"
#include "protocol/engine_state.h"
#include "search/limits.h"
#include "search/movegen.h"
#include "search/searcher.h"
#include "search/vcf.h"

namespace zorva {

namespace {

constexpr int kAttackWidth = 12;  // the attacker's best threats tried at a node
constexpr uint64_t kWhiteAttacks = 0x7F4A7C159E3779B9ull;
constexpr uint64_t kRunKey = 0x5851F42D4C957F2Dull;  // marks whole runs cut short by their budget
constexpr int kRunBudgetUnit = 16;                     // node budgets are cached in these units
constexpr uint64_t kRuleKeys[kRuleCount] = {0x2545F4914F6CDD1Dull, 0x94D049BB133111EBull, 0xBF58476D1CE4E5B9ull};

// The budget counts every node of the run, the fours searches inside it too.
struct VctRun {
  Searcher& s;
  int64_t lastNode;
  bool* zone;  // when given, the cells of the win found are marked
  bool truncated = false;

  bool exhausted() {
    if (countNode(s) || s.nodes > lastNode) truncated = true;
    return truncated;
  }
  int nodesLeft() const { return int(std::max<int64_t>(lastNode - s.nodes, 0)); }
};

bool renjuBlack(const Board& b, Colour c) { return b.rule == kRenju && c == BLACK; }

VcfCacheEntry& cacheSlot(Searcher& s, uint64_t key) { return s.vctCache[key & (kVctCacheSize - 1)]; }

// The attacker's fours and threes, strongest shapes first, at most kAttackWidth.
int threatMoves(Board& b, Colour side, ScoredMove* out) {
  int n = 0;
  auto add = [&](Move m) {
    if (renjuBlack(b, side) && isForbidden(b, m)) return true;
    for (int i = 0; i < n; ++i)
      if (out[i].move == m) return true;
    out[n++] = {moveValue[b.info[m].patternWord[colourIndex(side)] & 0xFFFF], m};
    return true;
  };
  b.threat(side, kFourClass).forEach(add);
  b.threat(side, kThreeClass).forEach(add);
  sortMoves(out, n);
  return std::min(n, kAttackWidth);
}

// Cells that answer the attacker's threes: its four and open-four points,
// which include every cell that keeps a three from opening, and the
// defender's own fours and open fours, which gain the tempo back.
int defenceMoves(Board& b, Colour attacker, Move* out) {
  const Colour defender = opponent(attacker);
  bool listed[kCellSlots] = {};
  int n = 0;
  auto add = [&](Move m) {
    if (listed[m] || (renjuBlack(b, defender) && isForbidden(b, m))) return true;
    listed[m] = true;
    out[n++] = m;
    return true;
  };
  for (ThreatClass c : {kOpenFourClass, kFourClass}) {
    b.threat(attacker, c).forEach(add);
    b.threat(defender, c).forEach(add);
  }
  return n;
}

int defenderNode(VctRun& run, Colour attacker, int threes);

// The attacker to move: plies to its win, or -1.
int attackerNode(VctRun& run, Colour attacker, int threes, Move* firstMove) {
  Board& b = run.s.board;
  const Colour defender = opponent(attacker);
  if (Move five; b.threat(attacker, kFiveClass).firstOf(&five) > 0) {
    if (firstMove) *firstMove = five;
    markFives(b, attacker, run.zone);
    return 0;
  }
  Move block = kNoMove;
  const int defenderFives = b.threat(defender, kFiveClass).firstOf(&block);
  if (defenderFives >= 2) return -1;
  if (defenderFives == 0) {
    const int fourNodes = std::min(run.nodesLeft(), kVcfNodeLimit);
    if (const int plies = vcfPlies(run.s, attacker, firstMove, fourNodes, run.zone); plies >= 0) return plies;
    // An open three of the defender outruns any three: only fours could win, and they just failed.
    if (threes <= 0 || hasPlayableOpenFour(b, defender)) return -1;
  }
  if (run.exhausted()) return -1;
  const uint64_t key = b.hash ^ (attacker == WHITE ? kWhiteAttacks : 0) ^ kRuleKeys[b.rule];
  VcfCacheEntry& slot = cacheSlot(run.s, key);
  if (slot.key == key && !firstMove && !(run.zone && slot.plies >= 0) &&
      (slot.plies >= 0 ? slot.budget <= threes : threes <= slot.budget))
    return slot.plies;

  ScoredMove moves[kMaxStones];
  int count = 0;
  if (defenderFives == 1) {
    if (renjuBlack(b, attacker) && isForbidden(b, block)) return -1;
    moves[count++] = {0, block};
  } else {
    count = threatMoves(b, attacker, moves);
  }
  for (int i = 0; i < count; ++i) {
    const Move m = moves[i].move;
    const bool four = b.threat(attacker, kFourClass).contains(m) || b.threat(attacker, kOpenFourClass).contains(m);
    b.placeStone<Update::Light>(m, attacker);
    const int rest = defenderNode(run, attacker, four ? threes : threes - 1);
    b.removeStone<Update::Light>(m);
    if (rest >= 0) {
      if (run.zone) run.zone[m] = true;
      slot = {key, int16_t(rest + 1), int16_t(threes)};
      if (firstMove) *firstMove = m;
      return rest + 1;
    }
  }
  if (!run.truncated && !engine.searchAborted) slot = {key, -1, int16_t(threes)};
  return -1;
}

// The defender to move after the attacker's threat: plies to the
// attacker's win against every answer, or -1 when one answer holds.
int defenderNode(VctRun& run, Colour attacker, int threes) {
  Board& b = run.s.board;
  const Colour defender = opponent(attacker);
  if (!b.threat(defender, kFiveClass).empty() || run.exhausted()) return -1;
  Move five = kNoMove;
  const int fives = b.threat(attacker, kFiveClass).firstOf(&five);
  if (fives >= 2 || (fives == 1 && renjuBlack(b, defender) && isForbidden(b, five))) {
    markFives(b, attacker, run.zone);
    return 1;
  }
  if (fives == 1) {
    b.placeStone<Update::Light>(five, defender);
    const int rest = attackerNode(run, attacker, threes, nullptr);
    b.removeStone<Update::Light>(five);
    if (rest >= 0 && run.zone) run.zone[five] = true;
    return rest < 0 ? -1 : rest + 1;
  }
  if (!hasPlayableOpenFour(b, attacker)) return -1;  // the move threatened nothing
  Move defences[kMaxStones];
  const int count = defenceMoves(b, attacker, defences);
  int longest = 0;
  for (int i = 0; i < count; ++i) {
    b.placeStone<Update::Light>(defences[i], defender);
    const int rest = attackerNode(run, attacker, threes, nullptr);
    b.removeStone<Update::Light>(defences[i]);
    if (rest < 0) return -1;
    longest = std::max(longest, rest);
  }
  if (run.zone)
    for (int i = 0; i < count; ++i) run.zone[defences[i]] = true;
  return longest + 1;
}

}  // namespace

int vctPlies(Searcher& s, Colour side, int nodeBudget, int maxThrees, Move* firstMove, bool* zone) {
  // A search that ran out of nodes is not repeated with the same budget and
  // threes: each deepening asks the same nodes again.
  const Board& b = s.board;
  const uint64_t key =
      b.hash ^ (side == WHITE ? kWhiteAttacks : 0) ^ kRuleKeys[b.rule] ^ (kRunKey * uint64_t(maxThrees + 1));
  VcfCacheEntry& slot = cacheSlot(s, key);
  if (!firstMove && slot.key == key && slot.plies < 0 && nodeBudget <= slot.budget * kRunBudgetUnit) return -1;
  VctRun run{s, s.nodes + nodeBudget, zone};
  const int plies = attackerNode(run, side, maxThrees, firstMove);
  if (plies < 0 && run.truncated && !engine.searchAborted)
    cacheSlot(s, key) = {key, -1, int16_t(std::min(nodeBudget / kRunBudgetUnit, int(INT16_MAX)))};
  return plies;
}

}  // namespace zorva
