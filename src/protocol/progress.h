#pragma once
// The protocol's observer of searches: the DETAIL, REALTIME and end-of-turn
// lines, the rule and table notices, all through sendLine.
#include <cstdint>

#include "search/observer.h"

namespace zorva {

class ProgressLines : public SearchObserver {
 public:
  void rootPass() override;
  void rootMoveStarted(Move m) override;
  void rootMoveDone(Move m, bool lost) override;
  void rootBest(Move m, int32_t value, const Move* line, int length) override;
  void depthDone(const DepthReport& d) override;
  void turnDone(const TurnSummary& s, const Line& bestLine, const int32_t* blockTable) override;
  void ruleSetUp(int rule) override;
  void tableRefused(uint64_t wantedMiB, uint64_t heldMiB) override;
};

// The engine's one observer.
ProgressLines& progressLines();

// The value shown to the user: proven results lose their depth offset, and
// everything is clamped to the display range.
int32_t displayedValue(int32_t value, int depth, bool aborted);
const char* valueLabel(int32_t displayed);

// The rule names printed when the rule in force changes.
const char* ruleName(int rule);

}  // namespace zorva
