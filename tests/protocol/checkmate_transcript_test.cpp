// Checkmate mode on the real engine binary: every level's think runs the
// solver's driver, not the turn's (no draw judged, no stop on a stable
// move), the empty board needs no search, a proven win ends the deepening
// at its depth, and a stop drops an iteration that found nothing.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "protocol/engine_session.h"

namespace zorva::testing {
namespace {

// A position as a BOARD command: two-letter cells ("hc" is row 7, column
// 2), black's and white's stones alternately, the side to move's marked 1.
void sendBoard(EngineSession& engine, const std::string& black, const std::string& white) {
  const bool blackToMove = black.size() == white.size();
  engine.send("BOARD");
  auto stone = [&](const std::string& cells, size_t i, bool own) {
    if (i + 1 < cells.size())
      engine.send(std::to_string(cells[i] - 'a') + "," + std::to_string(cells[i + 1] - 'a') + (own ? ",1" : ",2"));
  };
  for (size_t i = 0; i < std::max(black.size(), white.size()); i += 2) {
    stone(black, i, blackToMove);
    stone(white, i, !blackToMove);
  }
  engine.send("DONE");
}

// The lines up to and with the move.
std::vector<std::string> untilMove(EngineSession& engine) { return engine.readTurn(20000 * kSlack); }

// The depth and value of the one-line summary, "MESSAGE %d | %d | %ldms | %ld | %d %s".
struct Summary {
  int depth = -1;
  int value = 0;
};
Summary summaryOf(const std::vector<std::string>& lines) {
  Summary s;
  for (const std::string& line : lines) {
    int reach;
    long ms, speed;
    if (std::sscanf(line.c_str(), "MESSAGE %d | %d | %ldms | %ld | %d", &s.depth, &reach, &ms, &speed, &s.value) == 5)
      return s;
  }
  return {};
}

// A new game: its greeting, then OK.
void restart(EngineSession& engine) {
  engine.send("RESTART");
  while (std::optional<std::string> line = engine.readLine(5000 * kSlack))
    if (*line == "OK") return;
  ADD_FAILURE() << "no OK after RESTART";
}

void start(EngineSession& engine) {
  engine.send("START 15");
  ASSERT_EQ(engine.readLine(5000 * kSlack).value_or(""), "MESSAGE Deep Zorva 0.1.0 :-)");
  ASSERT_EQ(engine.readLine(5000 * kSlack).value_or(""), "OK");
}

// Black, to move, wins by two threes before its fours (the moves hh, hi, ih
// and di start it); the engine, white, is lost in the other position, and
// its normal turn then accepts a draw.
constexpr char kWinBlack[] = "ejfgfkghhh";
constexpr char kWinWhite[] = "dgdkfifjgi";
constexpr char kLostBlack[] = "fffkhlhmlkllml";
constexpr char kLostWhite[] = "figggjgkhhikjj";

TEST(TranscriptCheckmate, EveryLevelProvesTheWinAtItsDepthAndRefusesADraw) {
  EngineSession engine;
  start(engine);
  engine.send("INFO timeout_turn 5000");
  engine.send("INFO thread_num 4");  // the solver runs beside idle helper threads
  for (const int level : {1, 2, 3, 4, 9}) {
    engine.send("INFO checkmate 0");
    restart(engine);
    sendBoard(engine, kLostBlack, kLostWhite);
    untilMove(engine);
    engine.send("zvdraw");
    ASSERT_EQ(engine.readLine(5000 * kSlack).value_or(""), "MESSAGE DRAW ACCEPT") << "the normal turn judged a draw";

    engine.send("INFO checkmate " + std::to_string(level));
    restart(engine);
    sendBoard(engine, kWinBlack, kWinWhite);
    const std::vector<std::string> lines = untilMove(engine);
    ASSERT_FALSE(lines.empty());
    const Summary s = summaryOf(lines);
    EXPECT_EQ(s.depth, 2) << "level " << level << ": two threes, proven at depth 2 and no deeper";
    EXPECT_EQ(s.value, 10000) << "level " << level;
    EXPECT_TRUE(lines.back() == "7,7" || lines.back() == "7,8" || lines.back() == "8,7" || lines.back() == "3,8")
        << "level " << level << " plays " << lines.back();
    engine.send("zvdraw");
    EXPECT_EQ(engine.readLine(5000 * kSlack).value_or(""), "MESSAGE DRAW REJECT") << "level " << level;
  }
  engine.send("END");
  EXPECT_EQ(engine.waitExit(5000 * kSlack), 0);
}

TEST(TranscriptCheckmate, EmptyBoardGivesTheCentreWithoutASearch) {
  EngineSession engine;
  start(engine);
  engine.send("INFO checkmate 3");
  engine.send("INFO show_detail 1");
  engine.send("BEGIN");
  const std::vector<std::string> lines = untilMove(engine);
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines.back(), "7,7");
  // The elapsed time is the wall clock's: a loaded machine may show a millisecond.
  EXPECT_EQ(lines.front().substr(0, 27), "MESSAGE Depth: 0-0 | Time: ") << "no depth searched";
  EXPECT_TRUE(lines.front().ends_with("ms | Node: 0m")) << lines.front();
  engine.send("END");
  EXPECT_EQ(engine.waitExit(5000 * kSlack), 0);
}

TEST(TranscriptCheckmate, AStopDropsTheIterationThatFoundNothing) {
  EngineSession engine;
  start(engine);
  engine.send("INFO max_node -1");  // no time limit: only the stop ends the think
  engine.send("INFO show_detail 1");
  engine.send("INFO checkmate 4");
  // White has defences here and no win; level 4's iterations grow fast.
  sendBoard(engine, "ejfgfkfmghhh", kWinWhite);
  std::this_thread::sleep_for(std::chrono::milliseconds(500 * kSlack));
  engine.send("zvstop");
  const std::vector<std::string> lines = untilMove(engine);
  ASSERT_FALSE(lines.empty());
  int depth = -1, reach;
  for (const std::string& line : lines) {
    EXPECT_EQ(line.find("* VAL"), std::string::npos) << "an iteration without a value is not reported: " << line;
    std::sscanf(line.c_str(), "MESSAGE Depth: %d-%d", &depth, &reach);
  }
  EXPECT_GE(depth, 1) << "the iterations done count";
  EXPECT_NE(lines.back().find(','), std::string::npos) << lines.back();
  engine.send("END");
  EXPECT_EQ(engine.waitExit(5000 * kSlack), 0);
}

}  // namespace
}  // namespace zorva::testing
