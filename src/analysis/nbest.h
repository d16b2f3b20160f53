#pragma once
// N-best analysis: the best moves for the side to move, each found by a
// root search with the better ones already listed ruled out.
#include "analysis/analysis_report.h"
#include "analysis/analysis_search.h"

namespace zorva {

// Deepens as a turn does with the turn's budget, reporting the list after
// each depth and at the end. A count above the number of playable cells
// lists them all; with nbestsym on, a move whose position is a symmetric
// image of a listed move's is not listed.
void runNBest(AnalysisSearch& search, AnalysisReporter& reporter, int count);

}  // namespace zorva
