#pragma once
// Checkmate mode: a turn that asks "is there a forced win here, and what is
// it?". It deepens one of the threat solvers (search/threat_solver.h) in
// place of the search, one threat more per depth, with the level chosen by
// the `checkmate` setting at the start of every think.
#include <cstdint>

#include "board/types.h"

namespace zorva {

struct Searcher;

// The solver level a `checkmate` setting selects: above the last level, the last.
int checkmateLevel(int32_t setting);

// The root search of a level: the solver's threats of the side to move,
// each proved or refuted against every answer, with at most `depth`
// threats that are not fours (fours are free, so depth 1 finds every win
// by fours, and a win by one three). Writes bestMove and the principal variation
// as the turn's root does and prints its REALTIME lines; returns a win
// value (kWin + depth - plies), else the static evaluation, or 0 when
// stopped before a win was found.
int32_t checkmateRoot(Searcher& s, int level, int depth, Colour side);

}  // namespace zorva
