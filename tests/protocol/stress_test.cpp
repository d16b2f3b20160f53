// Thousands of random and mutated protocol lines must leave the engine
// answering: no crash, no hang, ABOUT and END still work.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "protocol/engine_process.h"

namespace zorva::testing {
namespace {

const char* const kKeywords[] = {"START", "RECTSTART", "RESTART", "TURN", "PLAY", "BEGIN", "BOARD", "DONE",
                                 "TAKEBACK", "INFO", "ABOUT", "zvboard", "zvnbest", "zvblock", "x"};
const char* const kInfoKeys[] = {"timeout_turn", "rule", "hash_size", "pondering", "thread_num", "folder",
                                 "max_node", "usedatabase"};
const char* const kNumbers[] = {"0", "1", "7", "14", "15", "19", "20", "21", "22", "23", "-1", "-2147483648",
                                "2147483647", "99999999999999999999", "+3", "0x10", "1e9", ""};

std::string randomNumber(std::mt19937& rng) { return kNumbers[rng() % std::size(kNumbers)]; }

std::string randomLine(std::mt19937& rng) {
  std::string line;
  switch (rng() % 8) {
    case 0: {  // binary noise, any byte but the line feed
      const size_t length = rng() % 64;
      for (size_t i = 0; i < length; ++i) {
        char c = char(rng() % 256);
        line += c == '\n' ? '\r' : c;
      }
      return line;
    }
    case 1:
      return std::string(rng() % 3 ? 100000 : 8191 + rng() % 3, char('A' + rng() % 26));
    case 2:
      return randomNumber(rng) + "," + randomNumber(rng) + "," + randomNumber(rng);
    case 3:
      return std::string("INFO ") + kInfoKeys[rng() % std::size(kInfoKeys)] + " " + randomNumber(rng);
    default:
      line = kKeywords[rng() % std::size(kKeywords)];
      if (rng() % 2) line += " ";
      line += randomNumber(rng);
      if (rng() % 3) line += std::string(1, " ,,"[rng() % 3]) + randomNumber(rng);
      break;
  }
  if (rng() % 5 == 0) line[rng() % line.size()] = char(rng() % 256 ? rng() % 256 : 1);  // mutate one byte
  std::replace(line.begin(), line.end(), '\n', ' ');
  return line;
}

TEST(Stress, RandomLinesNeverBreakTheEngine) {
  std::mt19937 rng(20261121);
  for (int round = 0; round < 3; ++round) {
    std::string input;
    for (int i = 0; i < 2000; ++i) input += randomLine(rng) + (rng() % 4 ? "\n" : "\r\n");
    input += "DONE\nABOUT\nEND\n";
    const EngineRun run = runEngine(input, 120);
    ASSERT_FALSE(run.timedOut) << "round " << round;
    ASSERT_EQ(run.exitCode, 0) << "round " << round;
    ASSERT_FALSE(run.lines.empty());
    const auto about = std::find_if(run.lines.rbegin(), run.lines.rend(),
                                    [](const std::string& l) { return l.rfind("name=\"Zorva\"", 0) == 0; });
    EXPECT_NE(about, run.lines.rend()) << "round " << round;
    EXPECT_LT(about - run.lines.rbegin(), 3) << "ABOUT must answer at the end of round " << round;
  }
}

}  // namespace
}  // namespace zorva::testing
