#include "protocol/engine_search.h"

#include <algorithm>

#include "analysis/checkmate.h"
#include "board/eval.h"
#include "protocol/engine_state.h"
#include "search/parallel.h"
#include "search/search.h"
#include "search/searcher.h"
#include "search/threat_solver.h"
#include "search/tt.h"
#include "search/vcf.h"

namespace zorva {

namespace {
Searcher& rootSearcher() { return searcher(0); }
}  // namespace

EngineSearch::EngineSearch() { prepareSearchContext(); }

SearchContext& EngineSearch::context() { return engine.search; }

// Rule set-up and hash set-up: the boards follow the rule in force, the
// table its size, before the first depth of a turn.
void EngineSearch::prepare() {
  const int rule = engine.settings.rule;
  if (rule != engine.think.builtRule) {
    engine.search.observer->ruleSetUp(rule);
    std::lock_guard lock(engine.boardLock);
    engine.board.setRule(rule);
    engine.think.builtRule = rule;
  }
  prepareTable(*engine.search.observer);
  copyBoard(engine.board, rootSearcher().board);
  startSearchThreads(engine.search);
  for (int i = 0; i < searchThreads(engine.search); ++i) {
    searcher(i).clearThreatCache();
    searcher(i).minRemainingDepth = 0;
    searcher(i).nodes = 0;
  }
}

void prepareSearchContext() {
  const Settings& s = engine.settings;
  SearchContext& ctx = engine.search;
  ctx.settings = {s.maxNode, s.cautionFactor, s.threeDef, s.threadNum, s.threadSplitDepth, s.useDatabase,
                  s.dbDepthWl, s.showDetail && !engine.ponderActive};
  bindSearchers(ctx);
}

void prepareTable(SearchObserver& observer) {
  TranspositionTable& table = transpositionTable;
  const int32_t size = engine.settings.hashSize;
  const bool wanted = size != table.sizeSetting() && size != table.refusedSetting();
  if (wanted && !table.resize(size, TranspositionTable::Fill::kBackground)) {
    constexpr uint64_t kMiB = 1 << 20;
    observer.tableRefused(TranspositionTable::bytesFor(size) / kMiB,
                          table.allocated() ? TranspositionTable::bytesFor(table.sizeSetting()) / kMiB : 0);
  }
  table.ensureRule(engine.settings.rule);
}

int32_t EngineSearch::evaluate(Colour side) {
  Searcher& s = rootSearcher();
  return zorva::evaluate(s.board, side, s.scratch[0]);
}

void EngineSearch::startDepth() {
  for (int i = 0; i < searchThreads(engine.search); ++i) searcher(i).clearOrdering();
}

int32_t EngineSearch::searchRoot(int depth, Colour side) { return zorva::searchRoot(rootSearcher(), depth, side); }

const Line& EngineSearch::principalVariation() {
  const Searcher& s = rootSearcher();
  line_.length = s.pvLength[0];
  std::copy(s.pv[0], s.pv[0] + line_.length, line_.moves);
  return line_;
}

void EngineSearch::mergeStatistics() {
  for (int i = 0; i < searchThreads(engine.search); ++i) {
    Searcher& s = searcher(i);
    engine.think.nodeCount = engine.think.nodeCount + s.nodes;
    engine.think.minRemainingDepth = std::min(engine.think.minRemainingDepth, s.minRemainingDepth);
    s.nodes = 0;
  }
}

void CheckmateSearch::prepare() {
  EngineSearch::prepare();
  // Walls and the rule may have changed since the last think.
  clearSolverMemo();
}

int32_t CheckmateSearch::searchRoot(int depth, Colour side) { return checkmateRoot(searcher(0), level_, depth, side); }

Move chooseCheckmateMove() {
  CheckmateSearch search(checkmateLevel(engine.settings.checkmate));
  return runCheckmateDriver(search, engine.board);
}

GameAnalysis::GameAnalysis() : EngineAnalysis(turn, engine.board) {}

Move chooseTurnMove() {
  EngineSearch search;
  return runTurnDriver(search, engine.board);
}

void ponder() {
  EngineSearch search;
  runPonder(search, engine.board);
}

Move EngineSearch::quickWinMove(Colour side) {
  copyBoard(engine.board, rootSearcher().board);
  return zorva::quickWinMove(rootSearcher(), side);
}

}  // namespace zorva
