#pragma once
// The principal-variation alpha-beta search: negamax, every value from the
// side to move's view. A win is kWin plus the remaining depth at the node
// that proves it, so nearer wins score higher.
#include <cstdint>
#include <span>

#include "board/types.h"

namespace zorva {

struct Searcher;

// Searches the searcher's board to `depth` plies; `ply` counts from the root
// and `extension` is the half plies gained or lost on the way (depth +
// extension / 2 is the depth that counts).
int32_t searchNode(Searcher& s, int depth, int ply, int32_t alpha, int32_t beta, Colour side, int extension);

// What an analysis asks of the root beyond a turn's search: moves ruled
// out (the better moves it has listed already). A root left without moves
// then tries every playable cell, so that all of them can be listed, and a
// value true only of the moves left stays out of the table.
struct RootFilter {
  std::span<const Move> excluded;
};

// Searches the root: writes bestMove, singleReply and the principal
// variation into the think state and the searcher, prints the REALTIME
// lines when asked to, and returns the root value (0 after an abort).
int32_t searchRoot(Searcher& s, int depth, Colour side, const RootFilter* filter = nullptr);

}  // namespace zorva
