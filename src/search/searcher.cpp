#include "search/searcher.h"

#include <cstring>

namespace zorva {

namespace {
Searcher searchers[kMaxSearchers];
}

Searcher& searcher(int index) { return searchers[index >= 1 && index < kMaxSearchers ? index : 0]; }

void bindSearchers(SearchContext& ctx) {
  for (Searcher& s : searchers) s.ctx = &ctx;
}

int64_t searcherNodes(int count) {
  int64_t total = 0;
  for (int i = 0; i < count && i < kMaxSearchers; ++i) total += searchers[i].nodes;
  return total;
}

void Searcher::clearOrdering() {
  for (auto& pair : killers) pair[0] = pair[1] = {0, kNoMove};
  std::memset(history, 0, sizeof history);
}

void Searcher::clearThreatCache() {
  std::memset(vcfCache, 0, sizeof vcfCache);
  std::memset(vctCache, 0, sizeof vctCache);
}

}  // namespace zorva
