#pragma once
// What the opening database knows about a Soosorv opening: the fourth stone
// it has the largest count of fifth-move offers for, whether it accepts a
// number of offers, and the values of the positions after fifth moves. A
// record with a message has a count: the message's first character as one
// digit ("0" to "9", then "A" upward), 0 when it is no digit.
#include <cstdint>
#include <optional>

#include "board/types.h"
#include "database/database.h"

namespace zorva {

// Records past this many found are not considered for the fourth stone.
constexpr int kMaxCountedMoves = 32;

struct CountedMove {
  Move cell;
  int count;
};

// Of the first kMaxCountedMoves cells, in row order, whose extension of
// `stones` has a record with a message, the one with the largest count (the
// earlier on a tie); none when no such record is found.
std::optional<CountedMove> bookFourthMove(const db::Database& db, const db::Position& stones);

// True when the record of `stones` has a count of at most `offered`.
bool bookAcceptsOffers(const db::Database& db, const db::Position& stones, int offered);

// The value of `stones` and then `cell` for the side to move after it, when
// its record holds a result: a proven one, or a value searched to some depth.
std::optional<int32_t> bookValueAfter(const db::Database& db, const db::Position& stones, Move cell);

}  // namespace zorva
