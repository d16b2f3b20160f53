// The database commands through the real engine: edits survive END and a
// new process, and the queries answer "not found" while the database is off.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

#include "protocol/engine_process.h"

namespace zorva::testing {
namespace {

TEST(Transcript, DatabaseEditsPersistAcrossRuns) {
  const std::string path = "/tmp/zorva-e2e-db-" + std::to_string(getpid()) + ".db";
  std::remove(path.c_str());
  const std::string useFile = "zvsetdatabase\n" + path + "\n";
  const EngineRun first = runEngine("START 15\n" + useFile +
                                    "zvquerydatabaseone\n7,7\nDONE\n"
                                    "INFO usedatabase 1\n"
                                    "zvedittvddatabase 2 0 35 0\n7,7\nDONE\n"
                                    "zveditrawmsgdatabase hello world\n7,7\nDONE\n"
                                    "zvquerydatabaseone\n7,7\nDONE\n"
                                    "zvedittvddatabase 7 108 -20 9\n7,7\n8,8\nDONE\n"
                                    "END\n");
  EXPECT_EQ(first.exitCode, 0);
  EXPECT_EQ(first.lines, (std::vector<std::string>{kGreeting, "OK", "MESSAGE DATABASE ONE -1 0 0",
                                                   "MESSAGE DATABASE ONE -1 35 0",
                                                   "MESSAGE DATABASE ONE -1 35 0 hello",
                                                   "MESSAGE DATABASE ONE -1 35 0 hello",
                                                   "MESSAGE DATABASE ONE 108 -20 9"}));

  // The mirror image of a stored position finds it; replies list in row order.
  const EngineRun second = runEngine("START 15\n" + useFile +
                                     "INFO usedatabase 1\n"
                                     "zvquerydatabaseone\n7,7\n6,6\nDONE\n"
                                     "zvquerydatabaseall\n7,7\nDONE\n"
                                     "INFO usedatabase 0\n"
                                     "zvquerydatabaseall\nDONE\n"
                                     "END\n");
  EXPECT_EQ(second.exitCode, 0);
  EXPECT_EQ(second.lines,
            (std::vector<std::string>{kGreeting, "OK", "MESSAGE DATABASE ONE 108 -20 9 ", "MESSAGE DATABASE REFRESH",
                                      "MESSAGE DATABASE 6 6 108 -20 9", "MESSAGE DATABASE 6 8 108 -20 9",
                                      "MESSAGE DATABASE 8 6 108 -20 9", "MESSAGE DATABASE 8 8 108 -20 9",
                                      "MESSAGE DATABASE DONE", "MESSAGE DATABASE REFRESH", "MESSAGE DATABASE DONE"}));
  std::remove(path.c_str());
  std::remove((path + ".bak").c_str());
}

TEST(Transcript, DatabaseDeleteExportImportCheck) {
  const std::string tag = std::to_string(getpid());
  const std::string path = "/tmp/zorva-e2e-dbx-" + tag + ".db", text = "/tmp/zorva-e2e-dbx-" + tag + ".txt";
  const std::string line3 = "7,7\n8,8\n9,9\nDONE\n";
  const EngineRun run = runEngine("START 15\nzvsetdatabase\n" + path + "\nINFO usedatabase 1\n" +
                                  "zvedittvddatabase 1 119 0 0\n7,7\n8,8\nDONE\n" + "zvedittvddatabase 1 108 0 0\n" +
                                  line3 + "zvdbtotxt\n" + text + " -1\n" + "zvdeletedatabaseall\n7,7\n8,8\nDONE\n" +
                                  "zvquerydatabaseone\n" + line3 + "zvtxttodb\n" + text + "\n" +
                                  "zvquerydatabaseone\n" + line3 + "zvdeletedatabaseone\n" + line3 +
                                  "zvquerydatabaseone\n" + line3 + "zvsetdatabase\n" + path + "\n" +
                                  "zvdeletedatabaseiso\nzvsavedatabase\nzvloaddatabase\nzvdbcheck\nEND\n");
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(run.lines, (std::vector<std::string>{kGreeting, "OK", "MESSAGE DATABASE ONE 119 0 0",
                                                 "MESSAGE DATABASE ONE 108 0 0", "MESSAGE Working ...", "MESSAGE Done",
                                                 "MESSAGE DATABASE ONE -1 0 0", "MESSAGE DATABASE ONE -1 0 0 ",
                                                 "MESSAGE DATABASE ONE -1 0 0",
                                                 "MESSAGE Database check: 1 records, 0 problems"}));
  // Proven positions are exported in their stored orientation, one per line.
  const std::vector<std::string> exported = splitLines([&] {
    std::ifstream in(text);
    return std::string(std::istreambuf_iterator<char>(in), {});
  }());
  EXPECT_EQ(exported, (std::vector<std::string>{" 7,7 6,6", " 7,7 6,6 5,5"}));
  for (const std::string& f : {path, path + ".bak", text}) std::remove(f.c_str());
}

// A reply the database proves won is played, though the search would never
// have looked so far from the stones.
TEST(Transcript, SearchPlaysTheDatabaseWin) {
  const std::string path = "/tmp/zorva-e2e-dbwin-" + std::to_string(getpid()) + ".db";
  std::remove(path.c_str());
  const EngineRun run = runEngine("START 15\nzvsetdatabase\n" + path +
                                  "\nINFO usedatabase 1\nzvedittvddatabase 1 119 0 0\n7,7\n0,0\nDONE\n"
                                  "TURN 7,7\nTAKEBACK 7,7\nEND\n");
  EXPECT_EQ(run.exitCode, 0);
  std::vector<std::string> moves;
  for (const std::string& line : run.lines)
    if (line.find(',') != std::string::npos && line.rfind("MESSAGE", 0) != 0) moves.push_back(line);
  ASSERT_EQ(moves.size(), 1u);
  EXPECT_TRUE(moves[0] == "0,0" || moves[0] == "0,14" || moves[0] == "14,0" || moves[0] == "14,14") << moves[0];
  std::remove(path.c_str());
  std::remove((path + ".bak").c_str());
}

}  // namespace
}  // namespace zorva::testing
