#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "database/learning.h"

namespace zorva::db {
namespace {

int index(int a, int b, int c, int d) { return a * 4096 + b * 256 + c * 16 + d; }

class LearningFile : public ::testing::Test {
 protected:
  void TearDown() override { std::remove(path.c_str()); }
  int read(const std::string& text, std::vector<int16_t>& table) {
    std::ofstream(path) << text;
    return readLearningFile(path, table.data());
  }
  std::string path = "/tmp/zorva-learning-" + std::to_string(getpid()) + ".txt";
};

TEST_F(LearningFile, OrderAndLayoutOfTheValues) {
  std::string oneLine, perLine;
  for (int i = 1; i <= kLearningValues; ++i) {
    oneLine += std::to_string(i) + " ";
    perLine += std::to_string(i) + "\n";
  }
  std::vector<int16_t> a(1 << 16, -7), b(1 << 16, -7);
  EXPECT_EQ(read(oneLine, a), kLearningValues);
  EXPECT_EQ(read(perLine, b), kLearningValues);
  EXPECT_EQ(a, b) << "line breaks mean nothing";
  EXPECT_EQ(a[index(0, 0, 0, 0)], 1);
  EXPECT_EQ(a[index(1, 0, 0, 0)], 2);
  EXPECT_EQ(a[index(1, 1, 1, 1)], 5);
  EXPECT_EQ(a[index(2, 0, 0, 0)], 6);
  EXPECT_EQ(a[index(3, 1, 1, 0)], 18);
  EXPECT_EQ(a[index(15, 15, 15, 15)], kLearningValues);
  EXPECT_EQ(a[index(0, 1, 0, 0)], -7) << "only non-increasing quadruples are read";
}

TEST_F(LearningFile, ShortOrBrokenFilesKeepTheRest) {
  std::vector<int16_t> table(1 << 16, 9);
  EXPECT_EQ(read("100 -200\n300", table), 3);
  EXPECT_EQ(table[index(1, 1, 0, 0)], 300);
  EXPECT_EQ(table[index(1, 1, 1, 0)], 9);
  EXPECT_EQ(read("1 2 x 4", table), 2) << "reading stops at text that is not a number";
  EXPECT_EQ(table[index(1, 1, 0, 0)], 300);
  EXPECT_EQ(read("99999 -99999", table), 2);
  EXPECT_EQ(table[index(0, 0, 0, 0)], 32767);
  EXPECT_EQ(table[index(1, 0, 0, 0)], -32768);
  EXPECT_EQ(readLearningFile("/nonexistent/learning.txt", table.data()), -1);
}

}  // namespace
}  // namespace zorva::db
