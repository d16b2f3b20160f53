#include "board/values.h"

#include <mutex>
#include <utility>

#include "board/patterns.h"

namespace zorva {

int16_t patternValue[1 << 16];
int16_t moveValue[1 << 16];
int16_t blackValue[1 << 16];
int16_t learningTable[kLearningEntries];

// Twos and closed threes stay small: they are building material, and a cell
// near a few stones should score 10..25 so that quiet totals stay in the low
// hundreds. Any three or four is worth more than twos on three lines,
// a four a little more than a three (it forces, but its block
// usually ends the line), and an open four or a five decides the game. The
// overline is worth nothing: the only colour that gets code 13 may not play
// it. Combinations: a four with a second threat wins unless the opponent has
// a faster threat, a double three nearly so; a lone threat gains a little
// from every two beside it, the material of a later double. The evaluation's
// weights sit halfway between a fit to a weaker engine's games and a refit to
// the present engine's: the full step lost positions won or held by threes.
const int kMoveWeights[kShapeTerms] = {0, 2, 4, 6, 8, 9, 11, 40, 48, 50, 56, 150, 400, 0, 0, 0, 100, 60, 4};
const int kEvalWeights[kShapeTerms] = {0, 2, 6, 6, 6, 17, 20, 20, 20, 69, 73, 163, 400, 0, 0, 0, 120, 35, 26};

ShapeTerms shapeTerms(uint32_t word) {
  ShapeTerms t{};
  int threats = 0, fours = 0, twos = 0;
  for (int d = 0; d < 4; ++d) {
    const int c = int(word >> (4 * d) & 15);
    ++t[c];
    threats += c >= kCodeThreeOne && c <= kCodeOpenFour;
    fours += c >= kCodeFourDead && c <= kCodeOpenFour;
    twos += c >= 2 && c <= 6;
  }
  t[0] = 0;  // an empty direction is worth nothing by definition
  if (fours >= 1 && threats >= 2)
    t[kFourPlusThreatTerm] = 1;
  else if (threats >= 2)
    t[kDoubleThreeTerm] = 1;
  else if (threats == 1)
    t[kThreatBesideTwoTerm] = twos;
  return t;
}

int shapeValue(uint32_t word, const int* weights) {
  const ShapeTerms t = shapeTerms(word);
  int sum = 0;
  for (int i = 0; i < kShapeTerms; ++i) sum += t[i] * weights[i];
  return sum;
}

namespace {

// Black's strengths for the Renju term. The grades are set so that the
// threshold falls between a double three (at most 72 + 72 + two small
// codes = 156) and anything with a four (94 + 64 = 158), an overline or
// a third three.
constexpr int kBlackWorth[16] = {0, 1, 2, 3, 4, 5, 6, 64, 72, 94, 100, 170, 400, 170, 0, 0};

int code(uint32_t word, int d) { return int(word >> (4 * d) & 15); }

int blackValueOf(uint32_t word) {
  int sum = 0;
  for (int d = 0; d < 4; ++d) sum += kBlackWorth[code(word, d)];
  return sum;
}

std::once_flag filled;

}  // namespace

int sortedIndex(uint32_t word) {
  int c[4] = {code(word, 0), code(word, 1), code(word, 2), code(word, 3)};
  for (int i = 1; i < 4; ++i)
    for (int j = i; j > 0 && c[j] > c[j - 1]; --j) std::swap(c[j], c[j - 1]);
  return learningIndex(c[0], c[1], c[2], c[3]);
}

int learningIndex(int a, int b, int c, int d) { return a * 4096 + b * 256 + c * 16 + d; }

void initValueTables() {
  std::call_once(filled, [] {
    // A shape value does not depend on the order of the directions, so the
    // table of sorted quadruples holds it whole.
    for (uint32_t word = 0; word < (1u << 16); ++word) {
      learningTable[sortedIndex(word)] = int16_t(shapeValue(word, kEvalWeights));
      moveValue[word] = int16_t(shapeValue(word, kMoveWeights));
      blackValue[word] = int16_t(blackValueOf(word));
    }
    applyLearningTable();
  });
}

void applyLearningTable() {
  for (uint32_t word = 0; word < (1u << 16); ++word) patternValue[word] = learningTable[sortedIndex(word)];
}

}  // namespace zorva
