#include "search/searcher.h"

#include <cstring>

namespace zorva {

namespace {
Searcher searchers[kMaxSearchers];
}

Searcher& searcher(int index) { return searchers[index >= 1 && index < kMaxSearchers ? index : 0]; }

void Searcher::clearOrdering() {
  std::memset(killers, 0xFF, sizeof killers);
  std::memset(history, 0, sizeof history);
}

void Searcher::clearThreatCache() { std::memset(vcfCache, 0, sizeof vcfCache); }

}  // namespace zorva
