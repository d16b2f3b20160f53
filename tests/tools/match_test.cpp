// The game loop against a scripted stand-in engine: one test per kind of
// verdict, the protocol a manager owes its engines, the early stop of a test
// run and the positions written for tuning.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>

#include <unistd.h>

#include "match/match.h"
#include "match/positions.h"
#include "match/report.h"
#include "match/sprt.h"

namespace zorva::referee {
namespace {

std::string fake(const std::string& args = "") { return std::string(ZORVA_FAKE_ENGINE) + " " + args; }

MatchConfig configFor(const std::string& args1, const std::string& args2) {
  MatchConfig c;
  c.command[0] = fake(args1);
  c.command[1] = fake(args2);
  c.startMs = 3000;
  c.endMs = 200;
  return c;
}

Opening opening(const std::string& text, int width = 15, int height = 15) {
  Opening o;
  std::string error;
  EXPECT_TRUE(parseOpening(text, width, height, o, error)) << error;
  return o;
}

// A log file for the stand-in engine, unique to this process, gone afterwards.
struct TempLog {
  explicit TempLog(const std::string& name)
      : path(::testing::TempDir() + "zorva_fake_" + name + "_" + std::to_string(getpid()) + ".log") {
    std::remove(path.c_str());
  }
  ~TempLog() { std::remove(path.c_str()); }
  std::string path;
};

std::vector<std::string> readLog(const std::string& path) {
  std::ifstream in(path);
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// The log from the first line equal to `from` on, `count` lines.
std::vector<std::string> slice(const std::vector<std::string>& log, const std::string& from, size_t count) {
  auto it = std::find(log.begin(), log.end(), from);
  std::vector<std::string> out(it, log.end());
  if (out.size() > count) out.resize(count);
  return out;
}

double secondsSince(std::chrono::steady_clock::time_point t) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - t).count();
}

TEST(RefereeGame, FiveWinsAndEachEngineHearsTheGameAsAManagerTellsIt) {
  TempLog log1("five1"), log2("five2");
  MatchConfig c = configFor("--moves '7,0 7,1 7,2 7,3 7,4' --log " + log1.path,
                            "--moves '10,0 10,2 10,4 10,6 10,8' --chatter 1 --log " + log2.path);
  c.matchMs = 10000;
  // Three opening stones: white, engine 2 here, moves first.
  GameResult r = playGame(c, opening("a1b1c1"), 0, 0);
  EXPECT_EQ(r.winner, 0);
  EXPECT_EQ(r.reason, Reason::Five);
  EXPECT_EQ(cellsName(r.moves), "k1h1k3h2k5h3k7h4k9h5");
  EXPECT_EQ(r.movesPlayed[0], 5);
  EXPECT_EQ(r.movesPlayed[1], 5);

  auto white = readLog(log2.path);
  ASSERT_GE(white.size(), 12u);
  EXPECT_EQ(std::vector<std::string>(white.begin(), white.begin() + 11),
            (std::vector<std::string>{"START 15", "INFO timeout_turn 1000", "INFO timeout_match 10000",
                                      "INFO time_increment 0", "INFO rule 0", "INFO time_left 10000", "BOARD",
                                      "0,0,2", "1,0,1", "2,0,2", "DONE"}));
  EXPECT_EQ(slice(white, "TURN 7,0", 1).size(), 1u);
  EXPECT_EQ(white.back(), "END");
  auto black = readLog(log1.path);
  // Black's first view: the opening and white's reply, its own stones as 1.
  EXPECT_EQ(slice(black, "BOARD", 6),
            (std::vector<std::string>{"BOARD", "0,0,1", "1,0,2", "2,0,1", "10,0,2", "DONE"}));
  auto turn = std::find(black.begin(), black.end(), "TURN 10,2");
  ASSERT_NE(turn, black.end());
  EXPECT_EQ(turn[-1].rfind("INFO time_left ", 0), 0u);
  EXPECT_EQ(black.back(), "END");
}

// Engine 1 is the plan's black (A), engine 2 answers the second step (B).
TEST(RefereeGame, Swap2AnswersSetTheOpeningAndTheColours) {
  const struct {
    const char* book;
    const char* answersA;
    const char* answersB;
    const char* stones;
    int black;
  } cases[] = {
      {"", "", "--swap2 x/stay/x", "d4f3h3", 0},
      {"", "", "--swap2 x/swap/x", "d4f3h3", 1},
      {"", "--swap2 '3,3 5,2 7,2/x/swap'", "--swap2 \"x/9,9 10,10/x\"", "d4f3h3j10k11", 0},
      {"a1b1c1d1", "--swap2 '3,3 5,2 7,2/x/stay'", "--swap2 \"x/9,9 10,10/x\"", "a1b1c1j10k11", 1},
  };
  for (const auto& c : cases) {
    TempLog logA("swap2a"), logB("swap2b");
    MatchConfig config = configFor(std::string(c.answersA) + " --log " + logA.path,
                                   std::string(c.answersB) + " --log " + logB.path);
    config.swap2 = true;
    GameResult r = playGame(config, opening(c.book), 0, 0);
    EXPECT_EQ(cellsName(r.opening.stones), c.stones) << c.answersB;
    EXPECT_EQ(r.black, c.black) << c.answersB;
    EXPECT_NE(r.reason, Reason::Garbage) << r.detail;
    const std::vector<std::string> a = readLog(logA.path), b = readLog(logB.path);
    EXPECT_EQ(std::count(a.begin(), a.end(), "zvswap2step1"), *c.book ? 0 : 1) << c.answersB;
    EXPECT_EQ(std::count(a.begin(), a.end(), "zvswap2step3"), r.opening.stones.size() == 5 ? 1 : 0);
    // B hears the three stones from white's side, then starts over for the game.
    const std::string first = cellsName(r.opening.stones).substr(0, 2) == "d4" ? "3,3,2" : "0,0,2";
    EXPECT_EQ(slice(b, "zvboard", 2), (std::vector<std::string>{"zvboard", first}));
    EXPECT_EQ(slice(b, "zvswap2step2", 2), (std::vector<std::string>{"zvswap2step2", "RESTART"}));
  }
  // A fourth stone on a stone loses for B before the game begins.
  MatchConfig config = configFor("", "--swap2 \"x/3,3 10,10/x\"");
  config.swap2 = true;
  GameResult r = playGame(config, Opening{}, 0, 0);
  EXPECT_EQ(r.winner, 0);
  EXPECT_EQ(r.reason, Reason::Occupied);
  EXPECT_TRUE(r.moves.empty());
}

TEST(RefereeGame, IllegalAnswersLose) {
  const std::pair<const char*, Reason> cases[] = {
      {"occupied", Reason::Occupied}, {"offboard", Reason::OffBoard}, {"garbage", Reason::Garbage}};
  for (auto [action, reason] : cases) {
    GameResult r = playGame(configFor("", std::string("--at 2:") + action), Opening{}, 0, 0);
    EXPECT_EQ(r.winner, 0) << action;
    EXPECT_EQ(r.reason, reason) << action;
    EXPECT_EQ(r.moves.size(), 3u) << action;  // the illegal answer is not a move
  }
}

TEST(RefereeGame, ForbiddenMoveLosesForBlackUnderRenjuOnly) {
  MatchConfig c = configFor("--moves '7,5 5,7 7,6 6,7 7,7'", "--moves '0,0 0,2 0,4 0,6 0,8'");
  c.rule = Rule::Renju;
  GameResult r = playGame(c, Opening{}, 0, 0);
  EXPECT_EQ(r.winner, 1);
  EXPECT_EQ(r.reason, Reason::Forbidden);
  EXPECT_NE(r.detail.find("double three"), std::string::npos) << r.detail;
  ASSERT_FALSE(r.moves.empty());
  EXPECT_EQ(r.moves.back(), (Cell{7, 7}));
  // The same double three by white is an ordinary move and the game goes on.
  MatchConfig w = configFor("--moves '0,0 0,2 0,4 0,6 0,8'", "--moves '7,5 5,7 7,6 6,7 7,7'");
  w.rule = Rule::Renju;
  GameResult rw = playGame(w, Opening{}, 0, 0);
  auto at = std::find(rw.moves.begin(), rw.moves.end(), Cell{7, 7});
  ASSERT_NE(at, rw.moves.end());
  EXPECT_EQ(at - rw.moves.begin(), 9);
  EXPECT_GT(rw.moves.size(), 10u);
}

TEST(RefereeGame, TimeForfeits) {
  auto start = std::chrono::steady_clock::now();
  MatchConfig slow = configFor("", "--at 2:sleep=700");
  slow.turnMs = 200;
  GameResult r = playGame(slow, Opening{}, 0, 0);
  EXPECT_EQ(r.winner, 0);
  EXPECT_EQ(r.reason, Reason::TurnTime);
  EXPECT_GE(r.maxLatencyMs[1], 200);

  // A hung engine is given up on at the limit and killed.
  MatchConfig hung = configFor("--at 1:hang", "");
  hung.turnMs = 200;
  r = playGame(hung, Opening{}, 0, 0);
  EXPECT_EQ(r.winner, 1);
  EXPECT_EQ(r.reason, Reason::TurnTime);

  // Within the tolerance is in time.
  MatchConfig late = configFor("", "--at 1:sleep=250 --moves '14,14'");
  late.turnMs = 200;
  late.toleranceMs = 400;
  r = playGame(late, Opening{}, 0, 0);
  EXPECT_NE(r.reason, Reason::TurnTime);
  EXPECT_GT(r.moves.size(), 2u);

  // 200 ms a move on a 450 ms match clock: 250 ms left after the first move,
  // 50 after the second, so the third is due 100 ms after it is asked for.
  TempLog log("clock");
  MatchConfig clock = configFor("", "--delay-ms 200 --log " + log.path);
  clock.matchMs = 450;
  r = playGame(clock, Opening{}, 0, 0);
  EXPECT_EQ(r.winner, 0);
  EXPECT_EQ(r.reason, Reason::MatchTime);
  EXPECT_EQ(r.movesPlayed[1], 2);
  std::vector<int> left;
  for (const std::string& line : readLog(log.path))
    if (line.rfind("INFO time_left ", 0) == 0) left.push_back(std::stoi(line.substr(15)));
  ASSERT_EQ(left.size(), 3u);
  EXPECT_EQ(left[0], 450);
  EXPECT_LE(left[1], 250);
  EXPECT_LT(left[2], left[1]);
  EXPECT_LT(secondsSince(start), 5.0);
}

TEST(RefereeGame, CrashesAndEnginesThatHangAtStartOrEnd) {
  auto start = std::chrono::steady_clock::now();
  GameResult r = playGame(configFor("", "--at 2:crash"), Opening{}, 0, 0);
  EXPECT_EQ(r.winner, 0);
  EXPECT_EQ(r.reason, Reason::Crash);
  EXPECT_NE(r.detail.find("exit 3"), std::string::npos) << r.detail;

  for (const char* how : {"crash", "error", "hang"}) {
    MatchConfig c = configFor("", std::string("--start ") + how);
    c.startMs = 300;
    r = playGame(c, Opening{}, 1, 0);
    EXPECT_EQ(r.winner, 0) << how;
    EXPECT_EQ(r.reason, Reason::NoStart) << how;
    EXPECT_TRUE(r.moves.empty());
  }
  MatchConfig both = configFor("--start hang", "--start hang");
  both.startMs = 300;
  r = playGame(both, Opening{}, 0, 0);
  EXPECT_EQ(r.winner, -1);
  EXPECT_EQ(r.reason, Reason::NoStart);

  // An engine that ignores END is killed after the grace period; the game
  // keeps its result.
  MatchConfig stubborn = configFor("--moves '7,0 7,1 7,2 7,3 7,4' --end hang", "--moves '9,0 9,2 9,4 9,6'");
  stubborn.endMs = 200;
  r = playGame(stubborn, Opening{}, 0, 0);
  EXPECT_EQ(r.winner, 0);
  EXPECT_EQ(r.reason, Reason::Five);
  EXPECT_LT(secondsSince(start), 5.0);
}

TEST(RefereeGame, FullRectangularBoardIsADraw) {
  TempLog log("rect");
  MatchConfig c = configFor("--log " + log.path, "");
  c.rectangular = true;
  c.width = 4;
  c.height = 3;
  GameResult r = playGame(c, Opening{}, 0, 0);
  EXPECT_EQ(r.winner, -1);
  EXPECT_EQ(r.reason, Reason::BoardFull);
  EXPECT_EQ(r.moves.size(), 12u);
  EXPECT_EQ(readLog(log.path).front(), "RECTSTART 4,3");
}

TEST(RefereeGame, ColoursAlternateOverAPairAndTheTallyFollows) {
  // Both engines fill the first free cell in row order, so black always wins
  // (along the anti-diagonal from a5).
  MatchConfig c = configFor("", "");
  std::vector<Opening> book = {opening("")};
  int reported = 0;
  auto results = runMatch(c, book, planGames(4, 1, nullptr), 2, [&](const GameResult&) { return ++reported > 0; });
  ASSERT_EQ(results.size(), 4u);
  EXPECT_EQ(reported, 4);
  for (int g = 0; g < 4; ++g) {
    EXPECT_EQ(results[g].index, g);
    EXPECT_EQ(results[g].black, g % 2);
    EXPECT_EQ(results[g].winner, g % 2);
    EXPECT_EQ(results[g].reason, Reason::Five);
    EXPECT_EQ(results[g].moves.back(), (Cell{4, 0}));
  }
  Tally t = tally(results);
  EXPECT_EQ(t.engine[0].wins, 2);
  EXPECT_EQ(t.engine[0].losses, 2);
  EXPECT_EQ(t.engine[0].blackWins, 2);
  EXPECT_EQ(t.engine[1].lostBy[int(Reason::Five)], 2);
  std::string line = formatGame(c, results[1]);
  EXPECT_NE(line.find("game 2: engine2 (black) vs engine1 (white)"), std::string::npos) << line;
  EXPECT_NE(line.find("1-0 five in a row"), std::string::npos) << line;
  EXPECT_NE(formatSummary(c, t).find("wins 2, losses 2, draws 0; score 2.0/4"), std::string::npos);
}

TEST(RefereeGame, SprtStopsTheMatchAndEveryEngineGetsEnd) {
  // Engine 2 answers nonsense at its third move, so engine 1 wins every pair.
  TempLog log1("sprt1"), log2("sprt2");
  MatchConfig c = configFor("--delay-ms 20 --log " + log1.path, "--delay-ms 20 --at 3:garbage --log " + log2.path);
  Sprt sprt({0, 100, 0.05, 0.05});
  std::vector<std::string> progress;
  auto results = runMatch(c, {}, planGames(40, 0, nullptr), 2, [&](const GameResult& r) {
    if (!sprt.add(r)) return true;
    progress.push_back(sprt.progress());
    return sprt.verdict() == SprtVerdict::Inconclusive;
  });
  EXPECT_EQ(sprt.verdict(), SprtVerdict::AcceptH1);
  ASSERT_EQ(progress.size(), 4u);
  EXPECT_EQ(progress.back().rfind("SPRT: games 8 W 8 L 0 D 0", 0), 0u) << progress.back();
  // The games in progress were abandoned, not counted; none finished twice.
  EXPECT_GE(results.size(), 8u);
  EXPECT_LE(results.size(), 10u);
  for (size_t g = 1; g < results.size(); ++g) EXPECT_LT(results[g - 1].index, results[g].index);
  for (const std::string& path : {log1.path, log2.path}) {
    auto log = readLog(path);
    EXPECT_EQ(std::count(log.begin(), log.end(), "START 15"), std::count(log.begin(), log.end(), "END")) << path;
  }
}

TEST(RefereeGame, PositionsFileLabelsEachPositionForTheSideToMove) {
  GameResult r;
  r.opening = opening("h8");
  r.moves = {{8, 8}, {7, 8}};
  r.black = 1;   // engine 2 black
  r.winner = 0;  // white won
  r.reason = Reason::Five;
  EXPECT_EQ(formatPositions(Rule::Renju, r), "h8 1 2\nh8i9 0 2\nh8i9h9 1 2\n");
  // A forbidden move never reached the board; an empty start reads "-".
  r.opening = {};
  r.reason = Reason::Forbidden;
  EXPECT_EQ(formatPositions(Rule::Freestyle, r), "- 0 0\ni9 1 0\n");
  r.winner = -1;
  r.reason = Reason::BoardFull;
  EXPECT_EQ(formatPositions(Rule::ExactFive, r), "- 0.5 1\ni9 0.5 1\ni9h9 0.5 1\n");
  r.reason = Reason::NoStart;
  EXPECT_EQ(formatPositions(Rule::Freestyle, r), "");
}

}  // namespace
}  // namespace zorva::referee
