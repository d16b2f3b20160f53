#pragma once
// The decisions of the second player under the Swap2 opening rule. After
// three stones: swap colours, keep them, or offer a fourth and a fifth stone
// that leave the position as balanced as can be found. After five: swap or not.
#include <cstdint>

#include "analysis/analysis_report.h"
#include "analysis/analysis_search.h"

namespace zorva {

// Beyond this value the three-stone position is decided without stones added.
constexpr int32_t kSwapMargin = 200;

// A proven value counted from the root: a win found deeper is worth less.
int32_t mateAdjusted(int32_t value, int depth);

// After three stones; reports the swap answer or the two stones offered.
void runSwap2First(AnalysisSearch& search, AnalysisReporter& reporter);
// After five stones; reports whether the side to move swaps.
void runSwap2Second(AnalysisSearch& search, AnalysisReporter& reporter);

}  // namespace zorva
