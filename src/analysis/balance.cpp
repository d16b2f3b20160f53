#include "analysis/balance.h"

#include <algorithm>
#include <span>

#include "analysis/narrowing.h"

namespace zorva {

namespace {

// Values are from the searched side's view: after one stone that is the
// opponent, who must stand at -offset; after two it is the mover again.
NarrowingRules balanceRules(Colour mover, int stones, int32_t offset) {
  if (stones == 1) return {mover, 1, opponent(mover), -offset};
  return {mover, 2, mover, offset};
}

}  // namespace

void runBalance(AnalysisSearch& search, AnalysisReporter& reporter, int stones, int32_t offset) {
  const int32_t d = std::clamp(offset, -kMaxBalanceOffset, kMaxBalanceOffset);
  startAnalysisClock(search.context(), thinkBudget(*search.context().engineSettings, Budget::kBalance));
  search.prepare();
  const NarrowingRules rules = balanceRules(search.board().sideToMove(), stones, d);
  CandidateList& list = analysisCandidates();
  if (stones == 1)
    collectSingles(search, rules, list);
  else
    collectPairs(search, rules, true, list);
  sortCandidates(list);
  auto report = [&](int depth, bool final) {
    const Candidate best = list.count > 0 ? list.entries[0] : Candidate{0, kNoMove, kNoMove};
    const Move cells[] = {best.first, best.second};
    const std::span<const Move> stonesShown(cells, size_t(stones));
    reporter.balance(progressAt(search.context(), depth + stones), d, best.score, stonesShown, final);
  };
  const int last = narrow(search, rules, list, [&](int depth) { report(depth, false); });
  finishAnalysis(search.context(), last + stones);
  report(last, true);
}

}  // namespace zorva
