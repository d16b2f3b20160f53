#include "search/parallel.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>


namespace zorva {

// A node whose remaining moves are shared. It lives on the owner's stack
// until every helper has left it.
struct SplitPoint {
  SplitPoint(SplitPoint* parent_, const Node& node_, const ScoredMove* moves_, int count_)
      : parent(parent_), node(node_), moves(moves_), count(count_) {}

  SplitPoint* parent;  // the split the owner itself works under, if any
  Node node;           // the owner's node; its Searcher is the owner's
  const ScoredMove* moves;
  int count;
  Relaxed<int32_t> cutoff{0};  // read without the lock by every thread below

  std::atomic<int> helpers{0};  // the owner may leave once it is 0 again

  std::mutex lock;  // guards what follows
  int next = 0;
  Move line[kMaxPly];  // the best line from this node, when a move raised alpha
  int lineLength = 0;
};

namespace {

constexpr int kIdle = 0;
constexpr int kAssigned = 3;
// Splits come every few hundred nodes while a search runs, faster than a
// sleeping thread wakes, so an idle helper keeps polling for this long
// before it sleeps.
constexpr auto kPollTime = std::chrono::milliseconds(5);

struct Slot {
  std::thread thread;
  // kAssigned from the hand-over (under splitLock) until the helper is done;
  // the release store of kIdle publishes that its board is free again.
  std::atomic<int> status{kIdle};
  SplitPoint* split = nullptr;  // written before status becomes kAssigned
  bool sleeping = false;        // guarded by splitLock
  std::condition_variable wake;
};

std::mutex splitLock;  // guards the hand-over and the sleeping flags
Slot slots[kMaxSearchers];
std::atomic<bool> quitting{false};

// The next split handed to `slot`, or null when the program ends.
SplitPoint* waitForWork(Slot& slot) {
  auto pollUntil = std::chrono::steady_clock::now() + kPollTime;
  for (;;) {
    if (slot.status.load(std::memory_order_acquire) == kAssigned) return slot.split;
    if (quitting) return nullptr;
    if (std::chrono::steady_clock::now() < pollUntil) {
      std::this_thread::yield();
      continue;
    }
    std::unique_lock guard(splitLock);
    slot.sleeping = true;
    slot.wake.wait(guard, [&] { return quitting || slot.status.load(std::memory_order_relaxed) == kAssigned; });
    slot.sleeping = false;
    pollUntil = std::chrono::steady_clock::now() + kPollTime;
  }
}

// Folds one helper's or the owner's result into the shared node.
void merge(SplitPoint& sp, Searcher& s, Move m, int32_t value) {
  std::lock_guard guard(sp.lock);
  Node& n = sp.node;
  ++n.searched;
  if (isHeuristic(value) && value < n.alpha) value = n.alpha;
  n.best.add(value, m);
  if (value > n.alpha) {
    n.alpha = value;
    sp.line[0] = m;
    const int ply = n.ply;
    sp.lineLength = std::max(s.pvLength[ply + 1] - ply, 1);
    for (int i = 1; i < sp.lineLength; ++i) sp.line[i] = s.pv[ply + 1][ply + i];
  }
  if (value >= n.beta) sp.cutoff = 1;
}

// Takes moves from the shared list until none is left or the node is cut off.
void work(SplitPoint& sp, Searcher& s) {
  Node local = [&] {
    std::lock_guard guard(sp.lock);
    return sp.node;
  }();
  local.s = &s;
  for (;;) {
    int index;
    Move m;
    {
      std::lock_guard guard(sp.lock);
      if (sp.cutoff || sp.next >= sp.count) return;
      m = sp.moves[sp.next++].move;
      index = sp.node.searched + 1;
      local.alpha = sp.node.alpha;
    }
    const int32_t value = searchChild(local, m, index, local.alpha);
    if (s.ctx->aborted || abandoned(&sp)) return;
    merge(sp, s, m, value);
  }
}

void helperLoop(int index) {
  Searcher& s = searcher(index);
  Slot& slot = slots[index];
  while (SplitPoint* sp = waitForWork(slot)) {
    s.activeSplit = sp;
    work(*sp, s);
    s.activeSplit = nullptr;
    sp->helpers.fetch_sub(1, std::memory_order_release);  // the last touch: the owner may now return
    slot.status.store(kIdle, std::memory_order_release);
  }
}

// Joins the helper threads when the program ends.
struct SlotTableCloser {
  ~SlotTableCloser() {
    {
      std::lock_guard guard(splitLock);
      quitting = true;
      for (Slot& slot : slots) slot.wake.notify_one();
    }
    for (Slot& slot : slots)
      if (slot.thread.joinable()) slot.thread.join();
  }
} closer;

// Hands `sp` to the first idle helper; false when none is idle.
bool recruit(SplitPoint& sp, Searcher& owner) {
  std::lock_guard guard(splitLock);
  for (int i = 1; i < searchThreads(*owner.ctx); ++i) {
    Slot& slot = slots[i];
    if (slot.status.load(std::memory_order_acquire) != kIdle || !slot.thread.joinable()) continue;
    searcher(i).ctx = owner.ctx;
    copyBoard(owner.board, searcher(i).board);
    slot.split = &sp;
    sp.helpers.store(1, std::memory_order_relaxed);
    slot.status.store(kAssigned, std::memory_order_release);
    if (slot.sleeping) slot.wake.notify_one();
    return true;
  }
  return false;
}

}  // namespace

int searchThreads(const SearchContext& ctx) { return std::clamp(int(ctx.settings.threadNum), 1, kMaxSearchers); }

void startSearchThreads(const SearchContext& ctx) {
  std::lock_guard guard(splitLock);
  for (int i = 1; i < searchThreads(ctx); ++i)
    if (!slots[i].thread.joinable()) slots[i].thread = std::thread(helperLoop, i);
}

bool canSplit(const Node& n) {
  const SearchContext& ctx = *n.s->ctx;
  return n.ply > 0 && n.effDepth >= ctx.settings.threadSplitDepth && searchThreads(ctx) > 1;
}

bool abandoned(const SplitPoint* split) {
  for (; split; split = split->parent)
    if (split->cutoff) return true;
  return false;
}

SplitResult splitNode(Node& n, const ScoredMove* moves, int count) {
  Searcher& owner = *n.s;
  SplitPoint sp(owner.activeSplit, n, moves, count);
  if (!recruit(sp, owner)) return SplitResult::NoHelper;
  owner.activeSplit = &sp;
  work(sp, owner);
  owner.activeSplit = sp.parent;
  while (sp.helpers.load(std::memory_order_acquire) > 0) std::this_thread::yield();
  std::lock_guard guard(sp.lock);
  if (owner.ctx->aborted || abandoned(sp.parent)) return SplitResult::Abandoned;
  n.alpha = sp.node.alpha;
  n.best = sp.node.best;
  n.searched = sp.node.searched;
  if (sp.lineLength > 0) {
    std::copy(sp.line, sp.line + sp.lineLength, owner.pv[n.ply] + n.ply);
    owner.pvLength[n.ply] = n.ply + sp.lineLength;
  }
  return SplitResult::Done;
}

}  // namespace zorva
