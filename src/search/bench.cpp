#include "search/bench.h"

#include <algorithm>
#include <cstdio>

#include "search/driver.h"
#include "search/parallel.h"
#include "search/search.h"
#include "search/searcher.h"
#include "search/tt.h"

namespace zorva {

namespace {

constexpr int kBenchHashSize = 18;

// Moves as letter (x, 'a' = 0) and number (y + 1), black first.
struct BenchPosition {
  int side;
  const char* moves;
};

constexpr BenchPosition kPositions[] = {
    {15, "h8i9"},
    {15, "h8i9j8"},
    {15, "h8h9i9g7i7"},
    {15, "h8i8i9h7g7j10"},
    {15, "h8i9g9h9h10g8i10"},
    {15, "h8j9i10g8h9h10i9j8g10"},
    {15, "h8i7j8i9i8g8h10k8j7h6i6g6"},
    {20, "k11l12"},
    {20, "k11l11m12k12j10l10"},
    {20, "k11j10l12m13j12k10l10m11j11"},
};
constexpr int kRules[] = {kFreestyle, kStandard, kRenju};

// Reads the moves onto a fresh board; false when the text is not a position.
bool setUp(Board& b, const BenchPosition& p, int rule) {
  b.reset(p.side, p.side, rule);
  for (const char* c = p.moves; *c;) {
    const int x = *c++ - 'a';
    int y = 0;
    while (*c >= '0' && *c <= '9') y = y * 10 + (*c++ - '0');
    --y;
    if (!b.inside(x, y) || b.at(makeMove(x, y)) != EMPTY) return false;
    b.placeStone(makeMove(x, y), b.sideToMove());
  }
  return true;
}

}  // namespace

int runBench(int depth, int threads, int splitDepth) {
  ThinkState think;
  SearchContext ctx;
  ctx.settings.maxNode = -1;  // depth alone ends each search, so the count does not depend on the clock
  ctx.settings.threadNum = std::clamp(threads, 1, kMaxSearchers);
  if (splitDepth > 0) ctx.settings.threadSplitDepth = splitDepth;
  ctx.think = &think;
  bindSearchers(ctx);
  transpositionTable.resize(kBenchHashSize);
  startSearchThreads(ctx);
  Searcher& s = searcher(0);
  int64_t totalNodes = 0;
  const int64_t start = nowMs();
  for (int rule : kRules)
    for (const BenchPosition& p : kPositions) {
      if (!setUp(s.board, p, rule)) return 1;
      transpositionTable.clear();
      for (int i = 0; i < searchThreads(ctx); ++i) {
        searcher(i).clearThreatCache();
        searcher(i).nodes = 0;
      }
      think.bestMove = kNoMove;
      think.rootValue = 0;
      int32_t value = 0;
      for (int d = 1; d <= depth; ++d) {
        think.currentDepth = d;
        for (int i = 0; i < searchThreads(ctx); ++i) searcher(i).clearOrdering();
        value = searchRoot(s, d, s.board.sideToMove());
        think.rootValue = value;
      }
      const int64_t nodes = searcherNodes(searchThreads(ctx));
      const Move best = think.bestMove;
      std::printf("rule %d %2dx%-2d %-28s best %c%d value %d nodes %lld\n", rule, p.side, p.side, p.moves,
                  best == kNoMove ? '-' : 'a' + rowOf(best), best == kNoMove ? 0 : colOf(best) + 1, value,
                  static_cast<long long>(nodes));
      totalNodes += nodes;
    }
  const int64_t ms = std::max<int64_t>(nowMs() - start, 1);
  std::printf("bench: %lld nodes %lld ms %lld nps\n", static_cast<long long>(totalNodes), static_cast<long long>(ms),
              static_cast<long long>(totalNodes * 1000 / ms));
  return 0;
}

}  // namespace zorva
