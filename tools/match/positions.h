#pragma once
// Positions of finished games labelled with the result, for tuning the
// evaluation: one line per position,
//   <moves> <result> <rule>
// where <moves> is the opening and the game up to the position in book
// notation ("-" for the empty board), <result> the game's result for the side
// to move there (1 win, 0 loss, 0.5 draw) and <rule> 0, 1 or 2.
#include <string>

#include "match/match.h"

namespace zorva::referee {

// Every position the board held, from the opening to the last stone placed (a
// forbidden move is not placed); nothing for a game that never started.
std::string formatPositions(Rule rule, const GameResult& r);

}  // namespace zorva::referee
