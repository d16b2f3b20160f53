#pragma once
// The node count and the stop test shared by the node search and the threat search.
#include "search/searcher.h"

namespace zorva {

// Counts one node; every 1024 nodes checks the node limit, the time budget
// and the stop request. Returns true once the search must stop
// (the context's aborted flag is then set).
bool countNode(Searcher& s);

}  // namespace zorva
