#pragma once
// Transposition table: bounds, depth and up to three good moves of positions
// met in search, one table per side to move, shared by all search threads
// without a lock. Every entry is four 64-bit words read and written with
// relaxed atomics; the first word is a check word that folds the value,
// depth and bound into the key, so an entry torn by two writers fails the
// key test and reads as absent.
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <thread>

#include "board/types.h"

namespace zorva {

// Scores shared with the search.
constexpr int32_t kWin = 10000000;
constexpr int32_t kProvenBound = 9999032;  // |value| >= this: proven at the root
constexpr int32_t kNoValue = 20000000;     // probe: nothing usable

enum Bound : uint8_t { kBoundNone = 0, kBoundUpper = 1, kBoundLower = 2, kBoundExact = 3 };

// What a dump or a load of the table came to.
enum class TableFile {
  kDone,
  kCannotOpen,   // the file could not be opened (load) or written (dump)
  kNoTable,      // no table has been made yet
  kNotAHashFile,
  kOtherVersion,
  kOtherRule,
  kOtherSize,
  kOtherKeys,    // written by a run whose position keys differ
  kTruncated,
  kDamaged,      // the checksum does not match, or bytes follow it
  kNoMemory,
};

// Fractions of the entries of both tables (of the first 2^12 buckets of
// each, on larger tables).
struct TableUsage {
  double filled = 0.0;   // non-empty
  double current = 0.0;  // written or found with at least the given number of stones
};

// One entry as the search sees it (the stored form packs it into 32 bytes).
struct TTEntry {
  int32_t upper = 0;
  int32_t lower = 0;
  int16_t depth = 0;
  uint16_t age = 0;  // stone count when last written or found
  uint8_t bound = kBoundNone;
  uint8_t moveCount = 0;
  Move moves[3] = {kNoMove, kNoMove, kNoMove};
};

class TranspositionTable {
 public:
  static constexpr int kBucketEntries = 4;
  static constexpr int kWordsPerEntry = 4;
  static constexpr int kMaxSizeExponent = 24;

  TranspositionTable() = default;
  ~TranspositionTable();
  TranspositionTable(const TranspositionTable&) = delete;
  TranspositionTable& operator=(const TranspositionTable&) = delete;

  // Buckets per side for a hash_size setting: values up to 24 are powers of
  // two (2^v), larger ones a bucket count rounded down to a power of two and
  // capped at 2^24; the default setting 524288 gives 524288 buckets.
  static uint64_t bucketsFor(int32_t hashSize);

  // When resize and ensureRule get a new table's pages from the system.
  enum class Fill {
    kNow,         // before they return: searches see the whole table at once
    kBackground,  // a first part now, the rest on a thread of the table's own
  };

  // Makes the tables for `hashSize` and clears them, unless they already
  // have that size. Must not run while a search uses the table. Returns
  // false when the memory could not be had; the old tables then stay, and
  // refusedSetting() remembers the size asked for. With Fill::kNow a table
  // of the same size still filling in the background is finished first.
  bool resize(int32_t hashSize, Fill fill = Fill::kNow);
  // Empties the tables in place, keeping their pages (for benchmarks and
  // tests that clear a small table often).
  void clear();
  // Empties the tables (when there are any) and takes `rule` as theirs.
  void clearUnder(int rule);
  // Empties the tables when they were filled under another rule. Fresh
  // pages from the system take the place of the used ones, so the cost does
  // not grow with the size: they are filled in the background, and the used
  // ones are given back by a thread of their own. Must not run while a
  // search uses the table.
  void ensureRule(int rule);
  // Buckets per side that searches use now: all of them once the table is
  // filled.
  uint64_t liveBuckets() const { return liveMask_.load(std::memory_order_relaxed) + 1; }

  // Starts loading the bucket of `key` into the cache, so that a probe soon
  // after finds it there.
  void prefetch(uint64_t key, int side) const {
    if (!words_) return;
    const uint64_t* words = entryWords(key, side, 0);
    __builtin_prefetch(words);
    __builtin_prefetch(words + kBucketEntries * kWordsPerEntry / 2);
  }
  int32_t probe(uint64_t key, int stones, int depth, int32_t alpha, int32_t beta, int side, Move* moves,
                int moveCount, int* movesFound = nullptr);
  void store(uint64_t key, int stones, int depth, int32_t value, Bound bound, int side, Move move1 = kNoMove,
             Move move2 = kNoMove, Move move3 = kNoMove);

  // Fraction of non-empty entries over both tables (sampled on large ones).
  double usage() const { return usageAt(0).filled; }
  TableUsage usageAt(int stones) const;

  // The tables to `path` in the engine's own dump format: a header with the
  // rule, the size and a print of the position keys, the entries, a
  // checksum. Written to "<path>.tmp" first, then renamed, so that a failed
  // dump leaves any earlier file whole. Safe while a search runs.
  TableFile dumpTo(const char* path) const;
  // Reads a dump made under `rule` for tables of the present size: the
  // whole file is read and checked into a fresh block first, and only a
  // sound file replaces the tables. Must not run while a search uses them.
  TableFile loadFrom(const char* path, int rule);
  uint64_t buckets() const { return buckets_; }
  int32_t sizeSetting() const { return sizeSetting_; }
  int32_t refusedSetting() const { return refusedSetting_; }
  static uint64_t bytesFor(int32_t hashSize);
  int rule() const { return rule_; }
  bool allocated() const { return words_ != nullptr; }

  // Test access to the unpacked entry of `key`, if present.
  bool find(uint64_t key, int side, TTEntry* entry) const;

 private:
  uint64_t* entryWords(uint64_t key, int side, int index) const;
  static bool read(const uint64_t* words, uint64_t key, TTEntry* entry);
  static void write(uint64_t* words, uint64_t key, const TTEntry& entry);
  static void writeAge(uint64_t* words, uint16_t age);

  // Hands a block no search can reach any more back to the system.
  void release(uint64_t* words, uint64_t bytes);
  void clearLocked();
  uint64_t wordCount() const { return buckets_ * 2 * kBucketEntries * kWordsPerEntry; }
  // Takes the pages of each side's table in place, from `live` buckets up to
  // all of them, doubling the part searches use at each step; stops early
  // when stopFill_ is set.
  void fill(uint64_t live);
  // Takes buckets [from, to) of both sides in place; false when stopped, or
  // when the system cannot (then every bucket is in use, faulting in as touched).
  bool populateBuckets(uint64_t from, uint64_t to);
  void startFill(Fill fill);
  // Stops a background fill and waits for its thread (`finish`: lets it end first).
  void joinFill(bool finish = false);
  // Puts a fresh block for `hashSize` in place of the old one, which is given back.
  void install(uint64_t* words, int32_t hashSize, Fill fill);
  static uint64_t* mapZeroed(uint64_t bytes);
  static void unmap(uint64_t* words, uint64_t bytes);

  uint64_t* words_ = nullptr;  // two tables: side 1 then side 2, page-aligned
  std::atomic<bool> written_{false};  // something was stored since the last clear
  uint64_t buckets_ = 0;
  // Buckets in use per side, minus one: a prefix of each side's table whose
  // pages are in place, so that no probe waits for the system to supply a
  // page. Only grows while a table lives; no entry lies beyond it.
  std::atomic<uint64_t> liveMask_{0};
  std::atomic<bool> stopFill_{false};
  std::thread filler_;
  int32_t sizeSetting_ = -1;
  int32_t refusedSetting_ = -1;
  int rule_ = -1;
  std::thread releaser_;  // gives the last replaced block back
  // Held while the tables are made, replaced or cleared, and by the
  // commands that read them whole; the search itself never takes it,
  // because the tables change shape only while no search runs.
  mutable std::mutex layout_;
};

// The one table of the engine.
extern TranspositionTable transpositionTable;

// Proven values are kept relative to the node that stores them.
int32_t toStored(int32_t value, int depth);
int32_t fromStored(int32_t value, int depth);

}  // namespace zorva
