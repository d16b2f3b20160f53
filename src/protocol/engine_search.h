#pragma once
// The engine's search behind the think driver: searcher 0 on a copy of the
// game board, the shared transposition table.
#include "analysis/analysis_search.h"
#include "search/driver.h"
#include "search/observer.h"

namespace zorva {

class EngineSearch : public SearchBackend {
 public:
  // Takes the settings into the engine's search context (prepareSearchContext).
  EngineSearch();
  SearchContext& context() override;
  void prepare() override;
  int32_t evaluate(Colour side) override;
  void startDepth() override;
  int32_t searchRoot(int depth, Colour side) override;
  const Line& principalVariation() override;
  void mergeStatistics() override;
  Move quickWinMove(Colour side) override;

 private:
  Line line_;
};

// Makes the table the settings ask for: of the set size, cleared when it
// was filled under another rule. Cheap at any size (a new table's pages are
// taken in place in the background, the search using the part already in
// place), so it runs wherever nothing searches: INFO, a new game, a turn's
// set-up, and a command answers without waiting for the pages. Memory that
// cannot be had is reported once per size asked for; the search then goes
// on with the table it has, or none.
void prepareTable(SearchObserver& observer);

// The turn's backend with the root of one level of the checkmate solvers.
class CheckmateSearch : public EngineSearch {
 public:
  explicit CheckmateSearch(int level) : level_(level) {}
  void prepare() override;
  int32_t searchRoot(int depth, Colour side) override;

 private:
  int level_;
};

// The engine's turn search, held for the analyses built on it.
struct TurnSearchMember {
  EngineSearch turn;
};

// The analyses on the game position.
class GameAnalysis : private TurnSearchMember, public EngineAnalysis {
 public:
  GameAnalysis();
};

// A checkmate think on the game board at the level set now; the move, or
// kNoMove when no cell is usable.
Move chooseCheckmateMove();

// The move for a turn on the game board, or kNoMove when none is usable.
Move chooseTurnMove();

// Thinks about the game board on the opponent's time until stopped.
void ponder();

// Takes the settings a search obeys into the engine's search context and
// binds the searchers to it.
void prepareSearchContext();

}  // namespace zorva
