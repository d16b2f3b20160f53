#pragma once
// Value tables indexed by a colour's whole pattern word (four direction
// codes, direction d in bits 4d..4d+3), filled once from the codes.
#include <array>
#include <cstdint>

namespace zorva {

// Static worth of a cell to a colour before the room scaling of the cell
// value: the evaluation's view of the cell, filled from the learning table.
extern int16_t patternValue[1 << 16];
// The search's grading of the same shapes, for move order, reductions and
// extensions: fixed, so that tuning the evaluation leaves the search's
// thresholds where they were set.
extern int16_t moveValue[1 << 16];
// Strength of black's shapes on a cell, read by the Renju term of the
// evaluation: at or above kBlackValueThreshold the cell holds a four, an
// overline or three threes for black; a double three alone stays below.
extern int16_t blackValue[1 << 16];
constexpr int kBlackValueThreshold = 158;

// The learning table: one worth per unordered quadruple of direction codes,
// entry (a, b, c, d) with a >= b >= c >= d at index a*4096 + b*256 + c*16 + d.
// A cell's pattern value is the entry of its four codes sorted, so the table
// fixes patternValue entirely; its built-in entries give the engine's own values.
constexpr int kLearningEntries = 1 << 16;
extern int16_t learningTable[kLearningEntries];
int learningIndex(int a, int b, int c, int d);
// The learning-table index of a pattern word: its four codes, largest first.
int sortedIndex(uint32_t word);

// A word's value is linear in its shape terms: how many of its directions
// show each code (terms 0-15), then the combination terms.
constexpr int kShapeTerms = 19;
constexpr int kFourPlusThreatTerm = 16;   // a four and a second three or four
constexpr int kDoubleThreeTerm = 17;      // two threes or more, no four
constexpr int kThreatBesideTwoTerm = 18;  // a lone threat: the number of twos beside it
using ShapeTerms = std::array<int, kShapeTerms>;
ShapeTerms shapeTerms(uint32_t word);
int shapeValue(uint32_t word, const int* weights);
// The built-in weights of the shape terms: the evaluation's, fitted to
// self-play results, and the search's grading.
extern const int kEvalWeights[kShapeTerms];
extern const int kMoveWeights[kShapeTerms];

// Fills the tables; idempotent and safe from several threads.
void initValueTables();
// Refills patternValue from the learning table after entries were replaced.
// Must run before any search thread starts.
void applyLearningTable();

// cellValue of a cell: the pattern value scaled by its room, 32 being full room.
inline int scaledCellValue(uint32_t patternWord, int roomSum) {
  return patternValue[patternWord & 0xFFFF] * roomSum >> 5;
}

}  // namespace zorva
