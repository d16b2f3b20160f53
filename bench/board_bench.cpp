// Micro-benchmarks of the board's hot path.
#include <benchmark/benchmark.h>

#include "board/board.h"
#include "board/zobrist.h"

namespace zorva {
namespace {

// A middle-game position on 15x15: 24 stones around the centre.
void setUpMiddleGame(Board& b) {
  b.reset(15, 15, 0);
  const int cells[][2] = {{7, 7}, {7, 8}, {8, 8}, {6, 6}, {8, 7}, {8, 6}, {9, 8}, {6, 8}, {9, 9}, {10, 10},
                          {6, 7}, {5, 7}, {9, 7}, {10, 7}, {9, 6}, {9, 5}, {7, 9}, {8, 10}, {5, 5}, {4, 4},
                          {10, 8}, {11, 9}, {7, 5}, {7, 4}};
  for (auto [row, col] : cells) b.placeStone(makeMove(row, col), b.sideToMove());
}

void PlaceRemovePair(benchmark::State& state) {
  initZobrist();
  static Board b;
  setUpMiddleGame(b);
  const Move targets[] = {makeMove(6, 9), makeMove(10, 6), makeMove(5, 8), makeMove(11, 11)};
  int i = 0;
  for (auto _ : state) {
    const Move m = targets[i++ & 3];
    b.placeStone(m, b.sideToMove());
    b.removeStone(m);
    benchmark::DoNotOptimize(b.hash);
  }
}
BENCHMARK(PlaceRemovePair);

}  // namespace
}  // namespace zorva

BENCHMARK_MAIN();
