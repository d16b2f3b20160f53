#include "analysis/checkmate.h"

#include <algorithm>

#include "protocol/engine_state.h"
#include "search/driver.h"
#include "search/searcher.h"
#include "search/threat_solver.h"

namespace zorva {

int checkmateLevel(int32_t setting) { return std::clamp(setting, 1, kSolverLevels); }

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

}  // namespace zorva
