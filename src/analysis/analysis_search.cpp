#include "analysis/analysis_search.h"

#include <algorithm>
#include <cstdint>

#include "search/driver.h"
#include "search/parallel.h"
#include "search/search.h"
#include "search/searcher.h"
#include "search/threat_solver.h"
#include "search/vct.h"

namespace zorva {

namespace {
// A defence is judged against threat sequences this long and this wide:
// more than a turn's root allows itself, since each answer is checked once.
// The turn's threat search goes first; the wider proof catches what its
// narrower threes miss.
constexpr int kThreatNodes = 200000;
constexpr int kThreatThrees = 8;
constexpr int kProofLevel = 3;
constexpr int kProofThreats = 3;
constexpr int64_t kProofNodes = 3000000;
// The same judgement by level 1 or 2 of the threat solvers: the narrow
// level may follow long chains, the wider one fewer threats.
constexpr SolverLimits kJudgeLimits[] = {
    {kThreatNodes, kThreatThrees, kMaxStones},
    {kProofNodes, kProofThreats, kMaxStones},
};

Searcher& analysisSearcher() { return searcher(0); }
}  // namespace

SearchContext& EngineAnalysis::context() { return turn_.context(); }

void EngineAnalysis::prepare() {
  turn_.prepare();
  clearSolverMemo();
}

Board& EngineAnalysis::board() { return analysisSearcher().board; }

int32_t EngineAnalysis::evaluate(Colour side) { return turn_.evaluate(side); }

void EngineAnalysis::startDepth(int plies) {
  context().think->currentDepth = plies;
  turn_.startDepth();
}

int32_t EngineAnalysis::searchNode(int depth, int ply, int32_t alpha, int32_t beta, Colour side) {
  return zorva::searchNode(analysisSearcher(), depth, ply, alpha, beta, side, 0);
}

RootResult EngineAnalysis::searchRoot(int depth, Colour side, std::span<const Move> excluded, Move hint) {
  ThinkState& t = *context().think;
  t.bestMove = hint;
  t.singleReply = 0;
  const RootFilter filter{excluded};
  const int32_t value = zorva::searchRoot(analysisSearcher(), depth, side, &filter);
  return {value, t.bestMove, t.singleReply != 0};
}

DecisionResult EngineAnalysis::searchDecision() {
  const int32_t value = runDecisionSearch(turn_, position_);
  return {value, context().think->currentDepth};
}

int EngineAnalysis::threatWinPlies(Colour side, int level) {
  if (level > 0) {
    ThreatSolver solver(analysisSearcher(), level, kJudgeLimits[std::min(level, 2) - 1]);
    return solver.attack(side, nullptr);
  }
  const int plies = vctPlies(analysisSearcher(), side, kThreatNodes, kThreatThrees, nullptr);
  if (plies >= 0) return plies;
  ThreatSolver proof(analysisSearcher(), kProofLevel, {kProofNodes, kProofThreats, kMaxStones});
  return proof.attack(side, nullptr);
}

bool EngineAnalysis::aborted() { return context().aborted != 0; }

void EngineAnalysis::mergeStatistics() { turn_.mergeStatistics(); }

void startAnalysisClock(SearchContext& ctx, int32_t budgetMs) {
  ThinkState& t = *ctx.think;
  t.timeBudget = budgetMs;
  t.turnStart = nowMs();
  t.fixedBudget = true;
  t.nodeCount = 0;
  t.minRemainingDepth = 0;
  t.dropFlagA = 0;
  t.dropFlagB = 0;
  t.aborted = false;
  t.bestMove = kNoMove;
  ctx.aborted = 0;
}

void extendAnalysisBudget(SearchContext& ctx) {
  ThinkState& t = *ctx.think;
  t.timeBudget = int32_t(std::min<int64_t>(nowMs() - t.turnStart + t.timeBudget, INT32_MAX));
  ctx.aborted = 0;
}

Progress progressAt(const SearchContext& ctx, int depth) {
  const ThinkState& t = *ctx.think;
  // Helpers' nodes are merged only between depths; lines within one count them too.
  return {depth, depth - t.minRemainingDepth, nowMs() - t.turnStart, t.nodeCount + searcherNodes(searchThreads(ctx))};
}

void finishAnalysis(SearchContext& ctx, int depth) {
  ThinkState& t = *ctx.think;
  t.elapsedMs = nowMs() - t.turnStart;
  t.currentDepth = depth;
  t.finalValue = 0;
  t.aborted = ctx.aborted != 0;
}

}  // namespace zorva
