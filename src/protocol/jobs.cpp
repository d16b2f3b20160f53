#include "protocol/jobs.h"

#include <cstdint>

#include "protocol/analysis_lines.h"
#include "analysis/analysis_search.h"
#include "analysis/balance.h"
#include "analysis/nbest.h"
#include "analysis/search_defend.h"
#include "analysis/soosorv.h"
#include "analysis/swap2.h"
#include "protocol/engine_search.h"
#include "protocol/engine_state.h"

namespace zorva {

void runAnalysisJob(int mode) {
  GameAnalysis search;
  // checkmate 1 and 2 select the search-defend built on those solver
  // levels; the unsigned test puts 0 with the large values on purpose.
  const uint32_t solverLevel = uint32_t(int32_t(engine.settings.checkmate)) - 1;
  const int defendLevel = solverLevel < 2 ? int(solverLevel) + 1 : 0;
  ProtocolReporter reporter(engine.board.height, defendLevel);
  switch (mode) {
    case kModeBalanceOne:
      runBalance(search, reporter, 1, engine.balanceParam);
      break;
    case kModeBalanceTwo:
      runBalance(search, reporter, 2, engine.balanceParam);
      break;
    case kModeNBest:
      runNBest(search, reporter, engine.nbestCount);
      break;
    case kModeSearchDefend:
      runSearchDefend(search, reporter, defendLevel);
      break;
    case kModeSwap2First:
      runSwap2First(search, reporter);
      break;
    case kModeSwap2Second:
      runSwap2Second(search, reporter);
      break;
    case kModeSoosorvOffers:
      runFifthOffers(search, reporter, fifthMoveRequest().offers);
      break;
    case kModeSoosorvChoice: {
      const FifthMoveRequest& r = fifthMoveRequest();
      runFifthChoice(search, reporter, std::span<const Move>(r.candidates, size_t(r.candidateCount)));
      break;
    }
    default:
      break;
  }
}

}  // namespace zorva
