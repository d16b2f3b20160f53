#include "search/vct.h"

#include <algorithm>

#include "search/searcher.h"
#include "search/threat_solver.h"

namespace zorva {

namespace {

constexpr int kAttackWidth = 12;  // the attacker's best threats tried at a node
constexpr uint64_t kRunKey = 0x5851F42D4C957F2Dull;  // marks whole runs cut short by their budget
constexpr uint64_t kWhiteAttacks = 0x7F4A7C159E3779B9ull;
constexpr int kRunBudgetUnit = 16;  // node budgets are cached in these units
constexpr uint64_t kRuleKeys[kRuleCount] = {0x2545F4914F6CDD1Dull, 0x94D049BB133111EBull, 0xBF58476D1CE4E5B9ull};

VcfCacheEntry& cacheSlot(Searcher& s, uint64_t key) { return s.vctCache[key & (kVctCacheSize - 1)]; }

}  // namespace

int vctPlies(Searcher& s, Colour side, int nodeBudget, int maxThrees, Move* firstMove, bool* zone) {
  // A search that ran out of nodes is not repeated with the same budget and
  // threes: each deepening asks the same nodes again.
  const Board& b = s.board;
  const uint64_t key =
      b.hash ^ (side == WHITE ? kWhiteAttacks : 0) ^ kRuleKeys[b.rule] ^ (kRunKey * uint64_t(maxThrees + 1));
  VcfCacheEntry& slot = cacheSlot(s, key);
  if (!firstMove && slot.key == key && slot.plies < 0 && nodeBudget <= slot.budget * kRunBudgetUnit) return -1;
  ThreatSolver run(s, 1, {nodeBudget, maxThrees, kAttackWidth}, zone);
  const int plies = run.attack(side, firstMove);
  if (plies < 0 && run.truncated() && !s.ctx->aborted)
    cacheSlot(s, key) = {key, -1, int16_t(std::min(nodeBudget / kRunBudgetUnit, int(INT16_MAX)))};
  return plies;
}

}  // namespace zorva
