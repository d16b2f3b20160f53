#pragma once
// Threat-space search over fours and threes, the threat solvers' level 1
// with the turn's budgets: can the side to move win by a chain of threats,
// each of which the defender must answer? A four allows only its block; a
// three (a threat of an open four) allows any cell that stops it, and the
// defender may always counter with fours of its own.
#include <cstdint>

#include "board/types.h"

namespace zorva {

struct Searcher;

// Plies until `side` wins by continuous threats, or -1 when none is found
// within `nodeBudget` nodes (its fours searches counted) and `maxThrees`
// threes. `firstMove`, when given, receives the move that starts the win.
// Every win it reports is forced under the board's rule; a -1 proves nothing.
// `zone`, when given (one flag per cell), gets the cells of the win marked:
// every move of its proof, each defence it refuted and the final fives.
int vctPlies(Searcher& s, Colour side, int nodeBudget, int maxThrees, Move* firstMove, bool* zone = nullptr);

}  // namespace zorva
