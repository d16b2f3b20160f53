#pragma once
// Balanced-move search: the move (balance one) or the pair of moves, the
// side to move's then the opponent's (balance two), that leaves the
// position worth `offset` to the side to move, for opening preparation.
#include <cstdint>

#include "analysis/analysis_report.h"
#include "analysis/analysis_search.h"

namespace zorva {

// Offsets beyond this are taken as this.
constexpr int32_t kMaxBalanceOffset = 2000;

// Runs the search for `stones` (1 or 2) on the game position, reporting
// the best candidate after each depth and at the end.
void runBalance(AnalysisSearch& search, AnalysisReporter& reporter, int stones, int32_t offset);

}  // namespace zorva
