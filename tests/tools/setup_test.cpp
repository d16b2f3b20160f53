// The match set-up: opening books, the game plan, the command line, and the
// Elo and SPRT arithmetic.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <set>

#include "match/elo.h"
#include "match/openings.h"
#include "match/options.h"
#include "match/sprt.h"

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

Pentanomial penta(int p0, int p1, int p2, int p3, int p4) { return Pentanomial{{p0, p1, p2, p3, p4}}; }

TEST(RefereeSprt, LogLikelihoodRatio) {
  EXPECT_DOUBLE_EQ(expectedScore(0), 0.5);
  EXPECT_NEAR(expectedScore(100), 0.640065, 1e-6);
  EXPECT_NEAR(expectedScore(-100), 1 - expectedScore(100), 1e-12);
  EXPECT_EQ(sprtLlr(penta(0, 0, 0, 0, 0), 0, 5), 0);
  // Mean 3/4, variance (0.125 + prior 0.1875) / 5 = 1/16:
  // LLR = 4 (s1 - 1/2) (3/2 - 1/2 - s1) / (1/8).
  EXPECT_NEAR(sprtLlr(penta(0, 0, 1, 2, 1), 0, 100), 1.61326, 1e-4);
  // Even results speak for H0 when H1 is the stronger; hypotheses symmetric
  // about 0 cannot tell, and mirrored counts with mirrored hypotheses agree.
  EXPECT_LT(sprtLlr(penta(10, 20, 40, 20, 10), 0, 10), 0);
  EXPECT_NEAR(sprtLlr(penta(10, 20, 40, 20, 10), -5, 5), 0, 1e-12);
  EXPECT_NEAR(sprtLlr(penta(3, 9, 20, 14, 6), 0, 5), sprtLlr(penta(6, 14, 20, 9, 3), 0, -5), 1e-12);
  // A run of won pairs has no variance of its own, yet one pair is no proof.
  EXPECT_GT(sprtLlr(penta(0, 0, 0, 0, 1), 0, 100), 0);
  EXPECT_LT(sprtLlr(penta(0, 0, 0, 0, 1), 0, 100), 2.94);
  EXPECT_GT(sprtLlr(penta(0, 0, 0, 0, 4), 0, 100), 2.95);
}

TEST(RefereeSprt, PairsGamesInAnyOrderAndStopsAtABound) {
  auto game = [](int index, int winner) {
    GameResult r;
    r.index = index;
    r.winner = winner;
    return r;
  };
  Sprt sprt({0, 100, 0.05, 0.05});
  EXPECT_NEAR(sprt.lower(), -2.944, 1e-3);
  EXPECT_NEAR(sprt.upper(), 2.944, 1e-3);
  // Engine 1 wins every game, the halves of pairs finishing out of order.
  EXPECT_FALSE(sprt.add(game(1, 0)));
  EXPECT_FALSE(sprt.add(game(2, 0)));
  EXPECT_TRUE(sprt.add(game(0, 0)));
  EXPECT_EQ(sprt.verdict(), SprtVerdict::Inconclusive);
  for (int g = 3; g < 8; ++g) sprt.add(game(g, 0));
  EXPECT_EQ(sprt.verdict(), SprtVerdict::AcceptH1);
  EXPECT_EQ(sprt.progress().rfind("SPRT: games 8 W 8 L 0 D 0 elo +inf +- inf", 0), 0u) << sprt.progress();
  EXPECT_EQ(sprt.conclusion().rfind("SPRT: H1 accepted, LLR ", 0), 0u) << sprt.conclusion();
  // Split pairs: one win and one loss each.
  Sprt even({0, 100, 0.05, 0.05});
  for (int g = 0; g < 12; ++g) even.add(game(g, g % 2));
  EXPECT_EQ(even.verdict(), SprtVerdict::AcceptH0);
  EXPECT_NE(even.progress().find("W 6 L 6 D 0 elo +0.0 +- 0.0"), std::string::npos) << even.progress();
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
  EXPECT_FALSE(square.sprt.has_value());
  Options sprt;
  ASSERT_EQ(parse({"--engine1", "a", "--engine2", "b", "--sprt", "-5", "5", "--games", "9"}, sprt), "");
  EXPECT_EQ(sprt.sprt->elo0, -5);
  EXPECT_EQ(sprt.sprt->alpha, 0.05);
  EXPECT_EQ(sprt.games, 9);
  ASSERT_EQ(parse({"--engine1", "a", "--engine2", "b", "--sprt", "0", "5", "0.1", "0.2"}, sprt), "");
  EXPECT_EQ(sprt.sprt->elo1, 5);
  EXPECT_EQ(sprt.sprt->beta, 0.2);
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
      {"--engine1", "a", "--engine2", "b", "--sprt", "5", "0"},
      {"--engine1", "a", "--engine2", "b", "--sprt", "0", "5", "0.05"},
      {"--engine1", "a", "--engine2", "b", "--sprt", "0", "5", "0", "0.05"},
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
