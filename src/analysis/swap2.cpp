#include "analysis/swap2.h"

#include "analysis/narrowing.h"

namespace zorva {

namespace {

constexpr int32_t kProvenWin = 9999032;  // at or beyond this a root value is proven
constexpr int kPairStones = 2;

// The value of the position for the side to move, mate distance taken out.
int32_t decisionValue(AnalysisSearch& search) {
  const DecisionResult result = search.searchDecision();
  return mateAdjusted(result.value, result.depth);
}

// The pair that leaves the side to move nearest to an even game. A stop
// keeps the best of the last finished pass: a pass cut short compared its
// entries at two depths.
Candidate balancedPair(AnalysisSearch& search) {
  startAnalysisClock(search.context(), thinkBudget(*search.context().engineSettings, Budget::kSwapPair));
  search.prepare();
  const Colour side = search.board().sideToMove();
  const NarrowingRules rules{side, kPairStones, side, 0};
  CandidateList& list = analysisCandidates();
  collectPairs(search, rules, false, list);
  sortCandidates(list);
  Candidate best = list.count > 0 ? list.entries[0] : Candidate{0, kNoMove, kNoMove};
  const int last = narrow(search, rules, list, [&](int) { best = list.entries[0]; });
  finishAnalysis(search.context(), last + kPairStones);
  return best;
}

}  // namespace

int32_t mateAdjusted(int32_t value, int depth) {
  if (value >= kProvenWin) return value - depth;
  if (value <= -kProvenWin) return value + depth;
  return value;
}

void runSwap2First(AnalysisSearch& search, AnalysisReporter& reporter) {
  const int32_t value = decisionValue(search);
  if (value > kSwapMargin) {
    reporter.swapAnswer(SwapStep::First, false);
  } else if (value < -kSwapMargin) {
    reporter.swapAnswer(SwapStep::First, true);
  } else {
    const Candidate best = balancedPair(search);
    reporter.swapStones(best.first, best.second);
  }
}

void runSwap2Second(AnalysisSearch& search, AnalysisReporter& reporter) {
  reporter.swapAnswer(SwapStep::Second, decisionValue(search) < 0);
}

}  // namespace zorva
