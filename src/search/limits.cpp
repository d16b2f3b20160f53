#include "search/limits.h"

#include "search/driver.h"
#include "search/parallel.h"

namespace zorva {

namespace {
constexpr int64_t kCheckInterval = 1024;
constexpr int64_t kTimeMarginMs = 30;  // the move must still travel to the manager
}  // namespace

bool countNode(Searcher& s) {
  SearchContext& ctx = *s.ctx;
  if (ctx.aborted) return true;
  const int64_t counted = s.nodes + 1;
  s.nodes = counted;
  if (counted % kCheckInterval != 0) return false;
  const ThinkState& t = *ctx.think;
  const bool limited = ctx.settings.maxNode != -1;
  const int64_t nodes = t.nodeCount + searcherNodes(searchThreads(ctx));
  const bool outOfNodes = limited && int64_t(ctx.settings.maxNode) < (nodes >> 10);
  const bool outOfTime = limited && nowMs() - t.turnStart + kTimeMarginMs >= t.timeBudget;
  if (outOfNodes || outOfTime || stopRequested(ctx)) ctx.aborted = 1;
  return ctx.aborted;
}

}  // namespace zorva
