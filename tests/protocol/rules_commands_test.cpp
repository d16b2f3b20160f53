// The rules' inspection commands through the real engine binary: zvboard,
// zvshowforbid and zvprintfeature.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "protocol/engine_process.h"

namespace zorva::testing {
namespace {

using Lines = std::vector<std::string>;

// Black (7,5) (7,6) (5,8) (6,8): (7,8) is a double three; white far away.
const std::string kDoubleThree =
    "START 15\nzvboard\n7,5,1\n0,0,2\n7,6,1\n0,14,2\n5,8,1\n14,0,2\n6,8,1\n14,14,2\nDONE\n";

EngineRun run(const std::string& input) {
  const EngineRun result = runEngine(input);
  EXPECT_FALSE(result.timedOut) << input;
  EXPECT_EQ(result.exitCode, 0);
  return result;
}

TEST(RulesCommands, ShowForbidListsTheDoubleThreeUnderRenjuOnly) {
  EXPECT_EQ(run("INFO rule 2\n" + kDoubleThree + "zvshowforbid\nEND\n").lines,
            (Lines{kGreeting, "OK", "FORBID 0708."}));
  EXPECT_EQ(run("INFO rule 0\n" + kDoubleThree + "zvshowforbid\nEND\n").lines, (Lines{kGreeting, "OK"}));
  // The rule may change after the stones are placed.
  EXPECT_EQ(run(kDoubleThree + "INFO rule 4\nzvshowforbid\nEND\n").lines, (Lines{kGreeting, "OK", "FORBID 0708."}));
  EXPECT_EQ(run("INFO rule 2\nSTART 15\nzvshowforbid\nEND\n").lines, (Lines{kGreeting, "OK", "FORBID ."}));
}

TEST(RulesCommands, BoardEntryErrorsWithoutASearch) {
  EXPECT_EQ(run("START 15\nzvboard\n7,7,1\n7,7,2\nDONE\nEND\n").lines,
            (Lines{kGreeting, "OK", "ERROR opponents's move [7,7]"}));
  EXPECT_EQ(run("START 15\nzvboard\n7,7,1\nbad\nEND\n").lines,
            (Lines{kGreeting, "OK", "ERROR x,y,who or DONE expected after BOARD"}));
}

TEST(RulesCommands, PrintFeatureShowsCodesPerColourAndDirection) {
  const Lines lines = run("INFO rule 2\n" + kDoubleThree + "zvprintfeature\nEND\n").lines;
  ASSERT_EQ(lines.size(), 2u + 9 * 16);
  // Block 0, black horizontal: row 7 holds x x . X around the stones.
  EXPECT_EQ(lines[2 + 7], "MESSAGE 0 1 5 7 8 0 0 8 7 5 1 0 0 0 0");
  for (int block = 0; block < 9; ++block) EXPECT_EQ(lines[2 + 16 * block + 15], "MESSAGE ") << block;
  // Block 8: the forbidden cells.
  EXPECT_EQ(lines[2 + 16 * 8 + 7], "MESSAGE 0 0 0 0 0 0 0 0 1 0 0 0 0 0 0");
  EXPECT_EQ(lines[2 + 16 * 8 + 6], "MESSAGE 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0");
}

}  // namespace
}  // namespace zorva::testing
