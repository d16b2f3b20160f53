// The opening-rule steps on the real engine binary: the fixed openings, the
// Soosorv check, and the Swap2 decisions within their budget and at once
// after zvstop.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "protocol/engine_session.h"

namespace zorva::testing {
namespace {

#ifdef ZORVA_SANITIZED
constexpr int kSlack = 10;
#else
constexpr int kSlack = 1;
#endif

using Lines = std::vector<std::string>;

std::vector<std::string> readLines(EngineSession& engine, int count) {
  std::vector<std::string> lines;
  for (int i = 0; i < count; ++i) lines.push_back(engine.readLine(5000 * kSlack).value_or("(none)"));
  return lines;
}

// Stones alternate from black; the greeting and OK are read.
void setUp(EngineSession& engine, const std::vector<const char*>& stones) {
  engine.send("START 15");
  engine.send("zvboard");
  for (size_t i = 0; i < stones.size(); ++i) engine.send(std::string(stones[i]) + (i % 2 ? ",2" : ",1"));
  engine.send("DONE");
  ASSERT_EQ(readLines(engine, 2), (Lines{"MESSAGE Deep Zorva 0.1.0 :-)", "OK"}));
}

// The next line that begins with `prefix`, and when it came.
std::pair<std::string, long long> awaitLine(EngineSession& engine, const std::string& prefix) {
  while (std::optional<std::string> line = engine.readLine(20000 * kSlack))
    if (line->rfind(prefix, 0) == 0) return {*line, nowMs()};
  return {"", nowMs()};
}

// Renju, black and white side by side, black's second stone off to one side: close to even.
const std::vector<const char*> kEvenOpening = {"7,7", "7,8", "9,5"};
const std::vector<const char*> kFiveStones = {"7,7", "7,8", "9,5", "6,6", "8,8"};

TEST(TranscriptOpenings, FixedOpeningsAndTheSoosorvCheck) {
  EngineSession engine;
  const std::set<Lines> rows = {
      {"MESSAGE SWAP2 MOVE1 3 3", "MESSAGE SWAP2 MOVE2 5 2", "MESSAGE SWAP2 MOVE3 7 2"},
      {"MESSAGE SWAP2 MOVE1 3 2", "MESSAGE SWAP2 MOVE2 5 5", "MESSAGE SWAP2 MOVE3 5 4"},
      {"MESSAGE SWAP2 MOVE1 5 5", "MESSAGE SWAP2 MOVE2 8 7", "MESSAGE SWAP2 MOVE3 9 8"},
      {"MESSAGE SWAP2 MOVE1 3 7", "MESSAGE SWAP2 MOVE2 6 7", "MESSAGE SWAP2 MOVE3 8 7"}};
  std::set<Lines> seen;
  for (int i = 0; i < 24; ++i) {
    engine.send("zvswap2step1");
    const Lines row = readLines(engine, 3);
    EXPECT_EQ(rows.count(row), 1u) << row[0] << " | " << row[1] << " | " << row[2];
    seen.insert(row);
  }
  EXPECT_GE(seen.size(), 2u) << "the row is drawn at random";

  engine.send("zvsoosorvstep1");
  EXPECT_EQ(readLines(engine, 3),
            (Lines{"MESSAGE SOOSORV MOVE1 7 7", "MESSAGE SOOSORV MOVE2 6 7", "MESSAGE SOOSORV MOVE3 5 7"}));
  const struct {
    const char* stones;
    const char* answer;
  } openings[] = {
      {"7,7\n7,8\n7,9\n", "MESSAGE SOOSORV SWAP1 YES"},   // a straight line from the centre
      {"7,7\n6,7\n6,8\n", "MESSAGE SOOSORV SWAP1 YES"},   // a tight triangle
      {"7,7\n7,8\n9,9\n", "MESSAGE SOOSORV SWAP1 NO"},
      {"7,7\n8,8\n9,9\n", "MESSAGE SOOSORV SWAP1 NO"},    // the second stone diagonal
      {"7,7\n7,8\n10,10\n", "MESSAGE Illegal opening!"},  // the third too far
      {"7,8\n7,7\n7,9\n", "MESSAGE Illegal opening!"},    // the first not the centre
      {"7,7\n7,8\n", "MESSAGE Illegal opening!"},         // a stone short
  };
  for (const auto& o : openings) {
    engine.send(std::string("zvsoosorvstep2\n") + o.stones + "DONE");
    EXPECT_EQ(engine.readLine(5000 * kSlack).value_or(""), o.answer) << o.stones;
  }
  engine.send("END");
  EXPECT_EQ(engine.waitExit(5000 * kSlack), 0);
}

// The first decision may take a budget for the swap and another for the
// pair; the second one budget. A little more for the last search's poll.
TEST(TranscriptOpenings, Swap2DecisionsKeepTheirBudget) {
  constexpr int kBudget = 1000;
  EngineSession engine;
  engine.send("INFO rule 2");
  engine.send("INFO timeout_turn " + std::to_string(kBudget));
  setUp(engine, kEvenOpening);
  long long sent = nowMs();
  engine.send("zvswap2step2");
  EXPECT_FALSE(awaitLine(engine, "MESSAGE SWAP2 MOVE4").first.empty());
  const auto [fifth, answered] = awaitLine(engine, "MESSAGE SWAP2 MOVE5");
  EXPECT_FALSE(fifth.empty());
  EXPECT_LE(answered - sent, 2 * kBudget + 100 * kSlack);

  setUp(engine, kFiveStones);
  sent = nowMs();
  engine.send("zvswap2step3");
  const auto [swap, decided] = awaitLine(engine, "MESSAGE SWAP2 SWAP2");
  EXPECT_TRUE(swap == "MESSAGE SWAP2 SWAP2 YES" || swap == "MESSAGE SWAP2 SWAP2 NO") << swap;
  EXPECT_LE(decided - sent, kBudget + 100 * kSlack);
  engine.send("END");
  EXPECT_EQ(engine.waitExit(5000 * kSlack), 0);
}

// Without a time limit only zvstop ends them: the pairs are being narrowed
// when it comes, the deepening of the five-stone position still runs.
TEST(TranscriptOpenings, Swap2DecisionsAnswerAtOnceAfterZvstop) {
  EngineSession engine;
  engine.send("INFO rule 2");
  engine.send("INFO max_node -1");
  engine.send("INFO max_depth 5");
  setUp(engine, kEvenOpening);
  engine.send("zvswap2step2");
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  long long sent = nowMs();
  engine.send("zvstop");
  const std::string fourth = awaitLine(engine, "MESSAGE SWAP2 MOVE4").first;
  const auto [fifth, answered] = awaitLine(engine, "MESSAGE SWAP2 MOVE5");
  EXPECT_LT(answered - sent, 100 * kSlack);
  int x = -1, y = -1;
  EXPECT_EQ(std::sscanf(fourth.c_str(), "MESSAGE SWAP2 MOVE4 %d %d", &x, &y), 2) << fourth;
  EXPECT_TRUE(x >= 0 && x < 15 && y >= 0 && y < 15) << fourth;
  EXPECT_EQ(std::sscanf(fifth.c_str(), "MESSAGE SWAP2 MOVE5 %d %d", &x, &y), 2) << fifth;

  engine.send("INFO max_depth 100");
  setUp(engine, kFiveStones);
  engine.send("zvswap2step3");
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  sent = nowMs();
  engine.send("zvstop");
  const auto [swap, decided] = awaitLine(engine, "MESSAGE SWAP2 SWAP2");
  EXPECT_TRUE(swap == "MESSAGE SWAP2 SWAP2 YES" || swap == "MESSAGE SWAP2 SWAP2 NO") << swap;
  EXPECT_LT(decided - sent, 100 * kSlack);
  engine.send("END");
  EXPECT_EQ(engine.waitExit(5000 * kSlack), 0);
}

}  // namespace
}  // namespace zorva::testing
