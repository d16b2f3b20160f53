#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "database/record.h"
#include "db_test_support.h"

namespace zorva::db {
namespace {

using testing::keyOf;

std::vector<int32_t> randomGame(std::mt19937& rng, int height, int width, int stones) {
  std::vector<int32_t> moves;
  while (static_cast<int>(moves.size()) < stones) {
    const int32_t cell = makeCell(rng() % height, rng() % width);
    if (std::find(moves.begin(), moves.end(), cell) == moves.end()) moves.push_back(cell);
  }
  return moves;
}

std::vector<int32_t> image(const std::vector<int32_t>& moves, int s, int height, int width) {
  std::vector<int32_t> out;
  for (int32_t cell : moves) {
    int x = cellX(cell), y = cellY(cell);
    applySymmetry(s, height, width, x, y);
    out.push_back(makeCell(x, y));
  }
  return out;
}

TEST(RecordKey, EverySymmetricImageHasTheSameKey) {
  std::mt19937 rng(7);
  for (auto [height, width] : {std::pair{15, 15}, {20, 20}, {15, 20}, {22, 9}, {1, 22}}) {
    for (int trial = 0; trial < 50; trial++) {
      const auto moves = randomGame(rng, height, width, 1 + rng() % 12);
      const std::string key = keyOf(1, height, width, moves);
      ASSERT_EQ(static_cast<int>(key.size()), 3 + 2 * static_cast<int>(moves.size()));
      // On a rectangle the transposing forms are positions of the other shape.
      for (int s = 0; s < (height == width ? kSymmetries : 4); s++)
        EXPECT_EQ(keyOf(1, height, width, image(moves, s, height, width)), key) << height << "x" << width;
      EXPECT_TRUE(isCanonical(key));
    }
  }
}

TEST(RecordKey, RectanglesTakeTheLeastOfAllEightForms) {
  // On 15 rows of 20 the eight forms of (3,17) are (3,17), (11,17), (3,2),
  // (11,2) and, turned, (17,3), (17,11), (2,3), (2,11): another build reads
  // the file only if the turned (2,3) is the one stored.
  EXPECT_EQ(keyOf(0, 15, 20, {makeCell(3, 17)}), std::string("\x00\x0f\x14\x02\x03", 5));
  const std::string turned = keyOf(0, 15, 20, {makeCell(1, 2), makeCell(3, 7)});
  EXPECT_EQ(turned, keyOf(0, 15, 20, {makeCell(2, 1), makeCell(7, 3)})) << "the transposed position shares it";
  EXPECT_TRUE(keyProblem(turned).empty()) << "a turned key is a valid key";
  EXPECT_TRUE(isCanonical(turned));
  EXPECT_EQ(keyOf(0, 15, 20, {makeCell(1, 2)}), keyOf(0, 15, 20, {makeCell(13, 17)}));
  EXPECT_FALSE(keyProblem(std::string("\x00\x0f\x14\x10\x10", 5)).empty()) << "(16,16) lies on neither";
}

TEST(RecordKey, OrderIsLengthThenUnsignedBytes) {
  EXPECT_TRUE(keyLess(std::string("\xff\xff\xff", 3), std::string("\0\0\0\0\0", 5)));
  EXPECT_TRUE(keyLess(std::string("\x01\x7f", 2), std::string("\x01\x80", 2)));
  EXPECT_EQ(compareKeys("abc", "abc"), 0);
  // The least image is stored: a corner stone goes to (0,0).
  EXPECT_EQ(keyOf(2, 15, 15, {makeCell(14, 14)}), std::string("\x02\x0f\x0f\x00\x00", 5));
}

TEST(RecordKey, PositionsWithoutKey) {
  EXPECT_EQ(keyOf(0, 15, 15, {}).size(), 3u);  // the empty board is a position like any other
  for (const auto& moves : {std::vector{makeCell(15, 0)}, {makeCell(0, 15)}, {makeCell(-1, 3)},
                             {makeCell(3, 3), makeCell(3, 3)}})
    EXPECT_EQ(keyOf(0, 15, 15, moves), "");
  EXPECT_EQ(keyOf(3, 15, 15, {}), "");
  EXPECT_EQ(keyOf(0, 23, 15, {}), "");
  EXPECT_FALSE(isCanonical(std::string("\x00\x0f\x0f\x0e\x0e", 5)));
}

TEST(RecordText, FieldsRoundTripAndNarrowLikeTheFile) {
  const std::string text = makeText({kWon, -1234, 17}, "3 best line");
  EXPECT_EQ(readResult(text), (ResultFields{kWon, -1234, 17}));
  EXPECT_EQ(messageOf(text), "3 best line");
  EXPECT_EQ(readCount(text), 3);
  EXPECT_EQ(readCount(makeText({}, "B")), 11);
  EXPECT_EQ(readCount(makeText({}, "")), -1);
  EXPECT_EQ(readResult(makeText({300, 70000, -40000}, "")), (ResultFields{44, 4464, 25536}));
  EXPECT_EQ(readResult("wxyz"), ResultFields{});
  EXPECT_EQ(messageOf("wxyz"), "");
}

}  // namespace
}  // namespace zorva::db
