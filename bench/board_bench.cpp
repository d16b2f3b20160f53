// Micro-benchmarks of the board's hot path.
#include <benchmark/benchmark.h>

#include "board/board.h"
#include "board/eval.h"
#include "board/forbid.h"
#include "board/zobrist.h"

namespace zorva {
namespace {

// A middle-game position on 15x15: 24 stones around the centre.
void setUpMiddleGame(Board& b, int rule) {
  initZobrist();
  b.reset(15, 15, rule);
  const int cells[][2] = {{7, 7}, {7, 8}, {8, 8}, {6, 6}, {8, 7}, {8, 6}, {9, 8}, {6, 8}, {9, 9}, {10, 10},
                          {6, 7}, {5, 7}, {9, 7}, {10, 7}, {9, 6}, {9, 5}, {7, 9}, {8, 10}, {5, 5}, {4, 4},
                          {10, 8}, {11, 9}, {7, 5}, {7, 4}};
  for (auto [row, col] : cells) b.placeStone(makeMove(row, col), b.sideToMove());
}

const Move kTargets[] = {makeMove(6, 9), makeMove(10, 6), makeMove(5, 8), makeMove(11, 11)};

template <Update U>
void PlaceRemovePair(benchmark::State& state) {
  static Board b;
  setUpMiddleGame(b, kFreestyle);
  int i = 0;
  for (auto _ : state) {
    const Move m = kTargets[i++ & 3];
    b.placeStone<U>(m, b.sideToMove());
    b.removeStone<U>(m);
    benchmark::DoNotOptimize(b.hash);
  }
}
BENCHMARK(PlaceRemovePair<Update::Full>)->Name("PlaceRemovePair/full");
BENCHMARK(PlaceRemovePair<Update::Light>)->Name("PlaceRemovePair/light");

// Every empty cell of the Renju middle game in turn, as zvshowforbid or a
// move generator would ask.
void IsForbidden(benchmark::State& state) {
  static Board b;
  setUpMiddleGame(b, kRenju);
  Move empties[kMaxStones];
  int n = 0;
  for (int row = 0; row < 15; ++row)
    for (int col = 0; col < 15; ++col)
      if (b.at(makeMove(row, col)) == EMPTY) empties[n++] = makeMove(row, col);
  int i = 0, forbidden = 0;
  for (auto _ : state) {
    forbidden += isForbidden(b, empties[i]);
    i = i + 1 == n ? 0 : i + 1;
  }
  benchmark::DoNotOptimize(forbidden);
}
BENCHMARK(IsForbidden);

template <int Rule>
void Evaluate(benchmark::State& state) {
  static Board b;
  static Move scratch[kMaxStones];
  setUpMiddleGame(b, Rule);
  int side = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(evaluate(b, side ? WHITE : BLACK, scratch));
    side ^= 1;
  }
}
BENCHMARK(Evaluate<kFreestyle>)->Name("Evaluate/freestyle");
BENCHMARK(Evaluate<kRenju>)->Name("Evaluate/renju");

}  // namespace
}  // namespace zorva

BENCHMARK_MAIN();
