#include "search/tt.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>

#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace zorva {

TranspositionTable transpositionTable;

namespace {

constexpr int kIdlePriority = 19;
constexpr uint64_t kLargePage = uint64_t(2) << 20;
constexpr uint64_t kFirstFillBuckets = 1 << 14;   // 2 MiB a side
constexpr uint64_t kFillAtOnceBuckets = 1 << 16;  // 8 MiB a side
constexpr int kStaleAge = 2;  // entries this many stones old are replaced first
constexpr uint16_t kNoThirdMove = 65535;
constexpr uint64_t kUsageSampleBuckets = 1 << 12;  // per side: 512 KiB of entries, 32768 of them

uint64_t load(const uint64_t* word) { return std::atomic_ref<uint64_t>(*const_cast<uint64_t*>(word)).load(std::memory_order_relaxed); }
void save(uint64_t* word, uint64_t value) { std::atomic_ref<uint64_t>(*word).store(value, std::memory_order_relaxed); }

uint64_t checkWord(uint64_t key, const TTEntry& e) {
  return key ^ (uint64_t(uint32_t(e.upper)) << 36) ^ (uint64_t(uint32_t(e.lower)) << 8) ^
         (uint64_t(uint16_t(e.depth)) << 2) ^ e.bound;
}

bool isProven(int32_t value) { return value >= kProvenBound || value < -(kProvenBound - 1); }

// Orders an update's moves: given ones first, then old ones not given.
void mergeMoves(TTEntry& e, const Move* given, int givenCount) {
  if (givenCount == 0) return;
  Move merged[3] = {kNoMove, kNoMove, kNoMove};
  int count = 0;
  for (int i = 0; i < givenCount; ++i) merged[count++] = given[i];
  for (int i = 0; i < e.moveCount && count < 3; ++i)
    if (std::find(merged, merged + count, e.moves[i]) == merged + count) merged[count++] = e.moves[i];
  std::copy(merged, merged + 3, e.moves);
  e.moveCount = uint8_t(count);
}

// Combines a same-depth bound with the stored ones; a contradiction keeps the new bound only.
void combineBound(TTEntry& e, int32_t value, Bound bound) {
  if (bound == kBoundExact) {
    e.upper = e.lower = value;
    e.bound = kBoundExact;
    return;
  }
  TTEntry next = e;
  if (bound == kBoundUpper) next.upper = (e.bound & kBoundUpper) ? std::min(e.upper, value) : value;
  if (bound == kBoundLower) next.lower = (e.bound & kBoundLower) ? std::max(e.lower, value) : value;
  next.bound = uint8_t(e.bound | bound);
  if (next.bound == kBoundExact && next.lower > next.upper) {
    next.upper = next.lower = value;
    next.bound = bound;
  }
  e.upper = next.upper;
  e.lower = next.lower;
  e.bound = next.bound;
}

}  // namespace

int32_t toStored(int32_t value, int depth) {
  if (value >= kProvenBound) return value - depth;
  if (value < -(kProvenBound - 1)) return value + depth;
  return value;
}

int32_t fromStored(int32_t value, int depth) {
  if (value >= kProvenBound) return value + depth;
  if (value < -(kProvenBound - 1)) return value - depth;
  return value;
}

// Zeroed pages straight from the system, aligned to and asking for 2 MiB
// pages: a probe then rarely misses the address cache (bench about 5%
// faster than on 4 KiB pages). They are not in place yet: each page left to
// fault in on first touch costs the search its zeroing (a fresh table's
// faults halved the speed of a game's first turn), so fill() takes them in
// place ahead of the search. A system back from idle may have to compact
// memory to find large pages (0.3 s for the default table, 2.4 s for 1 GiB),
// which is why that happens off the command's path.
uint64_t* TranspositionTable::mapZeroed(uint64_t bytes) {
  const uint64_t padded = bytes + kLargePage;
  void* block = mmap(nullptr, padded, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (block == MAP_FAILED) return nullptr;
  // Only the part aligned to large pages is kept, so that every large page is whole.
  const uintptr_t start = reinterpret_cast<uintptr_t>(block);
  const uintptr_t aligned = (start + kLargePage - 1) & ~uintptr_t(kLargePage - 1);
  if (aligned > start) munmap(block, aligned - start);
  if (const uint64_t tail = start + padded - (aligned + bytes); tail > 0)
    munmap(reinterpret_cast<void*>(aligned + bytes), tail);
  void* words = reinterpret_cast<void*>(aligned);
  madvise(words, bytes, MADV_HUGEPAGE);
  return static_cast<uint64_t*>(words);
}

bool TranspositionTable::populateBuckets(uint64_t from, uint64_t to) {
  constexpr uint64_t kBucketBytes = kBucketEntries * kWordsPerEntry * sizeof(uint64_t);
  for (uint64_t side = 0; side < 2; ++side) {
    char* start = reinterpret_cast<char*>(words_) + (side * buckets_ + from) * kBucketBytes;
    const uint64_t bytes = (to - from) * kBucketBytes;
    // 2 MiB at a time, so that a stop is quick.
    for (uint64_t done = 0; done < bytes; done += kLargePage) {
      if (stopFill_.load(std::memory_order_relaxed)) return false;
      if (madvise(start + done, std::min(kLargePage, bytes - done), MADV_POPULATE_WRITE) != 0) {
        // A system without the call leaves the pages to fault in as they are touched.
        liveMask_.store(buckets_ - 1, std::memory_order_relaxed);
        return false;
      }
    }
  }
  return true;
}

void TranspositionTable::fill(uint64_t live) {
  for (; live < buckets_; live *= 2) {
    if (!populateBuckets(live, 2 * live)) return;
    liveMask_.store(2 * live - 1, std::memory_order_relaxed);
  }
}

// The first part is filled at once (about a millisecond), so that searches
// always have a table; a small table is filled whole (a few milliseconds),
// so that it is the same for every search.
void TranspositionTable::startFill(Fill how) {
  const uint64_t first = buckets_ <= kFillAtOnceBuckets ? buckets_ : kFirstFillBuckets;
  stopFill_.store(false, std::memory_order_relaxed);
  liveMask_.store(first - 1, std::memory_order_relaxed);
  if (!populateBuckets(0, first)) return;
  if (how == Fill::kNow)
    fill(first);
  else if (first < buckets_)
    filler_ = std::thread([this, first] { fill(first); });
}

void TranspositionTable::joinFill(bool finish) {
  if (!finish) stopFill_.store(true, std::memory_order_relaxed);
  if (filler_.joinable()) filler_.join();
}

void TranspositionTable::install(uint64_t* words, int32_t hashSize, Fill how) {
  joinFill();
  if (words_) release(words_, bytesFor(sizeSetting_));
  words_ = words;
  buckets_ = bucketsFor(hashSize);
  sizeSetting_ = hashSize;
  written_.store(false, std::memory_order_relaxed);
  startFill(how);
}

void TranspositionTable::unmap(uint64_t* words, uint64_t bytes) { munmap(words, bytes); }

TranspositionTable::~TranspositionTable() {
  joinFill();
  if (releaser_.joinable()) releaser_.join();
  if (words_) unmap(words_, bytesFor(sizeSetting_));
}

uint64_t TranspositionTable::bytesFor(int32_t hashSize) {
  return bucketsFor(hashSize) * 2 * kBucketEntries * kWordsPerEntry * sizeof(uint64_t);
}

void TranspositionTable::release(uint64_t* words, uint64_t bytes) {
  if (!words) return;
  if (releaser_.joinable()) releaser_.join();
  // At the lowest priority, so that it takes no time from a search; and
  // dropping the pages first lets that search's page faults go on
  // meanwhile, where unmapping a region with its pages would hold them up.
  releaser_ = std::thread([words, bytes] {
    setpriority(PRIO_PROCESS, pid_t(syscall(SYS_gettid)), kIdlePriority);
    madvise(words, bytes, MADV_DONTNEED);
    munmap(words, bytes);
  });
}

uint64_t TranspositionTable::bucketsFor(int32_t hashSize) {
  if (hashSize < 1) hashSize = 1;
  if (hashSize <= kMaxSizeExponent) return uint64_t(1) << hashSize;
  uint64_t buckets = uint64_t(1) << kMaxSizeExponent;
  while (buckets > uint64_t(hashSize)) buckets >>= 1;
  return buckets;
}

bool TranspositionTable::resize(int32_t hashSize, Fill fill) {
  std::lock_guard lock(layout_);
  if (words_ && hashSize == sizeSetting_) {
    if (fill == Fill::kNow) joinFill(true);
    return true;
  }
  uint64_t* words = mapZeroed(bytesFor(hashSize));
  if (!words) {
    refusedSetting_ = hashSize;
    return false;
  }
  refusedSetting_ = -1;
  install(words, hashSize, fill);
  return true;
}

void TranspositionTable::clear() {
  std::lock_guard lock(layout_);
  clearLocked();
}

void TranspositionTable::clearUnder(int rule) {
  std::lock_guard lock(layout_);
  rule_ = rule;
  clearLocked();
}

// Only the part in use can hold entries; touching the rest would make this
// thread wait for pages that the fill is still taking in place.
void TranspositionTable::clearLocked() {
  if (!words_ || !written_.load(std::memory_order_relaxed)) return;
  written_.store(false, std::memory_order_relaxed);
  const uint64_t sideWords = buckets_ * kBucketEntries * kWordsPerEntry;
  const uint64_t liveBytes = liveBuckets() * kBucketEntries * kWordsPerEntry * sizeof(uint64_t);
  std::memset(words_, 0, liveBytes);
  std::memset(words_ + sideWords, 0, liveBytes);
}

void TranspositionTable::ensureRule(int rule) {
  std::lock_guard lock(layout_);
  if (rule == rule_) return;
  rule_ = rule;
  if (!words_ || !written_.load(std::memory_order_relaxed)) return;
  uint64_t* fresh = mapZeroed(bytesFor(sizeSetting_));
  if (!fresh) return clearLocked();
  install(fresh, sizeSetting_, Fill::kBackground);
}

uint64_t* TranspositionTable::entryWords(uint64_t key, int side, int index) const {
  const uint64_t bucket = liveMask_.load(std::memory_order_relaxed) & key;
  const uint64_t entry = (uint64_t(side - 1) * buckets_ + bucket) * kBucketEntries + uint64_t(index);
  return words_ + entry * kWordsPerEntry;
}

bool TranspositionTable::read(const uint64_t* words, uint64_t key, TTEntry* e) {
  const uint64_t check = load(words), values = load(words + 1), info = load(words + 2), more = load(words + 3);
  e->upper = int32_t(uint32_t(values));
  e->lower = int32_t(uint32_t(values >> 32));
  e->depth = int16_t(uint16_t(info));
  e->age = uint16_t(info >> 16);
  e->bound = uint8_t(info >> 32);
  e->moveCount = uint8_t(info >> 40);
  e->moves[0] = int16_t(uint16_t(info >> 48));
  e->moves[1] = int16_t(uint16_t(more));
  const uint16_t third = uint16_t(more >> 16);
  e->moves[2] = third == kNoThirdMove ? kNoMove : Move(third);
  return e->bound != kBoundNone && checkWord(key, *e) == check;
}

void TranspositionTable::write(uint64_t* words, uint64_t key, const TTEntry& e) {
  const uint16_t third = e.moves[2] == kNoMove ? kNoThirdMove : uint16_t(e.moves[2]);
  save(words, checkWord(key, e));
  save(words + 1, uint64_t(uint32_t(e.upper)) | uint64_t(uint32_t(e.lower)) << 32);
  save(words + 2, uint64_t(uint16_t(e.depth)) | uint64_t(e.age) << 16 | uint64_t(e.bound) << 32 |
                      uint64_t(e.moveCount) << 40 | uint64_t(uint16_t(int16_t(e.moves[0]))) << 48);
  save(words + 3, uint64_t(uint16_t(int16_t(e.moves[1]))) | uint64_t(third) << 16);
}

void TranspositionTable::writeAge(uint64_t* words, uint16_t age) {
  const uint64_t info = load(words + 2);
  save(words + 2, (info & ~(uint64_t(0xFFFF) << 16)) | uint64_t(age) << 16);
}

bool TranspositionTable::find(uint64_t key, int side, TTEntry* entry) const {
  if (!words_) return false;
  for (int i = 0; i < kBucketEntries; ++i)
    if (read(entryWords(key, side, i), key, entry)) return true;
  return false;
}

int32_t TranspositionTable::probe(uint64_t key, int stones, int depth, int32_t alpha, int32_t beta, int side,
                                  Move* moves, int moveCount, int* movesFound) {
  if (movesFound) *movesFound = 0;
  if (!words_) return kNoValue;
  TTEntry e;
  uint64_t* words = nullptr;
  for (int i = 0; i < kBucketEntries && !words; ++i)
    if (read(entryWords(key, side, i), key, &e)) words = entryWords(key, side, i);
  if (!words) return kNoValue;
  writeAge(words, uint16_t(stones));

  const int found = std::min<int>(moveCount, e.moveCount);
  std::copy(e.moves, e.moves + found, moves);
  if (movesFound) *movesFound = found;

  const int32_t upper = fromStored(e.upper, depth), lower = fromStored(e.lower, depth);
  const bool deepEnough = e.depth >= depth;
  const bool upperUsable = deepEnough || isProven(upper), lowerUsable = deepEnough || isProven(lower);
  if (e.bound == kBoundExact && upper == lower && upperUsable) return upper;
  if ((e.bound & kBoundUpper) && upper <= alpha && upperUsable) return upper;
  if ((e.bound & kBoundLower) && lower >= beta && lowerUsable) return lower;
  return kNoValue;
}

void TranspositionTable::store(uint64_t key, int stones, int depth, int32_t value, Bound bound, int side,
                               Move move1, Move move2, Move move3) {
  if (!words_) return;
  if (!written_.load(std::memory_order_relaxed)) written_.store(true, std::memory_order_relaxed);
  const Move given[3] = {move1, move2, move3};
  const int givenCount = move1 == kNoMove ? 0 : move2 == kNoMove ? 1 : move3 == kNoMove ? 2 : 3;
  const int32_t stored = toStored(value, depth);
  TTEntry e;
  for (int i = 0; i < kBucketEntries; ++i) {
    uint64_t* words = entryWords(key, side, i);
    if (read(words, key, &e)) {
      e.age = uint16_t(stones);
      if (e.depth > depth) {
        writeAge(words, e.age);
        return;
      }
      mergeMoves(e, given, givenCount);
      if (depth > e.depth) {
        e.upper = e.lower = stored;
        e.depth = int16_t(depth);
        e.bound = bound;
      } else {
        combineBound(e, stored, bound);
      }
      write(words, key, e);
      return;
    }
    if (uint8_t(load(words + 2) >> 32) == kBoundNone) break;
  }

  // A new entry: the first empty slot, else the last stale one, else the least worth.
  int victim = -1, leastWorth = 0;
  for (int i = 0; i < kBucketEntries && victim < 0; ++i)
    if (uint8_t(load(entryWords(key, side, i) + 2) >> 32) == kBoundNone) victim = i;
  for (int i = kBucketEntries - 1; i >= 0 && victim < 0; --i) {
    const uint64_t info = load(entryWords(key, side, i) + 2);
    const int age = int(uint16_t(info >> 16));
    if (std::abs(age - stones) >= kStaleAge) victim = i;
  }
  if (victim < 0)
    for (int i = kBucketEntries - 1; i >= 0; --i) {
      const uint64_t info = load(entryWords(key, side, i) + 2);
      const int worth = int(int16_t(uint16_t(info))) + (int(uint16_t(info >> 16)) == stones ? 1024 : 0) +
                        (uint8_t(info >> 32) == kBoundExact ? 512 : 0);
      if (victim < 0 || worth <= leastWorth) {
        victim = i;
        leastWorth = worth;
      }
    }
  e = TTEntry{};
  e.upper = e.lower = stored;
  e.depth = int16_t(depth);
  e.age = uint16_t(stones);
  e.bound = bound;
  std::copy(given, given + 3, e.moves);
  e.moveCount = uint8_t(givenCount);
  write(entryWords(key, side, victim), key, e);
}

// Buckets are chosen by the low bits of uniform keys, so the first buckets
// of each side's table stand for the whole of it; reading no more of them
// keeps the command quick on a table of gigabytes.
TableUsage TranspositionTable::usageAt(int stones) const {
  std::lock_guard lock(layout_);
  if (!words_) return {};
  const uint64_t sampled = std::min<uint64_t>(buckets_, kUsageSampleBuckets) * kBucketEntries;
  uint64_t used = 0, current = 0;
  for (int side = 0; side < 2; ++side)
    for (uint64_t i = 0; i < sampled; ++i) {
      const uint64_t entry = uint64_t(side) * buckets_ * kBucketEntries + i;
      const uint64_t info = load(words_ + entry * kWordsPerEntry + 2);
      const bool filled = uint8_t(info >> 32) != kBoundNone;
      used += filled;
      current += filled && int(uint16_t(info >> 16)) >= stones;
    }
  return {double(used) / double(2 * sampled), double(current) / double(2 * sampled)};
}

}  // namespace zorva
