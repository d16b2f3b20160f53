#pragma once
// Training positions for the evaluation tuner: each one reduced to the
// features the evaluation is linear in, plus the part it is not.
#include <string>
#include <utility>
#include <vector>

#include "board/values.h"

namespace zorva::tune {

// Features of the side to move less the opponent's, each shape term
// summed over the cells as the cell value weighs it (room / 32).
// The threat points: cells where the side to move, then the opponent, makes a four, then a three.
constexpr int kThreatCounts = 4;

struct Sample {
  std::array<float, kShapeTerms> terms{};
  std::array<float, kThreatCounts> threats{};
  // Per learning-table entry the sum of its cells' weights, side to move
  // positive: the evaluation's cell totals are linear in the table.
  std::vector<std::pair<uint16_t, float>> entries;
  float rest = 0;    // evaluation less the cell totals and the side-to-move bonus
  float result = 0;  // for the side to move: 1 win, 0.5 draw, 0 loss
};

struct SampleStats {
  int lines = 0;
  int unusable = 0;  // unreadable, or the finished position of a game
  int decided = 0;  // skipped: the side to move wins by fours or must block five
};

// How a label is made when a line also carries a deeper search's value:
// that share of it is the search's win chance, sigmoid(value / scale).
struct Labels {
  double searchShare = 0;
  double searchScale = 360;
};

// Reads "<moves> <result> <rule> [<value>]" lines (moves in letter-number
// notation, "-" for none; value: a search's, for the side to move) of 15x15
// games. Positions the search settles without the evaluation are left out.
std::vector<Sample> readSamples(const std::string& path, SampleStats& stats, const Labels& labels = {});

}  // namespace zorva::tune
