// The analysis commands on the real engine binary: each job prints its own
// lines, in their formats, and its answer also when stopped by zvstop or by
// the next command; a bad count is refused.
#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <vector>

#include "protocol/engine_session.h"

namespace zorva::testing {
namespace {

#ifdef ZORVA_SANITIZED
constexpr int kSlack = 10;
#else
constexpr int kSlack = 1;
#endif

const std::regex kBalanceDepth(R"(MESSAGE DETAIL DEPTH:\d+-\d+ \|VAL[+-]\d+\|:\d+ TIME:\d+ms NODE:\d+m \[[A-O],\d+\])");
const std::regex kBalanceTwoFinal(
    R"(MESSAGE DETAIL \(BALANCE\) DEPTH:\d+-\d+ \|VAL\+0\|:\d+ TIME:\d+ms NODE:\d+m \[[A-O],\d+\]\[[A-O],\d+\])");
const std::regex kNBest(R"(MESSAGE DETAIL \(NBEST\) RANK:(\d+) DEPTH:\d+ VAL:-?\d+ \[[A-O],\d+\] TIME:\d+ms NODE:\d+m)");
const std::regex kDefend(R"(MESSAGE DETAIL \(SearchDefend\) (RANK:\d+|NONE) DEPTH:\d+ .*TIME:\d+ms NODE:\d+m)");

void startPosition(EngineSession& engine) {
  engine.send("START 15");
  engine.send("zvboard");
  for (const char* stone : {"7,7,1", "7,8,2", "8,8,1", "6,6,2"}) engine.send(stone);
  engine.send("DONE");
  ASSERT_EQ(engine.readLine(5000 * kSlack).value_or(""), "MESSAGE Deep Zorva 0.1.0 :-)");
  ASSERT_EQ(engine.readLine(5000 * kSlack).value_or(""), "OK");
}

// Lines until one begins with `prefix` (returned), or none within the time.
std::string readUntil(EngineSession& engine, const std::string& prefix, std::vector<std::string>* seen = nullptr) {
  while (std::optional<std::string> line = engine.readLine(10000 * kSlack)) {
    if (seen) seen->push_back(*line);
    if (line->rfind(prefix, 0) == 0) return *line;
  }
  return "";
}

// Every line until the engine has been quiet for a while.
std::vector<std::string> readQuiet(EngineSession& engine) {
  std::vector<std::string> lines;
  while (std::optional<std::string> line = engine.readLine(1500 * kSlack)) lines.push_back(*line);
  return lines;
}

TEST(TranscriptAnalysis, BalanceAnswersWhenStoppedByZvstopOrByTheNextCommand) {
  EngineSession engine;
  engine.send("INFO max_node -1");  // no time limit: only a stop ends the job
  startPosition(engine);
  engine.send("zvbalanceone 5000");
  const std::string progress = readUntil(engine, "MESSAGE DETAIL DEPTH:");
  EXPECT_TRUE(std::regex_match(progress, kBalanceDepth)) << progress;
  EXPECT_NE(progress.find("|VAL-2000|"), std::string::npos) << "5000 is taken as 2000: " << progress;
  engine.send("zvstop");
  const std::string answer = readUntil(engine, "MESSAGE DETAIL (BALANCE)");
  EXPECT_NE(answer.find("|VAL-2000|"), std::string::npos) << answer;

  engine.send("zvbalancetwo");
  readUntil(engine, "MESSAGE DETAIL DEPTH:");
  engine.send("RESTART");
  std::vector<std::string> seen;
  EXPECT_EQ(readUntil(engine, "OK", &seen), "OK");
  ASSERT_GE(seen.size(), 3u);
  EXPECT_TRUE(std::regex_match(seen[seen.size() - 3], kBalanceTwoFinal)) << seen[seen.size() - 3];
  engine.send("END");
  EXPECT_EQ(engine.waitExit(5000 * kSlack), 0);
}

TEST(TranscriptAnalysis, NBestAndSearchDefendReportTheirLists) {
  EngineSession engine;
  engine.send("INFO max_node -1");
  engine.send("INFO max_depth 3");
  startPosition(engine);
  engine.send("zvnbest 0");
  EXPECT_EQ(engine.readLine(5000 * kSlack).value_or(""), "ERROR zvnbest needs a count of at least 1");
  engine.send("zvnbest 4");
  std::vector<std::string> lines = readQuiet(engine);
  ASSERT_GE(lines.size(), 4u);
  // The answer is the last four lines, ranks 1 to 4.
  for (size_t i = 0; i < 4; ++i) {
    std::smatch rank;
    const std::string& line = lines[lines.size() - 4 + i];
    ASSERT_TRUE(std::regex_match(line, rank, kNBest)) << line;
    EXPECT_EQ(rank[1], std::to_string(i + 1));
  }
  engine.send("zvsearchdefend");
  lines = readQuiet(engine);
  ASSERT_FALSE(lines.empty());
  for (const std::string& line : lines) EXPECT_TRUE(std::regex_match(line, kDefend)) << line;
  engine.send("END");
  EXPECT_EQ(engine.waitExit(5000 * kSlack), 0);
}

}  // namespace
}  // namespace zorva::testing
