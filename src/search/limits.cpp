#include "search/limits.h"

#include "protocol/engine_state.h"
#include "search/driver.h"
#include "search/parallel.h"

namespace zorva {

namespace {
constexpr int64_t kCheckInterval = 1024;
constexpr int64_t kTimeMarginMs = 30;  // the move must still travel to the manager
}  // namespace

bool countNode(Searcher& s) {
  if (engine.searchAborted) return true;
  const int64_t counted = s.nodes + 1;
  s.nodes = counted;
  if (counted % kCheckInterval != 0) return false;
  const Settings& settings = engine.settings;
  const ThinkState& t = engine.think;
  const bool limited = settings.maxNode != -1;
  const int64_t nodes = t.nodeCount + searcherNodes(searchThreads());
  const bool outOfNodes = limited && int64_t(settings.maxNode) < (nodes >> 10);
  const bool outOfTime = limited && nowMs() - t.turnStart + kTimeMarginMs >= t.timeBudget;
  if (outOfNodes || outOfTime || engine.stopFlag > 0) engine.searchAborted = 1;
  return engine.searchAborted;
}

}  // namespace zorva
