#pragma once
// N-best analysis: the best moves for the side to move, each found by a
// root search with the better ones already listed ruled out.
#include <cstdint>

#include "analysis/analysis_report.h"
#include "analysis/analysis_search.h"

namespace zorva {

// Deepens as a turn does with the turn's budget, reporting the list after
// each depth and at the end. A count above the number of playable cells
// lists them all; with nbestsym on, a move whose position is a symmetric
// image of a listed move's is not listed.
void runNBest(AnalysisSearch& search, AnalysisReporter& reporter, int count);

struct NBestLimits {
  int32_t budgetMs;     // for the best move; the other ranks get as much again
  bool distinctImages;  // leave out symmetric images of listed moves, whatever nbestsym says
};
// The same with a budget and a symmetry rule of the caller's.
void runNBest(AnalysisSearch& search, AnalysisReporter& reporter, int count, const NBestLimits& limits);

}  // namespace zorva
