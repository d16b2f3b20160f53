#include "search/searcher.h"

namespace zorva {

namespace {
Searcher searchers[kMaxSearchers];
}

Searcher& searcher(int index) { return searchers[index >= 1 && index < kMaxSearchers ? index : 0]; }

}  // namespace zorva
