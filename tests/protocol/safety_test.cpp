// The engine under hostile settings and impatient managers: no INFO value
// breaks it, read-only commands never race a think, a rule change costs the
// next turn no time, and edits survive an input closed without END.
#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include "protocol/engine_process.h"
#include "protocol/engine_session.h"

namespace zorva::testing {
namespace {

namespace fs = std::filesystem;

bool isMove(const std::string& line) {
  return line.find(',') != std::string::npos && line.find_first_not_of("0123456789,") == std::string::npos;
}

// The move that answers a request, skipping every other line; a think that
// has not answered within `patienceMs` is stopped.
std::optional<std::string> awaitMove(EngineSession& engine, int patienceMs) {
  const long long stopAt = nowMs() + patienceMs;
  bool stopped = false;
  for (;;) {
    const std::optional<std::string> line = engine.readLine(stopped ? 5000 * kSlack : 10);
    if (line && isMove(*line)) return line;
    if (!line && stopped) return std::nullopt;
    if (!stopped && nowMs() > stopAt) {
      engine.send("zvstop");
      stopped = true;
    }
  }
}

std::string tempPath(const std::string& tag) { return "/tmp/zorva-safety-" + std::to_string(getpid()) + "-" + tag; }

const char* const kInfoKeys[] = {"max_memory", "timeout_match", "timeout_turn", "time_left", "game_type",
                                 "max_depth", "start_depth", "max_node", "time_increment", "caution_factor",
                                 "thread_num", "thread_split_depth", "three_def", "earlystop", "nbestsym",
                                 "dbdepthwl", "checkmate", "usedatabase", "pondering", "hash_size",
                                 "show_detail", "rule", "folder"};
const char* const kDefaults[] = {"0", "100000000", "20", "100000000", "1", "484", "1", "2000000000", "0", "1",
                                 "1", "8", "1", "1", "0", "5", "0", "0", "0", "16", "0", "0", ""};

// Every key alone at each extreme, then all of them at once, each followed
// by a turn: every turn answers and the engine ends cleanly.
TEST(InfoFuzz, ExtremeValuesNeitherCrashNorHang) {
  const std::string database = tempPath("fuzz.db");
  for (const char* value : {"2147483648", "-2147483648", "100000000000000000000", "-100000000000000000000", "0",
                            "-1"}) {
    EngineSession engine;
    engine.send("zvsetdatabase");
    engine.send(database);  // usedatabase must not write beside the engine
    engine.send("INFO timeout_turn 20");
    engine.send("INFO hash_size 16");
    engine.send("START 15");
    int turn = 0;
    const auto playTurn = [&](const std::string& what) {
      engine.send("TURN " + std::to_string(turn / 15) + "," + std::to_string(turn % 15));
      ++turn;
      ASSERT_TRUE(awaitMove(engine, 150 * kSlack).has_value()) << what << " " << value;
    };
    for (size_t k = 0; k < std::size(kInfoKeys); ++k) {
      engine.send(std::string("INFO ") + kInfoKeys[k] + " " + value);
      playTurn(kInfoKeys[k]);
      engine.send(std::string("INFO ") + kInfoKeys[k] + " " + kDefaults[k]);
    }
    for (const char* key : kInfoKeys) engine.send(std::string("INFO ") + key + " " + value);
    playTurn("every key");
    engine.send("END");
    EXPECT_EQ(engine.waitExit(20000 * kSlack), 0) << value;
  }
  fs::remove(database);
  fs::remove(database + ".bak");
}

// zvshowforbid and zvprintfeature copy the game board, zvdraw reads the draw
// flag, zvquerydatabaseall reads the stones, all while the think thread plays
// its move and sets the board up for a new rule; run under the thread
// sanitizer this finds any race between them.
TEST(Threads, ReadOnlyCommandsDuringAThink) {
  EngineSession engine;
  engine.send("INFO timeout_turn 40");
  engine.send("INFO thread_num 2");
  engine.send("START 15");
  for (int turn = 0; turn < 12; ++turn) {
    engine.send("INFO rule " + std::to_string(turn % 3));
    engine.send("INFO pondering " + std::to_string(turn % 2));
    engine.send("TURN " + std::to_string(turn) + ",0");
    std::optional<std::string> move;
    while (!move) {
      for (const char* command : {"zvshowforbid", "zvprintfeature", "zvdraw", "zvshowhashusage"}) engine.send(command);
      engine.send("zvquerydatabaseall");
      engine.send("DONE");
      while (std::optional<std::string> line = engine.readLine(move ? 0 : 5)) {
        if (isMove(*line)) move = line;
      }
      ASSERT_FALSE(engine.waitExit(0) >= 0) << "the engine ended";
    }
  }
  engine.send("END");
  EXPECT_EQ(engine.waitExit(10000 * kSlack), 0) << "a race report ends the run with another status";
}

// Clearing a 1 GiB table after a rule change must not eat a 100 ms turn.
TEST(Transcript, RuleChangeCostsTheNextTurnNoTime) {
  EngineSession engine;
  engine.send("INFO hash_size 22");
  engine.send("INFO timeout_turn 100");
  engine.send("START 15");
  engine.send("TURN 7,7");
  ASSERT_TRUE(awaitMove(engine, 5000 * kSlack).has_value());
  for (const auto& [rule, turn] : {std::pair{"1", "0,0"}, {"2", "0,14"}, {"0", "14,0"}}) {
    engine.send(std::string("INFO rule ") + rule);
    const long long sent = nowMs();
    engine.send(std::string("TURN ") + turn);
    ASSERT_TRUE(awaitMove(engine, 5000 * kSlack).has_value());
    // Room for a loaded machine; the clear alone once took seconds.
    EXPECT_LT(nowMs() - sent, 400 * kSlack) << turn;
  }
  engine.send("END");
  EXPECT_EQ(engine.waitExit(10000 * kSlack), 0);
}

// A manager that closes the input without END still keeps the edits.
TEST(Transcript, DatabaseEditsSurviveTheEndOfInput) {
  const std::string path = tempPath("eof.db");
  const std::string use = "START 15\nzvsetdatabase\n" + path + "\nINFO usedatabase 1\n";
  runEngine(use + "zvedittvddatabase 2 0 36 0\n8,8\nDONE\n");
  const EngineRun second = runEngine(use + "zvquerydatabaseone\n8,8\nDONE\nEND\n");
  EXPECT_EQ(second.lines.back(), "MESSAGE DATABASE ONE -1 36 0 ");
  fs::remove(path);
  fs::remove(path + ".bak");
}

// A table that cannot be had, and a learning file that gives too little,
// are each said once; the engine goes on.
TEST(Transcript, ShortcomingsAreSaidOnce) {
#ifdef ZORVA_SANITIZED
  GTEST_SKIP() << "sanitizers need far more address space than the limit leaves";
#endif
  const fs::path folder = tempPath("limits");
  fs::create_directories(folder);
  fs::copy_file(ZORVA_BINARY, folder / "zorva", fs::copy_options::overwrite_existing);
  std::ofstream(folder / "config.c") << "info_learning = 1;\n";
  std::ofstream(folder / "learning.txt") << "1 2 3\n4 x 5\n";
  std::ofstream(folder / "limited") << "#!/bin/sh\nulimit -v 2000000\nexec \"" << (folder / "zorva").string() << "\"\n";
  fs::permissions(folder / "limited", fs::perms::owner_all);
  const EngineRun run = runEngine("START 15\nTURN 7,7\nINFO hash_size 24\nTURN 8,8\nINFO hash_size 24\nEND\n", 60,
                                  (folder / "limited").string());
  EXPECT_EQ(run.exitCode, 0);
  int refused = 0, learning = 0, moves = 0;
  for (const std::string& line : run.lines) {
    refused += line == "MESSAGE Hash table of 4096 MiB could not be allocated; searching with 128 MiB";
    learning += line == "MESSAGE Learning file " + (folder / "learning.txt").string() +
                            " gives 4 of 3876 values; built-in values for the rest";
    moves += isMove(line);
  }
  EXPECT_EQ(refused, 1);
  EXPECT_EQ(learning, 1);
  EXPECT_EQ(moves, 2);
  fs::remove(folder / "learning.txt");
  const EngineRun missing = runEngine("END\n", 60, (folder / "limited").string());
  EXPECT_EQ(missing.lines, std::vector<std::string>{"MESSAGE Learning file " + (folder / "learning.txt").string() +
                                                     " could not be read; built-in values in use"});
  fs::remove_all(folder);
}

}  // namespace
}  // namespace zorva::testing
