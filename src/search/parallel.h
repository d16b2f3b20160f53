#pragma once
// The parallel search: threads 1 .. thread_num - 1 wait idle until a node
// deep enough hands one of them the moves it has left. Both then take moves
// from the shared list; a cut-off found by either abandons the work below
// the node, and the node's owner waits for its helper before it returns.
#include "search/node.h"
#include "search/searcher.h"

namespace zorva {

// thread_num as the search uses it: 1 .. 8.
int searchThreads(const SearchContext& ctx);

// Starts the helper threads the setting asks for (they stay for the run).
void startSearchThreads(const SearchContext& ctx);

// True when `n` may share its remaining moves: deep enough, not the root,
// more than one thread.
bool canSplit(const Node& n);

enum class SplitResult {
  NoHelper,   // every helper was busy: the caller goes on alone
  Done,       // every move was searched; the node's fields hold the result
  Abandoned,  // the search stopped or a cut-off above abandoned the node
};

// Shares `moves` (searched from the first) between the caller and an idle helper.
SplitResult splitNode(Node& n, const ScoredMove* moves, int count);

// True when a cut-off at `split` or at a node above it made the work under
// it useless.
bool abandoned(const SplitPoint* split);

}  // namespace zorva
