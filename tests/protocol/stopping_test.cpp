// Stopping a think: zvstop answers at once, END ends the program at once, and
// a stream of position commands during thinking and pondering never hangs.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include "protocol/engine_session.h"

namespace zorva::testing {
namespace {

void startEndlessThink(EngineSession& engine) {
  engine.send("INFO max_node -1");  // no time limit: only a stop ends the think
  engine.send("START 15");
  ASSERT_EQ(engine.readLine(5000).value_or(""), "MESSAGE Deep Zorva 0.1.0 :-)");
  ASSERT_EQ(engine.readLine(5000).value_or(""), "OK");
  engine.send("TURN 7,7");
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
}

TEST(Transcript, ZvstopAnswersAtOnce) {
  EngineSession engine;
  startEndlessThink(engine);
  const long long sent = nowMs();
  engine.send("zvstop");
  const std::optional<std::string> move = engine.readAnswer(5000);
  const long long latency = nowMs() - sent;
  ASSERT_TRUE(move.has_value());
  EXPECT_NE(move->find(','), std::string::npos) << *move;
  EXPECT_LT(latency, 50 * kSlack);
  engine.send("END");
  EXPECT_EQ(engine.waitExit(5000), 0);
}

TEST(Transcript, EndDuringAThinkEndsTheProgramAtOnce) {
  EngineSession engine;
  startEndlessThink(engine);
  const long long sent = nowMs();
  engine.send("END");
  EXPECT_EQ(engine.waitExit(5000), 0);
  EXPECT_LT(nowMs() - sent, 100 * kSlack);
}

TEST(Transcript, PositionCommandsDuringThinkingAndPondering) {
  EngineSession engine;
  engine.send("INFO pondering 1");
  engine.send("INFO timeout_turn 300");
  engine.send("INFO thread_num 3");  // stops must reach the helper threads too
  engine.send("INFO thread_split_depth 2");
  for (int round = 0; round < 40; ++round) {
    engine.send(round % 5 == 0 ? "START 15" : round % 5 == 1 ? "RESTART" : "BEGIN");
    engine.send("TURN " + std::to_string(round % 15) + "," + std::to_string((round * 7) % 15));
    engine.send("TAKEBACK " + std::to_string(round % 15) + "," + std::to_string((round * 7) % 15));
    if (round % 3 == 0) std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  engine.send("ABOUT");
  bool about = false;
  while (std::optional<std::string> line = engine.readLine(20000 * kSlack))
    if (line->rfind("name=\"Zorva\"", 0) == 0) {
      about = true;
      break;
    }
  EXPECT_TRUE(about) << "the engine stopped answering";
  engine.send("END");
  EXPECT_EQ(engine.waitExit(5000 * kSlack), 0);
}

// Reads a turn's lines up to its move.
std::vector<std::string> turnLines(EngineSession& engine) { return engine.readTurn(60000 * kSlack); }

int depthOfDetail(const std::string& line) {
  int depth = 0;
  return std::sscanf(line.c_str(), "MESSAGE DETAIL DEPTH:%d", &depth) == 1 ? depth : -1;
}

TEST(Transcript, ProgressLinesFollowTheDepthsAndStaySilentWhilePondering) {
  EngineSession engine;
  for (const char* line : {"INFO show_detail 1", "INFO max_depth 9", "INFO thread_num 2", "INFO thread_split_depth 3",
                           "START 15"})
    engine.send(line);
  ASSERT_EQ(engine.readAnswer(5000 * kSlack).value_or(""), "OK");
  for (const char* line : {"BOARD", "7,7,1", "8,8,2", "7,8,1", "DONE"}) engine.send(line);
  const std::vector<std::string> lines = turnLines(engine);
  std::vector<int> details;
  int refreshes = 0;
  for (const std::string& line : lines) {
    if (depthOfDetail(line) >= 0) details.push_back(depthOfDetail(line));
    refreshes += line == "MESSAGE REALTIME REFRESH";
  }
  ASSERT_FALSE(details.empty()) << "no DETAIL line";
  EXPECT_EQ(details.front(), 5) << "nothing below depth 5";
  for (size_t i = 1; i < details.size(); ++i) EXPECT_EQ(details[i], details[i - 1] + 1);
  EXPECT_EQ(refreshes, std::max(0, details.back() - 7)) << "one REALTIME round per depth from 8";
  EXPECT_NE(lines.back().find(','), std::string::npos) << "the move ends the turn";

  engine.send("INFO pondering 1");
  engine.send("INFO max_depth 30");
  engine.send("INFO timeout_turn 1000");
  engine.send("TURN 6,6");
  const std::vector<std::string> second = turnLines(engine);
  const auto start = nowMs();
  while (nowMs() - start < 500)
    if (std::optional<std::string> line = engine.readLine(100)) {
      EXPECT_EQ(line->find("REALTIME"), std::string::npos) << "while pondering: " << *line;
    }
  engine.send("END");
  EXPECT_EQ(engine.waitExit(5000 * kSlack), 0);
}

}  // namespace
}  // namespace zorva::testing
