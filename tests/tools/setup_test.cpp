// The match set-up: opening books, the game plan, the command line and the
// Elo arithmetic.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <set>

#include "match/elo.h"
#include "match/openings.h"
#include "match/options.h"

namespace zorva::referee {
namespace {

TEST(RefereeOpenings, ParsesLetterNumberMoves) {
  Opening o;
  std::string error;
  ASSERT_TRUE(parseOpening("h8i9", 15, 15, o, error)) << error;
  EXPECT_EQ(o.stones, (std::vector<Cell>{{7, 7}, {8, 8}}));
  ASSERT_TRUE(parseOpening(" a14E11o15 ", 15, 15, o, error)) << error;
  EXPECT_EQ(o.stones, (std::vector<Cell>{{0, 13}, {4, 10}, {14, 14}}));
  ASSERT_TRUE(parseOpening("", 15, 15, o, error));
  EXPECT_TRUE(o.stones.empty());
  // On a rectangle the letter (x) runs below the height, the number below the width.
  EXPECT_TRUE(parseOpening("a20", 20, 15, o, error));
  EXPECT_FALSE(parseOpening("p1", 20, 15, o, error));
}

TEST(RefereeOpenings, RejectsBadOpenings) {
  Opening o;
  std::string error;
  for (const char* bad : {"p8", "h16", "h0", "h8h8", "h8x", "h", "8h", "a1b1a2b2a3b3a4b4a5"}) {
    EXPECT_FALSE(parseOpening(bad, 15, 15, o, error)) << bad;
    EXPECT_FALSE(error.empty());
  }
}

TEST(RefereeOpenings, LoadsABookAndNamesTheBadLine) {
  std::string path = ::testing::TempDir() + "zorva_book.txt";
  {
    std::ofstream f(path);
    f << "# test book\r\nh8i9\r\n\r\nk4k5j2\n";
  }
  std::vector<Opening> book;
  std::string error;
  ASSERT_TRUE(loadOpenings(path, 15, 15, book, error)) << error;
  ASSERT_EQ(book.size(), 2u);
  EXPECT_EQ(cellsName(book[1].stones), "k4k5j2");
  {
    std::ofstream f(path, std::ios::app);
    f << "h8z9\n";
  }
  EXPECT_FALSE(loadOpenings(path, 15, 15, book, error));
  EXPECT_NE(error.find(":5:"), std::string::npos) << error;
  EXPECT_FALSE(loadOpenings(path + ".missing", 15, 15, book, error));
  std::remove(path.c_str());
}

TEST(RefereePlan, PairsShareAnOpeningWithColoursSwapped) {
  auto plan = planGames(7, 3, nullptr);
  ASSERT_EQ(plan.size(), 7u);
  for (size_t g = 0; g < plan.size(); ++g) {
    EXPECT_EQ(plan[g].black, int(g % 2));
    EXPECT_EQ(plan[g].opening, int(g / 2 % 3));  // reused from the start after the third
  }
  uint64_t seed = 42;
  auto a = planGames(200, 100, &seed), b = planGames(200, 100, &seed);
  std::set<int> used;
  for (size_t g = 0; g < a.size(); ++g) {
    EXPECT_EQ(a[g].opening, b[g].opening);
    if (g % 2) {
      EXPECT_EQ(a[g].opening, a[g - 1].opening);
    }
    used.insert(a[g].opening);
  }
  EXPECT_EQ(used.size(), 100u);  // a permutation
  bool shuffled = false;
  for (size_t g = 0; g < a.size(); g += 2) shuffled |= a[g].opening != int(g / 2);
  EXPECT_TRUE(shuffled);
}

TEST(RefereeElo, ScoreAndMargin) {
  EXPECT_DOUBLE_EQ(eloFromScore(0.5), 0);
  EXPECT_NEAR(eloFromScore(0.75), 190.85, 0.01);
  EXPECT_NEAR(eloFromScore(0.25), -190.85, 0.01);
  EXPECT_TRUE(std::isinf(eloFromScore(1)) && eloFromScore(1) > 0);
  // 60-40-0: p = 0.6, var = 0.24, se = 0.04899; the interval 0.50398..0.69602
  // maps to 2.77..143.91 Elo.
  EloEstimate e = estimateElo(60, 40, 0);
  EXPECT_NEAR(e.score, 0.6, 1e-12);
  EXPECT_NEAR(e.elo, 70.44, 0.01);
  EXPECT_NEAR(e.margin, 70.57, 0.05);
  EXPECT_NEAR(e.los, 0.97725, 1e-4);
  // Draws narrow the margin; a clean sweep has no finite one.
  EXPECT_LT(estimateElo(30, 10, 60).margin, estimateElo(40, 20, 0).margin);
  EXPECT_TRUE(std::isinf(estimateElo(10, 0, 0).margin));
  EloEstimate none = estimateElo(0, 0, 0);
  EXPECT_EQ(none.elo, 0);
  EXPECT_EQ(none.los, 0.5);
}

std::string parse(std::vector<const char*> args, Options& out) {
  args.insert(args.begin(), "zorva_match");
  return parseOptions(int(args.size()), args.data(), out);
}

TEST(RefereeOptions, BoardShapeAndRepeatedInfo) {
  Options o;
  ASSERT_EQ(parse({"--engine1", "a -x", "--engine2", "b", "--width", "20", "--height", "15", "--info", "thread_num 1",
                   "--info", "hash_size 18", "--seed", "5"},
                  o),
            "");
  EXPECT_EQ(o.config.command[0], "a -x");
  EXPECT_TRUE(o.config.rectangular);
  EXPECT_EQ(o.config.width, 20);
  EXPECT_EQ(o.config.height, 15);
  EXPECT_EQ(o.config.extraInfo, (std::vector<std::string>{"thread_num 1", "hash_size 18"}));
  EXPECT_EQ(o.seed, 5u);
  Options square;
  ASSERT_EQ(parse({"--engine1", "a", "--engine2", "b", "--size", "20"}, square), "");
  EXPECT_FALSE(square.config.rectangular);
  EXPECT_EQ(square.config.height, 20);
  EXPECT_FALSE(square.seed.has_value());
}

TEST(RefereeOptions, RefusesBadArguments) {
  const std::vector<std::vector<const char*>> bad = {
      {"--engine1", "a"},
      {"--engine1", "a", "--engine2", "b", "--rule", "3"},
      {"--engine1", "a", "--engine2", "b", "--size", "23"},
      {"--engine1", "a", "--engine2", "b", "--games", "0"},
      {"--engine1", "a", "--engine2", "b", "--turn-ms", "10x"},
      {"--engine1", "a", "--engine2", "b", "--width", "20"},
      {"--engine1", "a", "--engine2", "b", "--bogus", "1"},
      {"--engine1", "a", "--engine2", "b", "--games"},
  };
  for (const auto& args : bad) {
    Options o;
    EXPECT_NE(parse(args, o), "") << args.back();
  }
  Options help;
  EXPECT_EQ(parse({"--help"}, help), "");
  EXPECT_TRUE(help.help);
}

}  // namespace
}  // namespace zorva::referee
