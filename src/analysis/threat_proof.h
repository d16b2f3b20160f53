#pragma once
// A proof search over wide threats, for judging defences: a threat is a
// four, or any move after which the attacker would win by continuous fours
// were the defender to pass. A four is answered at its completion point;
// any other threat by every move that could matter: a cell of the fours
// win it prepares or on a line within four steps of one, a four of the
// defender's, and under Renju any cell, since a stone anywhere may change
// a forbidden point. Slower than the turn's threat search, and it finds
// the wins that search's narrower threes miss.
#include <cstdint>

#include "search/searcher.h"

namespace zorva {

// Plies before `attacker`, to move on the searcher's board, makes five by
// at most `threats` threats that are not fours, or -1 when there is no
// such win or the `nodeLimit` ran out first. Every win it reports is forced.
int threatProofPlies(Searcher& s, Colour attacker, int threats, int64_t nodeLimit);

// Forgets the positions decided so far; their results hold only for one
// set of walls and rule.
void clearThreatProofs();

}  // namespace zorva
