#include "analysis/soosorv_book.h"

#include <algorithm>

namespace zorva {

namespace {

// Proven results rank beyond every searched value.
constexpr int32_t kBookWin = 10000;

// `stones` with `cell` after them, in `line`.
db::Position extended(const db::Position& stones, Move cell, int32_t* line) {
  std::copy(stones.moves.begin(), stones.moves.end(), line);
  line[stones.moves.size()] = cell;
  return {stones.rule, stones.height, stones.width, std::span<const int32_t>(line, stones.moves.size() + 1)};
}

}  // namespace

std::optional<CountedMove> bookFourthMove(const db::Database& db, const db::Position& stones) {
  int32_t line[kMaxStones + 1];
  std::optional<CountedMove> best;
  int found = 0;
  for (int x = 0; x < stones.height && found < kMaxCountedMoves; ++x)
    for (int y = 0; y < stones.width && found < kMaxCountedMoves; ++y) {
      const Move cell = makeMove(x, y);
      const std::optional<std::string> text = db.lookup(extended(stones, cell, line));
      const int count = text ? db::readCount(*text) : -1;
      if (count < 0) continue;
      ++found;
      if (!best || count > best->count) best = CountedMove{cell, count};
    }
  return best;
}

bool bookAcceptsOffers(const db::Database& db, const db::Position& stones, int offered) {
  const std::optional<std::string> text = db.lookup(stones);
  const int count = text ? db::readCount(*text) : -1;
  return count >= 0 && count <= offered;
}

// A record's t is from the view of the side that made the position, its v
// from the side to move's, as the search reads them.
std::optional<int32_t> bookValueAfter(const db::Database& db, const db::Position& stones, Move cell) {
  int32_t line[kMaxStones + 1];
  const std::optional<db::ResultFields> fields = db.probe(extended(stones, cell, line));
  if (!fields) return std::nullopt;
  if (fields->t == db::kLost) return kBookWin;
  if (fields->t == db::kWon) return -kBookWin;
  if (fields->d > 0) return fields->v;
  return std::nullopt;
}

}  // namespace zorva
