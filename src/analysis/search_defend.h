#pragma once
// Search-defend: which moves of the side to move do not lose to the
// opponent's threats (fours, and threes that lead to fours), each with its
// value, best first.
#include "analysis/analysis_report.h"
#include "analysis/analysis_search.h"

namespace zorva {

// Checks every move near the stones against the opponent's threat
// sequences, then deepens over the moves that hold as a turn does, with
// the turn's budget; a move the search proves lost stops holding. Reports
// after each depth and at the end; when none holds, the move that loses last.
// `level` 0 judges the threats by the turn's threat search and the wide
// proof; 1 or 2 by that level of the threat solvers.
void runSearchDefend(AnalysisSearch& search, AnalysisReporter& reporter, int level);

}  // namespace zorva
