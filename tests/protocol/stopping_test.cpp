// Stopping a think: zvstop answers at once, END ends the program at once, and
// a stream of position commands during thinking and pondering never hangs.
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

#include "protocol/engine_session.h"

namespace zorva::testing {
namespace {

// Sanitizers slow the engine several times over; the limits are for the real build.
#ifdef ZORVA_SANITIZED
constexpr int kSlack = 10;
#else
constexpr int kSlack = 1;
#endif

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

}  // namespace
}  // namespace zorva::testing
