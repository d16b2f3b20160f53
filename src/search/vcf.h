#pragma once
// Threat search over continuous fours: can the side to move win by making a
// four with every move, each forcing the one reply that blocks it?
#include <cstdint>

#include "board/types.h"

namespace zorva {

struct Searcher;

// Offsets between the win value of a node and the threat search's result.
constexpr int kVcfDepthBase = 484;
constexpr int kMaxVcfPlies = 40;

// 0 when `side` has no win by continuous fours, else r > 0 such that
// depth - 484 + r is the node's win value. Honours searchAborted (then 0).
int32_t vcf(Searcher& s, int depth, Colour side);

// A move that completes the five or starts a forced win for `side`, or
// kNoMove.
Move quickWinMove(Searcher& s, Colour side);

}  // namespace zorva
