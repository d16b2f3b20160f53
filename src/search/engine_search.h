#pragma once
// The engine's search behind the think driver: searcher 0 on a copy of the
// game board, the shared transposition table.
#include "search/driver.h"

namespace zorva {

class EngineSearch : public SearchBackend {
 public:
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

// The rule names printed when the rule in force changes.
const char* ruleName(int rule);

}  // namespace zorva
