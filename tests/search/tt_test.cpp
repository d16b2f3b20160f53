#include <gtest/gtest.h>

#include <random>
#include <thread>
#include <vector>

#include "search/tt.h"

namespace zorva {
namespace {

constexpr int kSmall = 4;  // 16 buckets per side

class TTTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(tt.resize(kSmall)); }
  TranspositionTable tt;
  Move moves[3] = {};
};

TEST(TTSize, SettingToBuckets) {
  EXPECT_EQ(TranspositionTable::bucketsFor(524288), 524288u) << "the default setting";
  EXPECT_EQ(TranspositionTable::bucketsFor(1), 2u);
  EXPECT_EQ(TranspositionTable::bucketsFor(0), 2u);
  EXPECT_EQ(TranspositionTable::bucketsFor(20), 1u << 20);
  EXPECT_EQ(TranspositionTable::bucketsFor(24), 1u << 24);
  EXPECT_EQ(TranspositionTable::bucketsFor(1000000), 524288u);
  EXPECT_EQ(TranspositionTable::bucketsFor(2147483647), 1u << 24) << "capped at 4 GiB of tables";
}

TEST_F(TTTest, ExactAndBoundsAreReturnedWhenUsable) {
  const uint64_t key = 0x123456789ABCDEF0ull;
  tt.store(key, 10, 6, 120, kBoundExact, 1, makeMove(7, 7), makeMove(7, 8));
  int found = 0;
  EXPECT_EQ(tt.probe(key, 10, 6, -1000, 1000, 1, moves, 3, &found), 120);
  EXPECT_EQ(found, 2);
  EXPECT_EQ(moves[0], makeMove(7, 7));
  EXPECT_EQ(tt.probe(key, 10, 7, -1000, 1000, 1, moves, 3, &found), kNoValue) << "too shallow";
  EXPECT_EQ(found, 2) << "moves are handed out even when the value is not usable";
  EXPECT_EQ(tt.probe(key, 10, 6, -1000, 1000, 2, moves, 3), kNoValue) << "the other side's table";

  const uint64_t other = key + 16;  // same bucket
  tt.store(other, 10, 4, 50, kBoundUpper, 1);
  EXPECT_EQ(tt.probe(other, 10, 4, 60, 61, 1, moves, 1), 50) << "fails low under alpha";
  EXPECT_EQ(tt.probe(other, 10, 4, 40, 41, 1, moves, 1), kNoValue);
  tt.store(other, 10, 4, 30, kBoundLower, 1);
  EXPECT_EQ(tt.probe(other, 10, 4, 20, 25, 1, moves, 1), 30) << "fails high over beta";
  tt.store(other, 10, 4, 40, kBoundLower, 1);
  tt.store(other, 10, 4, 40, kBoundUpper, 1);
  EXPECT_EQ(tt.probe(other, 10, 4, -1000, 1000, 1, moves, 1), 40) << "meeting bounds make an exact value";
}

TEST_F(TTTest, ProvenValuesAreRelativeToTheNode) {
  const uint64_t key = 99;
  tt.store(key, 20, 5, kWin + 3, kBoundExact, 2);  // a win two plies below a depth-5 node
  EXPECT_EQ(tt.probe(key, 20, 9, -kWin * 2, kWin * 2, 2, moves, 1), kWin + 7) << "shifted by the depth difference";
  tt.store(key + 1, 20, 5, -kWin - 3, kBoundExact, 2);
  EXPECT_EQ(tt.probe(key + 1, 20, 2, -kWin * 2, kWin * 2, 2, moves, 1), -kWin - 0);
  EXPECT_EQ(toStored(12345, 7), 12345);
  EXPECT_EQ(fromStored(toStored(-kWin - 20, 30), 30), -kWin - 20);
}

TEST_F(TTTest, DeeperEntriesKeepTheirValues) {
  const uint64_t key = 5;
  tt.store(key, 30, 8, 300, kBoundExact, 1, makeMove(1, 1));
  tt.store(key, 33, 3, -50, kBoundExact, 1, makeMove(2, 2));
  TTEntry e;
  ASSERT_TRUE(tt.find(key, 1, &e));
  EXPECT_EQ(e.depth, 8);
  EXPECT_EQ(e.upper, 300);
  EXPECT_EQ(e.age, 33) << "only the age changes";
  EXPECT_EQ(e.moves[0], makeMove(1, 1));
}

TEST_F(TTTest, MovesMerge) {
  const uint64_t key = 7;
  const Move a = makeMove(1, 1), b = makeMove(2, 2), c = makeMove(3, 3), d = makeMove(4, 4);
  tt.store(key, 0, 1, 0, kBoundExact, 1, a, b, c);
  tt.store(key, 0, 1, 0, kBoundExact, 1, d);
  TTEntry e;
  ASSERT_TRUE(tt.find(key, 1, &e));
  EXPECT_EQ((std::vector<Move>{e.moves, e.moves + 3}), (std::vector<Move>{d, a, b}));
  tt.store(key, 0, 1, 0, kBoundExact, 1, b, c);
  ASSERT_TRUE(tt.find(key, 1, &e));
  EXPECT_EQ((std::vector<Move>{e.moves, e.moves + 3}), (std::vector<Move>{b, c, d}));
  tt.store(key, 0, 1, 0, kBoundExact, 1, a, b, c);
  ASSERT_TRUE(tt.find(key, 1, &e));
  EXPECT_EQ((std::vector<Move>{e.moves, e.moves + 3}), (std::vector<Move>{a, b, c}));
  EXPECT_EQ(e.moveCount, 3);
}

TEST_F(TTTest, ReplacementPrefersStaleThenLeastWorth) {
  // Four keys fill one bucket; a fifth must evict.
  for (int i = 0; i < 4; ++i) tt.store(uint64_t(i) << 8, 10, 2 + i, i, kBoundExact, 1);
  tt.store(uint64_t(4) << 8, 10, 9, 4, kBoundExact, 1);
  TTEntry e;
  EXPECT_FALSE(tt.find(0, 1, &e)) << "the shallowest entry goes";
  EXPECT_TRUE(tt.find(uint64_t(4) << 8, 1, &e));
  // Stale entries (two stones or more older) go first, the last of them.
  tt.store(uint64_t(5) << 8, 12, 1, 5, kBoundUpper, 1);
  EXPECT_FALSE(tt.find(uint64_t(3) << 8, 1, &e));
  EXPECT_TRUE(tt.find(uint64_t(1) << 8, 1, &e));
}

TEST_F(TTTest, RuleChangeAndUsage) {
  tt.ensureRule(0);
  tt.store(1, 0, 1, 10, kBoundExact, 1);
  tt.store(2, 0, 1, 10, kBoundExact, 2);
  EXPECT_DOUBLE_EQ(tt.usage(), 2.0 / (16 * 4 * 2));
  tt.ensureRule(0);
  EXPECT_GT(tt.usage(), 0.0);
  tt.ensureRule(2);
  EXPECT_EQ(tt.usage(), 0.0);
  EXPECT_EQ(tt.rule(), 2);
}

// Threads hammering one small table must only ever see entries that some
// thread wrote whole: the check word rejects torn ones.
TEST(Threads, ConcurrentStoresNeverYieldTornEntries) {
  TranspositionTable tt;
  ASSERT_TRUE(tt.resize(2));
  std::vector<std::thread> threads;
  std::atomic<int> bad{0};
  uint64_t keys[64];
  std::mt19937_64 keyRng(7);
  for (uint64_t& k : keys) k = keyRng();
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([&, t] {
      std::mt19937_64 rng(t);
      Move moves[3];
      for (int i = 0; i < 200000; ++i) {
        const int index = int(rng() % 64);
        const uint64_t key = keys[index];
        const int32_t value = index * 1000;  // every writer of a key writes the same value
        if (rng() % 2)
          tt.store(key, int(rng() % 50), int(rng() % 10), value, kBoundExact, 1, Move(index));
        else {
          const int32_t got = tt.probe(key, 0, 0, -kWin, kWin, 1, moves, 1);
          if (got != kNoValue && got != value) ++bad;
        }
      }
    });
  for (auto& th : threads) th.join();
  EXPECT_EQ(bad.load(), 0);
}

// A table filled in the background serves searches from the first moment,
// on the part in place; replacing, clearing or finishing it meanwhile is
// safe, and a fill always ends with the whole table in use.
TEST(Threads, BackgroundFillServesSearchesMeanwhile) {
  TranspositionTable tt;
  constexpr int kSize = 18;  // 64 MiB: its fill outlasts the first stores
  ASSERT_TRUE(tt.resize(kSize, TranspositionTable::Fill::kBackground));
  EXPECT_GE(tt.liveBuckets(), 1u << 14) << "a first part is in place at once";
  EXPECT_LE(tt.liveBuckets(), tt.buckets());
  std::atomic<int> bad{0};
  std::vector<std::thread> searchers;
  for (int t = 0; t < 2; ++t)
    searchers.emplace_back([&, t] {
      std::mt19937_64 rng(t);
      Move moves[1];
      for (int i = 0; i < 100000; ++i) {
        const uint64_t key = rng();
        const int32_t value = int32_t(key % 1000);
        tt.store(key, 10, 3, value, kBoundExact, 1 + t);
        const int32_t got = tt.probe(key, 10, 3, -kWin, kWin, 1 + t, moves, 1);
        if (got != kNoValue && got != value) ++bad;
      }
    });
  for (auto& th : searchers) th.join();
  EXPECT_EQ(bad.load(), 0);
  tt.clear();
  EXPECT_EQ(tt.usage(), 0.0) << "cleared while the fill may still run";

  tt.store(1, 0, 1, 10, kBoundExact, 1);
  tt.ensureRule(2);  // a fresh block, filled anew
  ASSERT_TRUE(tt.resize(kSize - 2, TranspositionTable::Fill::kBackground));  // stops that fill half-way
  ASSERT_TRUE(tt.resize(kSize - 2));  // and this one waits for the fill of the same size
  EXPECT_EQ(tt.liveBuckets(), tt.buckets());
  tt.store(0xABCDEF, 4, 2, 77, kBoundExact, 2);
  EXPECT_EQ(tt.probe(0xABCDEF, 4, 2, -kWin, kWin, 2, nullptr, 0), 77);
}

}  // namespace
}  // namespace zorva
