#pragma once
// Threat search over continuous fours: can the side to move win by making a
// four with every move, each forcing the one reply that blocks it?
#include <cstdint>

#include "board/types.h"

namespace zorva {

struct Board;
struct Searcher;

// Offsets between the win value of a node and the threat search's result.
constexpr int kVcfDepthBase = 484;
constexpr int kMaxVcfPlies = 40;

// 0 when `side` has no win by continuous fours, else r > 0 such that
// depth - 484 + r is the node's win value. Honours the abort flag (then 0).
int32_t vcf(Searcher& s, int depth, Colour side);

constexpr int kVcfNodeLimit = 6000;  // per call: a threat search must stay cheap at every node

// Plies until `side` has a five by continuous fours (0: it has one to
// play), or -1 when none is found within `nodeLimit` nodes; `firstMove`,
// when given, receives the move that starts it. `zone`, when given (one
// flag per cell), gets the cells of the win marked: the moves of both
// sides and the fives at the end, where a stone placed beforehand could
// break it.
// With `skipIdleFours` a four that dies with its block and makes no more
// than a dead two elsewhere is not tried (under Renju, when white attacks,
// only if black's block builds nothing either): much faster, and the wins
// it misses are rare.
int vcfPlies(Searcher& s, Colour side, Move* firstMove, int nodeLimit = kVcfNodeLimit, bool* zone = nullptr,
             bool skipIdleFours = false);

// Marks the cells where `side` completes a five, when `zone` is given.
void markFives(const Board& b, Colour side, bool* zone);

// A move that completes the five or starts a forced win for `side`, or
// kNoMove.
Move quickWinMove(Searcher& s, Colour side);

}  // namespace zorva
