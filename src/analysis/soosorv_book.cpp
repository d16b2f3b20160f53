#include "analysis/soosorv_book.h"

#include <algorithm>
#include <optional>
#include <string>

namespace zorva {

namespace {

// Proven results rank beyond every searched value.
constexpr int32_t kBookWin = 10000;

// More stones than the largest board has cells repeat one: no record.
bool tooMany(const db::Position& stones) { return stones.moves.size() >= size_t(kMaxStones); }

// `stones` with `cell` after them, in `line` (room for kMaxStones + 1).
db::Position extended(const db::Position& stones, Move cell, int32_t* line) {
  std::copy(stones.moves.begin(), stones.moves.end(), line);
  line[stones.moves.size()] = cell;
  return {stones.rule, stones.height, stones.width, std::span<const int32_t>(line, stones.moves.size() + 1)};
}

// Every record with a message has a count: its first character as one
// digit, or 0 when that character is no digit.
std::optional<int> countOf(const std::optional<std::string>& text) {
  if (!text || text->size() <= size_t(db::kResultBytes)) return std::nullopt;
  return std::max(db::readCount(*text), 0);
}

}  // namespace

std::optional<CountedMove> bookFourthMove(const db::Database& db, const db::Position& stones) {
  int32_t line[kMaxStones + 1];
  std::optional<CountedMove> best;
  if (tooMany(stones)) return best;
  int found = 0;
  for (int x = 0; x < stones.height && found < kMaxCountedMoves; ++x)
    for (int y = 0; y < stones.width && found < kMaxCountedMoves; ++y) {
      const Move cell = makeMove(x, y);
      const std::optional<int> count = countOf(db.lookup(extended(stones, cell, line)));
      if (!count) continue;
      ++found;
      if (!best || *count > best->count) best = CountedMove{cell, *count};
    }
  return best;
}

bool bookAcceptsOffers(const db::Database& db, const db::Position& stones, int offered) {
  const std::optional<int> count = countOf(db.lookup(stones));
  return count && *count <= offered;
}

// A record's t is from the view of the side that made the position, its v
// from the side to move's, as the search reads them.
std::optional<int32_t> bookValueAfter(const db::Database& db, const db::Position& stones, Move cell) {
  int32_t line[kMaxStones + 1];
  if (tooMany(stones)) return std::nullopt;
  const std::optional<db::ResultFields> fields = db.probe(extended(stones, cell, line));
  if (!fields) return std::nullopt;
  if (fields->t == db::kLost) return kBookWin;
  if (fields->t == db::kWon) return -kBookWin;
  if (fields->d > 0) return fields->v;
  return std::nullopt;
}

}  // namespace zorva
