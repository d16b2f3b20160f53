// The analysis commands on the real engine binary: each job prints its own
// lines, in their formats, and its answer also when stopped by zvstop or by
// the next command; a bad count is refused.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "protocol/engine_session.h"

namespace zorva::testing {
namespace {

// Whether `line` is all of `format` (scanf rules), with `fields` values
// read; the values go to `out`, as many as the format reads numbers.
bool matches(const std::string& line, const char* format, int fields, int* out = nullptr) {
  int v[10] = {}, used = -1;
  long ms = 0;
  char c[2] = {};
  std::string withEnd = std::string(format) + "%n";
  int read = 0;
  if (fields == 8)  // the balance lines: depth, reach, offset, distance, ms, nodes, cell
    read = std::sscanf(line.c_str(), withEnd.c_str(), &v[0], &v[1], &v[2], &v[3], &ms, &v[4], &c[0], &v[5], &used);
  else if (fields == 10)  // with a second cell
    read = std::sscanf(line.c_str(), withEnd.c_str(), &v[0], &v[1], &v[2], &v[3], &ms, &v[4], &c[0], &v[5], &c[1],
                       &v[6], &used);
  else if (fields == 7)  // the ranked lines: rank, depth, value, cell, ms, nodes
    read = std::sscanf(line.c_str(), withEnd.c_str(), &v[0], &v[1], &v[2], &c[0], &v[3], &ms, &v[4], &used);
  else  // the lines of no defence: depth, loss, cell, ms, nodes
    read = std::sscanf(line.c_str(), withEnd.c_str(), &v[0], &v[1], &c[0], &v[2], &ms, &v[3], &used);
  if (out) std::copy(v, v + 3, out);
  return read == fields && used == int(line.size());
}

constexpr char kBalanceDepth[] = "MESSAGE DETAIL DEPTH:%d-%d |VAL%d|:%d TIME:%ldms NODE:%dm [%c,%d]";
constexpr char kBalanceTwoFinal[] = "MESSAGE DETAIL (BALANCE) DEPTH:%d-%d |VAL%d|:%d TIME:%ldms NODE:%dm [%c,%d][%c,%d]";
constexpr char kNBest[] = "MESSAGE DETAIL (NBEST) RANK:%d DEPTH:%d VAL:%d [%c,%d] TIME:%ldms NODE:%dm";
constexpr char kDefend[] = "MESSAGE DETAIL (SearchDefend) RANK:%d DEPTH:%d VAL:%d [%c,%d] TIME:%ldms NODE:%dm";
constexpr char kNoDefence[] = "MESSAGE DETAIL (SearchDefend) NONE DEPTH:%d LOSS:%d [%c,%d] TIME:%ldms NODE:%dm";

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

// Every line until the engine has been quiet for a while. The jobs here end
// in well under a second, so the silence need not grow with the full slack.
std::vector<std::string> readQuiet(EngineSession& engine) {
  constexpr int kQuietMs = kSlack > 1 ? 4500 : 1500;
  std::vector<std::string> lines;
  while (std::optional<std::string> line = engine.readLine(kQuietMs)) lines.push_back(*line);
  return lines;
}

TEST(TranscriptAnalysis, BalanceAnswersWhenStoppedByZvstopOrByTheNextCommand) {
  EngineSession engine;
  engine.send("INFO max_node -1");  // no time limit: only a stop ends the job
  startPosition(engine);
  engine.send("zvbalanceone 5000");
  const std::string progress = readUntil(engine, "MESSAGE DETAIL DEPTH:");
  EXPECT_TRUE(matches(progress, kBalanceDepth, 8)) << progress;
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
  const std::string& final = seen[seen.size() - 3];
  EXPECT_TRUE(matches(final, kBalanceTwoFinal, 10)) << final;
  EXPECT_NE(final.find("|VAL+0|"), std::string::npos) << "no offset is 0: " << final;
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
  for (int i = 0; i < 4; ++i) {
    int rank[3];
    const std::string& line = lines[lines.size() - 4 + i];
    ASSERT_TRUE(matches(line, kNBest, 7, rank)) << line;
    EXPECT_EQ(rank[0], i + 1);
  }
  engine.send("zvsearchdefend");
  lines = readQuiet(engine);
  ASSERT_FALSE(lines.empty());
  for (const std::string& line : lines) EXPECT_TRUE(matches(line, kDefend, 7) || matches(line, kNoDefence, 6)) << line;
  engine.send("END");
  EXPECT_EQ(engine.waitExit(5000 * kSlack), 0);
}

TEST(TranscriptAnalysis, NBestAndSearchDefendAnswerWhenStopped) {
  EngineSession engine;
  engine.send("INFO max_node -1");
  startPosition(engine);
  for (const char* job : {"zvnbest 2", "zvsearchdefend"}) {
    engine.send(job);
    readUntil(engine, "MESSAGE DETAIL (");
    engine.send("zvstop");
    const std::vector<std::string> lines = readQuiet(engine);
    ASSERT_FALSE(lines.empty()) << job;
    const std::string& last = lines.back();
    EXPECT_TRUE(matches(last, kNBest, 7) || matches(last, kDefend, 7) || matches(last, kNoDefence, 6)) << last;
  }
  engine.send("END");
  EXPECT_EQ(engine.waitExit(5000 * kSlack), 0);
}

}  // namespace
}  // namespace zorva::testing
