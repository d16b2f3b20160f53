// Opening database at scale: a million records saved, loaded and probed.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "database/database.h"

namespace {

using namespace zorva::db;

constexpr int kRecords = 1'000'000;

std::vector<int32_t> randomGame(std::mt19937& rng, int stones) {
  std::vector<int32_t> moves;
  while (static_cast<int>(moves.size()) < stones) {
    const int32_t cell = makeCell(rng() % 15, rng() % 15);
    if (std::find(moves.begin(), moves.end(), cell) == moves.end()) moves.push_back(cell);
  }
  return moves;
}

// Resident memory in bytes where the system tells it, else 0.
double residentBytes() {
  std::ifstream status("/proc/self/status");
  std::string word;
  while (status >> word)
    if (word == "VmRSS:") {
      double kb = 0;
      status >> kb;
      return kb * 1024;
    }
  return 0;
}

// One database of a million opening positions (4 to 24 stones, Renju,
// 15x15) with short texts, and the games that built it for lookups.
struct Fixture {
  std::string path = (std::filesystem::temp_directory_path() / "zorva-bench.db").string();
  Database db{path};
  std::vector<std::vector<int32_t>> games;
  double memory = 0;

  Fixture() {
    std::mt19937 rng(12345);
    std::vector<std::pair<std::string, std::string>> records;
    KeyBuffer key;
    const double before = residentBytes();
    db.load();
    while (static_cast<int>(records.size()) < kRecords) {
      games.push_back(randomGame(rng, 4 + rng() % 21));
      canonicalKey({2, 15, 15, games.back()}, key);
      records.emplace_back(std::string(key.view()), makeText({kWon, 100, 12}, "3"));
    }
    db.insertMissing(std::move(records));
    memory = residentBytes() - before;  // games and records are counted too
  }
  ~Fixture() {
    std::error_code ec;
    for (const char* suffix : {"", ".bak", ".tmp"}) std::filesystem::remove(path + suffix, ec);
  }
};

Fixture& fixture() {
  static Fixture f;
  return f;
}

void BM_DatabaseSave(benchmark::State& state) {
  Fixture& f = fixture();
  for (auto _ : state) f.db.save();
  state.counters["records"] = static_cast<double>(f.db.size());
  state.counters["file_MB"] = static_cast<double>(std::filesystem::file_size(f.path)) / 1e6;
  state.counters["rss_growth_MB"] = f.memory / 1e6;
}
BENCHMARK(BM_DatabaseSave)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_DatabaseLoad(benchmark::State& state) {
  Fixture& f = fixture();
  f.db.save();
  for (auto _ : state) f.db.load();
  state.counters["records"] = static_cast<double>(f.db.size());
}
BENCHMARK(BM_DatabaseLoad)->Unit(benchmark::kMillisecond)->Iterations(3);

// Half the probes hit (stored games), half miss (the same games one stone
// short).
void BM_DatabaseProbe(benchmark::State& state) {
  Fixture& f = fixture();
  std::mt19937 rng(static_cast<unsigned>(state.thread_index()));
  int64_t hits = 0;
  for (auto _ : state) {
    std::vector<int32_t>& game = f.games[rng() % f.games.size()];
    const size_t stones = game.size() - (rng() & 1);
    hits += f.db.probe({2, 15, 15, {game.data(), stones}}).has_value();
  }
  state.SetItemsProcessed(state.iterations());
  state.counters["hit_rate"] = benchmark::Counter(static_cast<double>(hits) / static_cast<double>(state.iterations()),
                                                 benchmark::Counter::kAvgThreads);
}
BENCHMARK(BM_DatabaseProbe)->Threads(1)->Threads(2);

}  // namespace
