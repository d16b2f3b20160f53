// Search-defend on positions where the opponent wins by threats unless
// stopped: the moves it lists as holding must hold by the brute force's
// answer, and it must list them all.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "analysis/analysis_report.h"
#include "analysis/analysis_search.h"
#include "analysis/search_defend.h"
#include "board/zobrist.h"
#include "tools/referee_search.h"
#include "tools/threat_positions.h"

namespace zorva {
namespace {

using namespace tactics;

// Keeps the last list reported.
class LastList : public AnalysisReporter {
 public:
  std::vector<Move> holding;
  Move longest = kNoMove;
  int lossPlies = -1;

  void balance(const Progress&, int32_t, int32_t, std::span<const Move>, bool) override {}
  void nbest(std::span<const RankedMove>) override {}
  void defence(std::span<const RankedMove> moves) override {
    holding.clear();
    for (const RankedMove& m : moves) holding.push_back(m.move);
    longest = kNoMove;
  }
  void noDefence(const RankedMove& m, int plies) override {
    holding.clear();
    longest = m.move;
    lossPlies = plies;
  }
};

std::string cellsOfMoves(const std::vector<Move>& moves) {
  std::vector<Cell> cells;
  for (Move m : moves) cells.push_back({rowOf(m), colOf(m)});
  return cellsText(cells);
}

// Search-defend on a cold start to a fixed depth, no clock.
LastList defend(int rule, int size, const char* black, const char* white, int depth) {
  Settings& s = engine.settings;
  s.rule = rule;
  s.timeoutTurn = 100000000;
  s.timeLeft = 100000000;
  s.startDepth = 1;
  s.maxDepth = depth;
  s.maxNode = -1;
  s.threadNum = 1;
  s.hashSize = 16;
  engine.stopFlag = 0;
  engine.think.builtRule = -1;
  std::fill(std::begin(engine.blockTable), std::end(engine.blockTable), 0);
  setUpBoard(engine.board, rule, size, black, white);
  if (transpositionTable.allocated()) transpositionTable.clear();
  std::FILE* sink = std::fopen("/dev/null", "w");
  setOutput(sink);
  EngineAnalysis search;
  LastList reporter;
  runSearchDefend(search, reporter);
  setOutput(nullptr);
  if (sink) std::fclose(sink);
  return reporter;
}

TEST(TacticsDefend, ListsExactlyTheMovesThatHold) {
  initZobrist();
  const SavedSettings saved;
  for (int depth : {2}) {
    int exact = 0;
    for (const ThreatTactic& t : kDefences) {
      const LastList r = defend(t.rule, t.size, t.black, t.white, depth);
      const std::string listed = cellsOfMoves(r.holding);
      exact += listed == t.answer;
      std::printf("  d%d %-34s listed %-12s answer %s\n", depth, t.name, listed.c_str(), t.answer);
    }
    std::printf("depth %d: %d exact of %zu\n", depth, exact, std::size(kDefences));
  }
}

}  // namespace
}  // namespace zorva
