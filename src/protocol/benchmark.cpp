#include "protocol/benchmark.h"

#include "protocol/engine_state.h"
#include "protocol/game.h"
#include "protocol/messages.h"
#include "protocol/output.h"
#include "protocol/engine_search.h"

namespace zorva {

namespace {

constexpr int kBenchmarkTurnMs = 30000;
constexpr int kRules = 3;
constexpr int kSides[] = {15, 20};

// Openings as (x, y) pairs from the centre of the board, black first.
struct Opening {
  int stones;
  int cells[4][2];
};
constexpr Opening kOpenings[] = {
    {2, {{0, 0}, {0, 1}}},
    {3, {{0, 0}, {1, 1}, {1, 0}}},
    {4, {{0, 0}, {-1, 1}, {1, 1}, {1, -1}}},
};

void playOpening(const Opening& opening, int side) {
  engine.boardWidth = engine.boardHeight = side;
  newGame();
  const int centre = side / 2;
  for (int i = 0; i < opening.stones; ++i) {
    const int x = centre + opening.cells[i][0], y = centre + opening.cells[i][1];
    if (i % 2 == 0)
      playOwnMove(x, y);
    else
      playOpponentMove(x, y);
  }
  const Move move = chooseTurnMove();
  if (move != kNoMove) sendLine(reply::kMove, rowOf(move), colOf(move));
}

}  // namespace

void runStartupBenchmark() {
  engine.settings.timeoutTurn = kBenchmarkTurnMs;
  // The rule setting itself is the loop counter, so each rule's tables are used.
  for (engine.settings.rule = 0; engine.settings.rule < kRules; engine.settings.rule = engine.settings.rule + 1)
    for (int side : kSides)
      for (const Opening& opening : kOpenings) playOpening(opening, side);
}

}  // namespace zorva
