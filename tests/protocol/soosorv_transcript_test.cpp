// The Soosorv steps after the opening on the real engine binary: the counts
// and values of a database built here, every refusal, and the fifth-move
// offers and choice by search, within their budget and at once after zvstop.
#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "protocol/engine_process.h"
#include "protocol/engine_session.h"

namespace zorva::testing {
namespace {

using Lines = std::vector<std::string>;

constexpr char kNoFourth[] = "MESSAGE SOOSORV no fourth move in the database";
constexpr char kIllegalSet[] = "MESSAGE Illegal 5-move set";
constexpr char kIllegalSequence[] = "MESSAGE Illegal move sequence!";

// A command, its "x,y" lines and DONE.
std::string body(const std::string& command, const std::vector<std::string>& cells) {
  std::string text = command + "\n";
  for (const std::string& c : cells) text += c + "\n";
  return text + "DONE\n";
}

std::vector<std::string> plus(std::vector<std::string> cells, const std::string& cell) {
  cells.push_back(cell);
  return cells;
}

// No symmetry maps these stones onto themselves, so every cell is its own position.
const std::vector<std::string> kOpening = {"7,7", "6,8", "9,6"};
const std::vector<std::string> kFour = {"7,7", "6,8", "9,6", "8,8"};

std::string tempDatabase(const char* tag) {
  return "/tmp/zorva-e2e-soosorv-" + std::string(tag) + std::to_string(getpid());
}

void removeDatabase(const std::string& path) {
  std::remove(path.c_str());
  std::remove((path + ".bak").c_str());
}

TEST(TranscriptSoosorv, BookStepsReadTheCounts) {
  const std::string path = tempDatabase("counts");
  removeDatabase(path);
  std::string input = "START 15\nzvsetdatabase\n" + path + "\n";
  // Off: both steps read their bodies and say nothing.
  input += body("zvsoosorvstep3", kOpening) + body("zvsoosorvstep4 3", plus(kOpening, "4,4"));
  input += "INFO usedatabase 1\n" + body("zvsoosorvstep3", kOpening);
  input += body("zvsoosorvstep3", std::vector<std::string>(500, "1,1"));  // more stones than any board holds
  // "x" is no digit: it counts 0.
  const std::pair<const char*, const char*> counted[] = {{"4,4", "5"}, {"8,9", "3"}, {"10,10", "5"}, {"11,11", "x"}};
  for (const auto& [cell, message] : counted)
    input += body(std::string("zveditrawmsgdatabase ") + message, plus(kOpening, cell));
  input += body("zvedittvddatabase 2 0 35 0", plus(kOpening, "12,12"));  // a record without a message
  input += body("zvsoosorvstep3", kOpening);
  input += body("zvsoosorvstep4 5", plus(kOpening, "4,4")) + body("zvsoosorvstep4 4", plus(kOpening, "4,4")) +
           body("zvsoosorvstep4 35", plus(kOpening, "11,11")) + body("zvsoosorvstep4 35", plus(kOpening, "3,3")) +
           body("zvsoosorvstep4", plus(kOpening, "4,4"));
  // 32 counted cells ahead of row 4 hide the larger counts after them.
  for (int i = 0; i < 32; ++i)
    input += body("zveditrawmsgdatabase 1", plus(kOpening, std::to_string(i / 15) + "," + std::to_string(i % 15)));
  input += body("zvsoosorvstep3", kOpening) + "END\n";

  const EngineRun run = runEngine(input);
  EXPECT_EQ(run.exitCode, 0);
  Lines answers;
  for (const std::string& line : run.lines)
    if (line.rfind("MESSAGE DATABASE", 0) != 0) answers.push_back(line);
  EXPECT_EQ(answers, (Lines{kGreeting, "OK", kNoFourth, kNoFourth, "MESSAGE SOOSORV MOVE4 4 4 5",
                            "MESSAGE SOOSORV SWAP2 YES", "MESSAGE SOOSORV SWAP2 NO", "MESSAGE SOOSORV SWAP2 YES",
                            "MESSAGE SOOSORV SWAP2 NO",
                            "ERROR zvsoosorvstep4 needs the number of fifth moves offered",
                            "MESSAGE SOOSORV MOVE4 0 0 1"}));
  removeDatabase(path);
}

// Values for the side to move after the fifth stone (white): proven lost for
// black, or searched to a depth. Black offers white's worst, white takes its best.
TEST(TranscriptSoosorv, BookValuesRankOffersAndChoice) {
  const std::string path = tempDatabase("values");
  removeDatabase(path);
  std::string input = "START 15\nzvsetdatabase\n" + path + "\nINFO usedatabase 1\n";
  const std::pair<const char*, const char*> values[] = {
      {"6,6", "7 -1 50 5"}, {"8,6", "7 -1 -30 5"}, {"9,9", "7 -1 10 5"}, {"5,9", "1 108 0 0"}, {"10,7", "2 0 -99 0"}};
  for (const auto& [cell, fields] : values)
    input += body(std::string("zvedittvddatabase ") + fields, plus(kFour, cell));
  input += body("zvsoosorvstep5 2", kFour) + body("zvsoosorvstep6", {"8,6", "9,9", "6,6"}) +
           body("zvsoosorvstep6", {"8,6", "5,9"}) + "END\n";

  const EngineRun run = runEngine(input);
  EXPECT_EQ(run.exitCode, 0);
  Lines answers;
  for (const std::string& line : run.lines)
    if (line.rfind("MESSAGE SOOSORV", 0) == 0) answers.push_back(line);
  EXPECT_EQ(answers, (Lines{"MESSAGE SOOSORV MOVE5 REFRESH", "MESSAGE SOOSORV MOVE5 8 6", "MESSAGE SOOSORV MOVE5 9 9",
                            "MESSAGE SOOSORV MOVE5 DONE", "MESSAGE SOOSORV MOVE5C 6 6", "MESSAGE SOOSORV MOVE5C 5 9"}));
  removeDatabase(path);
}

TEST(TranscriptSoosorv, FifthMoveRefusals) {
  std::string input = "START 15\n";
  for (const char* count : {"zvsoosorvstep5 0", "zvsoosorvstep5 36", "zvsoosorvstep5"})
    input += body(count, kFour);
  const std::vector<std::string> sequences[] = {
      kOpening, plus(kOpening, "7,7"), plus(kOpening, "15,3"), plus(kOpening, "22,0"), plus(kFour, "1,1")};
  for (const auto& stones : sequences) input += body("zvsoosorvstep5 1", stones);
  // Stones on the centre column: a cell and its mirror image give the same position.
  input += "zvboard\n7,7,1\n6,7,2\n5,7,1\nDONE\n" + body("zvsoosorvstep6", {"7,5"});
  input += "zvboard\n8,7,2\nDONE\nzvforbid add 3 3 1\n";
  const std::vector<std::string> offers[] = {{}, {"7,5", "7,5"}, {"7,5", "6,7"}, {"7,5", "15,0"}, {"7,5", "7,9"},
                                             {"3,3"}};
  for (const auto& cells : offers) input += body("zvsoosorvstep6", cells);
  // A 3 x 3 board has five cells left, too few for six offers.
  input += "START 3\n" + body("zvsoosorvstep5 6", {"0,0", "1,1", "0,1", "2,2"}) + "END\n";

  const EngineRun run = runEngine(input);
  EXPECT_EQ(run.exitCode, 0);
  Lines answers;
  for (const std::string& line : run.lines)
    if (line.rfind("MESSAGE Rule", 0) != 0) answers.push_back(line);
  EXPECT_EQ(answers, (Lines{kGreeting, "OK", kIllegalSet, kIllegalSet, kIllegalSet, kIllegalSequence,
                              kIllegalSequence, kIllegalSequence, "ERROR cell [22,0] outside 0..21", kIllegalSequence,
                              kIllegalSequence, kIllegalSequence, kIllegalSet, kIllegalSet, kIllegalSet, kIllegalSet,
                              kIllegalSet, kIllegalSet, kGreeting, "OK", "MESSAGE Unexpected error!"}));
}

// The next line that begins with `prefix`, and when it came.
std::pair<std::string, long long> awaitLine(EngineSession& engine, const std::string& prefix) {
  while (std::optional<std::string> line = engine.readLine(20000 * kSlack))
    if (line->rfind(prefix, 0) == 0) return {*line, nowMs()};
  return {"", nowMs()};
}

// The offers of one zvsoosorvstep5 answer, and when its last line came.
std::pair<std::vector<std::string>, long long> awaitOffers(EngineSession& engine) {
  std::vector<std::string> cells;
  if (awaitLine(engine, "MESSAGE SOOSORV MOVE5 REFRESH").first.empty()) return {cells, nowMs()};
  for (;;) {
    const std::string line = awaitLine(engine, "MESSAGE SOOSORV MOVE5 ").first;
    if (line.empty() || line == "MESSAGE SOOSORV MOVE5 DONE") return {cells, nowMs()};
    int x = -1, y = -1;
    EXPECT_EQ(std::sscanf(line.c_str(), "MESSAGE SOOSORV MOVE5 %d %d", &x, &y), 2) << line;
    cells.push_back(std::to_string(x) + "," + std::to_string(y));
  }
}

void expectOffers(const std::vector<std::string>& offers, size_t count, const std::set<std::string>& barred) {
  EXPECT_EQ(offers.size(), count);
  EXPECT_EQ(std::set<std::string>(offers.begin(), offers.end()).size(), offers.size()) << "offered twice";
  for (const std::string& cell : offers) {
    int x = -1, y = -1;
    EXPECT_EQ(std::sscanf(cell.c_str(), "%d,%d", &x, &y), 2);
    EXPECT_TRUE(x >= 0 && x < 15 && y >= 0 && y < 15) << cell;
    EXPECT_EQ(barred.count(cell), 0u) << cell;
  }
}

// Black may not take the cells declared forbidden for it after the first
// offers, nor an occupied one; white chooses one of the offers.
TEST(TranscriptSoosorv, OffersAndChoiceKeepTheirBudget) {
  constexpr int kBudget = 1000;
  EngineSession engine;
  engine.send("INFO rule 2");
  engine.send("INFO timeout_turn " + std::to_string(kBudget));
  engine.send("START 15");
  const std::set<std::string> stones(kFour.begin(), kFour.end());
  std::string command = body("zvsoosorvstep5 4", kFour);
  command.pop_back();
  long long sent = nowMs();
  engine.send(command);
  auto [first, answered] = awaitOffers(engine);
  expectOffers(first, 4, stones);
  EXPECT_LE(answered - sent, kBudget + 100 * kSlack);
  if (first.size() < 2) return;

  std::set<std::string> barred = stones;
  for (size_t i = 0; i < 2; ++i) {
    barred.insert(first[i]);
    engine.send("zvforbid add " + first[i].substr(0, first[i].find(',')) + " " +
                first[i].substr(first[i].find(',') + 1) + " 1");
  }
  sent = nowMs();
  engine.send(command);
  const auto [second, again] = awaitOffers(engine);
  expectOffers(second, 4, barred);
  EXPECT_LE(again - sent, kBudget + 100 * kSlack);

  command = body("zvsoosorvstep6", second);
  command.pop_back();
  sent = nowMs();
  engine.send(command);
  const auto [choice, chosen] = awaitLine(engine, "MESSAGE SOOSORV MOVE5C");
  int x = -1, y = -1;
  ASSERT_EQ(std::sscanf(choice.c_str(), "MESSAGE SOOSORV MOVE5C %d %d", &x, &y), 2) << choice;
  const std::string cell = std::to_string(x) + "," + std::to_string(y);
  EXPECT_NE(std::find(second.begin(), second.end(), cell), second.end()) << cell;
  EXPECT_LE(chosen - sent, kBudget + 100 * kSlack);
  engine.send("END");
  EXPECT_EQ(engine.waitExit(5000 * kSlack), 0);
}

// Without a time limit only zvstop ends them, with the best found so far.
// The stones lie on the centre column: no offer may be another's mirror image.
TEST(TranscriptSoosorv, OffersAndChoiceAnswerAtOnceAfterZvstop) {
  const std::vector<std::string> column = {"7,7", "6,7", "5,7", "8,7"};
  EngineSession engine;
  engine.send("INFO max_node -1");
  engine.send("START 15");
  std::string command = body("zvsoosorvstep5 6", column);
  command.pop_back();
  engine.send(command);
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  long long sent = nowMs();
  engine.send("zvstop");
  const auto [offers, answered] = awaitOffers(engine);
  expectOffers(offers, 6, std::set<std::string>(column.begin(), column.end()));
  EXPECT_LT(answered - sent, 100 * kSlack);
  for (const std::string& cell : offers) {
    const int x = std::stoi(cell), y = std::stoi(cell.substr(cell.find(',') + 1));
    const std::string mirror = std::to_string(x) + "," + std::to_string(14 - y);
    if (y != 7) {
      EXPECT_EQ(std::count(offers.begin(), offers.end(), mirror), 0) << cell;
    }
  }

  command = body("zvsoosorvstep6", offers);
  command.pop_back();
  engine.send(command);
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  sent = nowMs();
  engine.send("zvstop");
  const auto [choice, chosen] = awaitLine(engine, "MESSAGE SOOSORV MOVE5C");
  EXPECT_FALSE(choice.empty());
  EXPECT_LT(chosen - sent, 100 * kSlack);
  engine.send("END");
  EXPECT_EQ(engine.waitExit(5000 * kSlack), 0);
}

}  // namespace
}  // namespace zorva::testing
