// The extended maintenance commands through the real engine binary: block
// table, block paths, forbid declarations, engine info and the hash table
// commands; multi-line bodies never run as commands.
#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "protocol/engine_process.h"
#include "protocol/engine_session.h"

namespace zorva::testing {
namespace {

using Lines = std::vector<std::string>;

const std::string kEmptyUsage = "MESSAGE Hash usage: 0.000000 / 0.000000";

std::string tempPath(const std::string& tag) { return "/tmp/zorva-ext-" + std::to_string(getpid()) + "-" + tag; }

bool isMove(const std::string& line) {
  return line.find(',') != std::string::npos && line.find_first_not_of("0123456789,") == std::string::npos;
}

EngineRun run(const std::string& input) {
  const EngineRun result = runEngine(input);
  EXPECT_FALSE(result.timedOut) << input;
  EXPECT_EQ(result.exitCode, 0) << input;
  return result;
}

// Sends the script a line at a time and collects the output up to the
// first move, so that no later command cuts the search short.
Lines untilMove(const std::string& script) {
  EngineSession engine;
  for (size_t from = 0, end; (end = script.find('\n', from)) != std::string::npos; from = end + 1)
    engine.send(script.substr(from, end - from));
  Lines lines;
  while (std::optional<std::string> line = engine.readLine(20000 * kSlack)) {
    lines.push_back(*line);
    if (isMove(*line)) break;
  }
  engine.send("END");
  EXPECT_EQ(engine.waitExit(10000 * kSlack), 0);
  return lines;
}

Lines withoutReports(const Lines& lines) {
  Lines kept;
  for (const std::string& line : lines)
    if (line != "MESSAGE " && line.rfind("MESSAGE [", 0) != 0 && line.find(" | ") == std::string::npos)
      kept.push_back(line);
  return kept;
}

TEST(TranscriptExtended, RepliesAndSilences) {
  // Black (7,5) (7,6) (5,8) (6,8): (7,8) is a double three; white far away.
  const std::string doubleThree =
      "INFO rule 2\nSTART 15\nzvboard\n7,5,1\n0,0,2\n7,6,1\n0,14,2\n5,8,1\n14,0,2\n6,8,1\n14,14,2\nDONE\n";
  const struct {
    std::string input;
    Lines expected;
  } cases[] = {
      {"zvblock\nDONE\nzvblockundo\nDONE\nzvblockpath\nDONE\nzvblockpathundo\nDONE\nzvblockreset\n"
       "zvblockpathreset\nzvprintfeaturebatch\nEND\n",
       {}},
      {"zvshowinfo\n", {"MESSAGE INFO MAX_THREAD_NUM 8", "MESSAGE INFO MAX_HASH_SIZE 24"}},
      // Every body is read by its own command: none of these lines ends the program or is unknown.
      {"zvhashload\nend\nzvhashdump\nend-of-nothing\nzvblock\n7,7\nDONE\nzvblockpath\n7,7\n8,8\nDONE\n"
       "zvsoosorvstep4 2\n7,7\n8,8\nDONE\nABOUT\n",
       {"MESSAGE Hash table is empty: no game has started; end-of-nothing not written", kAbout}},
      {"zvblock\n7,7\n22,0\n3,-1\nfoo\nABOUT\n",
       {"ERROR cell [22,0] outside 0..21", "ERROR cell [3,-1] outside 0..21", "ERROR x,y or DONE expected", kAbout}},
      // Bad declarations change nothing; a removed declaration leaves the rules to judge the cell.
      {doubleThree + "zvforbid add 3 3 2\nzvforbid add 15 0 1\nzvforbid add 0 -1 0\nzvforbid add 3 3\n"
                     "zvforbid del 7 8 5\nzvshowforbid\nzvforbid ADD 3 3 0\nzvforbid add 7 8 1\nzvshowforbid\n"
                     "zvforbid del 3 3 1\nzvforbid del 7 8 0\nzvshowforbid\n",
       {kGreeting, "OK", "FORBID 0708.", "FORBID 03030708.", "FORBID 0708."}},
  };
  for (const auto& c : cases) EXPECT_EQ(run(c.input).lines, c.expected) << c.input;
}

// The count starts at 1, so the 65536th path stored is one too many; a
// full set refuses undo too, and a reset empties it.
TEST(TranscriptExtended, BlockPathLimit) {
  std::string input;
  for (int i = 0; i < 65536; ++i)
    input += "zvblockpath\n" + std::to_string(i % 484 / 22) + "," + std::to_string(i % 22) + "\n" +
             std::to_string(i / 484 / 22) + "," + std::to_string(i / 484 % 22) + "\nDONE\n";
  input += "zvblockpathundo\n1,1\nDONE\nzvblockpathreset\nzvblockpath\n1,1\nDONE\nEND\n";
  EXPECT_EQ(run(input).lines, (Lines{"ERROR too many block paths", "ERROR too many block paths"}));
}

// Black to move with an open four (7,3)-(7,6): both five points are taken
// away in turn by blocks, by block paths and by forbid declarations.
TEST(TranscriptExtended, BlockedCellsAndPathsAreNeverPlayed) {
  std::string four = "START 15\nINFO timeout_turn 300\nzvboard\n", stones;
  for (const char* cell : {"7,3", "0,0", "7,4", "2,0", "7,5", "0,14", "7,6"}) {
    four += cell + std::string(",1\n");
    stones += cell + std::string("\n");
  }
  four += "DONE\n";
  stones += "14,14\n";
  const std::string paths = "zvblockpath\n" + stones + "7,7\nDONE\nzvblockpath\n" + stones + "7,2\nDONE\n";
  for (const std::string& takeAway :
       {std::string("zvblock\n7,7\n7,2\nDONE\n"), paths, std::string("zvforbid add 7 7 0\nzvforbid add 7 2 1\n")}) {
    const std::string move = untilMove(four + takeAway + "TURN 14,14\n").back();
    EXPECT_TRUE(isMove(move) && move != "7,7" && move != "7,2") << takeAway << move;
  }
  EXPECT_EQ(untilMove(four + "TURN 14,14\n").back(), "7,2") << "free, the five is played";

  // On the empty board the centre goes the same ways; with show_detail the blocks are named.
  for (const std::string& takeAway : {std::string("zvblockpath\n7,7\nDONE\n"), std::string("zvforbid add 7 7 1\n")})
    EXPECT_EQ(withoutReports(run("START 15\n" + takeAway + "BEGIN\n").lines), (Lines{kGreeting, "OK", "6,7"}));
  EXPECT_EQ(withoutReports(run("START 15\nINFO show_detail 1\nzvblock\n7,7\nDONE\nBEGIN\n").lines),
            (Lines{kGreeting, "OK", "MESSAGE Bestline: ", "MESSAGE Block[H8] ", "6,7"}));
}

// From depth 8 on, each new best root move comes with the line it leads.
TEST(TranscriptExtended, RealtimeBestLine) {
  const Lines lines = untilMove("START 15\nINFO show_detail 1\nINFO max_depth 8\nBOARD\n7,7,2\n7,8,1\nDONE\n");
  int lineCount = 0;
  for (size_t i = 0; i + 2 < lines.size(); ++i)
    if (lines[i].rfind("MESSAGE REALTIME BEST ", 0) == 0) {
      const std::string best = lines[i].substr(22);
      EXPECT_EQ((lines[i + 2] + " ").rfind("MESSAGE REALTIME PV " + best + " ", 0), 0u) << lines[i + 2];
      ++lineCount;
    }
  EXPECT_GT(lineCount, 0);
  EXPECT_TRUE(std::none_of(lines.begin(), lines.end(), [](const std::string& l) { return l.rfind("MESSAGE Block", 0) == 0; }))
      << "no block line without blocked cells";
}

std::string awaitLine(EngineSession& engine, const std::string& prefix) {
  while (std::optional<std::string> line = engine.readLine(20000 * kSlack))
    if (prefix.empty() ? isMove(*line) : line->rfind(prefix, 0) == 0) return *line;
  return "(none)";
}
std::string awaitMove(EngineSession& engine) { return awaitLine(engine, ""); }

// The same game in two engines, one of which dumps, clears and reloads its
// table (and is refused spoilt copies of the dump) before the next turn.
TEST(TranscriptExtended, HashDumpClearLoadGivesBackTheTable) {
  const std::string dump = tempPath("dump"), spoilt = tempPath("spoilt");
  std::string moves[2];
  for (int withFiles = 0; withFiles < 2; ++withFiles) {
    EngineSession engine;
    for (const char* line : {"INFO hash_size 16", "INFO max_depth 6", "START 15", "BOARD", "7,7,2", "7,8,1", "DONE"})
      engine.send(line);
    awaitMove(engine);
    engine.send("zvshowhashusage");
    const std::string usage = awaitLine(engine, "MESSAGE Hash usage: ");
    EXPECT_NE(usage, kEmptyUsage);
    if (withFiles) {
      for (const std::string line : {"zvhashdump", dump.c_str(), "zvhashclear", "zvshowhashusage"})
        engine.send(line);
      EXPECT_EQ(awaitLine(engine, "MESSAGE Hash usage: "), kEmptyUsage);
      engine.send("zvhashload");
      engine.send(dump);
      std::ifstream in(dump, std::ios::binary);
      const std::string bytes(std::istreambuf_iterator<char>(in), {});
      for (const std::string& bad : {bytes.substr(0, bytes.size() - 1), std::string("not a dump\n")}) {
        std::ofstream(spoilt, std::ios::binary | std::ios::trunc) << bad;
        engine.send("zvhashload");
        engine.send(spoilt);
        EXPECT_EQ(engine.readLine(20000 * kSlack).value_or("(none)").rfind("MESSAGE Hash file " + spoilt + " refused: ", 0),
                  0u);
      }
      engine.send("zvshowhashusage");
      EXPECT_EQ(awaitLine(engine, "MESSAGE Hash usage: "), usage) << "the load gave the table back";
    }
    engine.send("TURN 0,0");
    moves[withFiles] = awaitMove(engine);
    engine.send("END");
    EXPECT_EQ(engine.waitExit(10000 * kSlack), 0);
  }
  EXPECT_EQ(moves[1], moves[0]);
  std::remove(dump.c_str());
  std::remove(spoilt.c_str());
}

// Usage and dump read the table while the think thread searches (two
// threads) and ponders; the changing commands stop it first. Run under the
// thread sanitizer this finds any race between them.
TEST(Threads, TableAndBlockCommandsDuringAThink) {
  const std::string dump = tempPath("think-dump");
  EngineSession engine;
  for (const char* line : {"INFO timeout_turn 40", "INFO thread_num 2", "INFO hash_size 12", "START 15"})
    engine.send(line);
  for (int turn = 0; turn < 8; ++turn) {
    engine.send("INFO pondering " + std::to_string(turn % 2));
    engine.send("TURN " + std::to_string(turn) + ",0");
    std::optional<std::string> move;
    while (!move) {
      for (const std::string& line : {std::string("zvshowhashusage"), std::string("zvhashdump"), dump})
        engine.send(line);
      while (std::optional<std::string> line = engine.readLine(move ? 0 : 5))
        if (isMove(*line)) move = line;
      ASSERT_FALSE(engine.waitExit(0) >= 0) << "the engine ended";
    }
    const std::string cell = std::to_string(turn) + "," + std::to_string(turn + 1);
    for (const std::string line : {"zvblock", cell.c_str(), "DONE", "zvhashload", dump.c_str(), "zvhashclear"})
      engine.send(line);
    engine.send("zvforbid add " + std::to_string(turn) + " 14 0");
  }
  engine.send("END");
  EXPECT_EQ(engine.waitExit(10000 * kSlack), 0) << "a race report ends the run with another status";
  std::remove(dump.c_str());
}

}  // namespace
}  // namespace zorva::testing
