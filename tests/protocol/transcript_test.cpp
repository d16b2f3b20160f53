// End-to-end transcripts: the real engine binary, a whole input script, the
// whole output compared line by line. The end-of-turn report lines are left
// out, and "?move" stands for a searched move, whose cell may depend on how
// long the search ran before the next command stopped it.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "protocol/engine_process.h"

namespace zorva::testing {
namespace {

using Lines = std::vector<std::string>;

const std::string kAnyMove = "?move";

bool isReportLine(const std::string& line) {
  return line.rfind("MESSAGE Rule ", 0) == 0 || line.rfind("MESSAGE [", 0) == 0 || line == "MESSAGE " ||
         (line.rfind("MESSAGE ", 0) == 0 && line.find(" | ") != std::string::npos);
}

bool isMove(const std::string& line) {
  const size_t comma = line.find(',');
  return comma != std::string::npos && comma > 0 && line.find_first_not_of("0123456789,") == std::string::npos;
}

void expectTranscript(const std::string& input, const Lines& expected) {
  const EngineRun run = runEngine(input);
  ASSERT_FALSE(run.timedOut) << "engine hung on:\n" << input;
  EXPECT_EQ(run.exitCode, 0);
  Lines actual;
  for (const std::string& line : run.lines)
    if (!isReportLine(line)) actual.push_back(line);
  Lines wanted = expected;
  for (size_t i = 0; i < wanted.size() && i < actual.size(); ++i)
    if (wanted[i] == kAnyMove && isMove(actual[i])) wanted[i] = actual[i];
  EXPECT_EQ(actual, wanted) << "input:\n" << input;
}

TEST(Transcript, GameOnSquareBoard) {
  expectTranscript("START 15\nBEGIN\nTURN 7,8\nPLAY 0,0\nABOUT\nEND\n",
                   {kGreeting, "OK", "7,7", kAnyMove, "0,0", kAbout});
}

TEST(Transcript, SizesAtTheLimits) {
  expectTranscript("START 23\nSTART 22\nBEGIN\nSTART -4\nRECTSTART 15 ,20\nBEGIN\nRECTSTART 15,20\nEND\n",
                   {"ERROR size of the board", kGreeting, "OK", "11,11", "ERROR size of the board", kGreeting, "OK",
                    "10,7", kGreeting, "OK"});
}

TEST(Transcript, StartWithoutSizeStartsTwice) {
  expectTranscript("START\nSTART 0\n", {kGreeting, "OK", kGreeting, "OK", kGreeting, "OK", kGreeting, "OK"});
}

TEST(Transcript, CommandsBeforeStartGetATwentyBoard) {
  expectTranscript("TURN 10,10\nEND\n", {kGreeting, "OK", kAnyMove});
  expectTranscript("turn10,10\n", {kGreeting, "OK", kAnyMove});
}

TEST(Transcript, RectangleCoordinatesPairFirstWithHeight) {
  // RECTSTART width,height: x runs below the height (20), y below the width (15).
  expectTranscript("RECTSTART 15,20\nTURN 19,14\nTURN 14,19\nPLAY 15,3\nEND\n",
                   {kGreeting, "OK", kAnyMove, "ERROR bad coordinates", "15,3"});
  expectTranscript("RECTSTART 15\nRECTSTART x,5\n", {"ERROR bad RECTSTART parameters", "ERROR bad RECTSTART parameters"});
}

TEST(Transcript, OccupiedCellsAreRefused) {
  expectTranscript("START 15\nPLAY 7,7\nPLAY 7,7\nTURN 7,7\nTURN -1,3\nPLAY 3\nEND\n",
                   {kGreeting, "OK", "7,7", "ERROR my move [7,7]", "7,7", "ERROR opponents's move [7,7]", kAnyMove,
                    "ERROR bad coordinates", "ERROR bad coordinates"});
}

TEST(Transcript, BoardTransfer) {
  expectTranscript("START 15\nBOARD\n7,7,1\n7,8,2\n3,3,3\ndone\nEND\n", {kGreeting, "OK", kAnyMove});
  expectTranscript("START 15\nBOARD\n7,7,1\n7,7,2\n20,0,1\nRESTART\nEND\n",
                   {kGreeting, "OK", "ERROR opponents's move [7,7]", "ERROR x,y,who or DONE expected after BOARD",
                    kAnyMove, kGreeting, "OK"});
  // Only a blocked cell: the board has no stone, so the engine takes the free cell nearest the centre.
  expectTranscript("START 15\nBOARD\n7,7,3\nDONE\n", {kGreeting, "OK", "6,7"});
}

TEST(Transcript, TakeBack) {
  expectTranscript("START 15\nBOARD\n7,7,1\n7,8,2\n3,3,3\nDONE\nTAKEBACK 7,8\nTAKEBACK 7,7\nTAKEBACK 7,7\n"
                   "TAKEBACK 3,3\nTAKEBACK 99,0\nTAKEBACK\nRESTART\nBEGIN\nEND\n",
                   {kGreeting, "OK", kAnyMove, "OK", "OK", "ERROR bad coordinates", "UNKNOWN", "ERROR bad coordinates",
                    "ERROR bad coordinates", kGreeting, "OK", "7,7"});
}

TEST(Transcript, LineEndings) {
  expectTranscript("START 15\r\nTURN 7,7\r\nTAKEBACK 7,7\r\nABOUT\r\nEND\r\n", {kGreeting, "OK", kAnyMove, "OK", kAbout});
  // A partial last line is never run; end of input shuts down cleanly.
  expectTranscript("START 15\nABOUT", {kGreeting, "OK"});
  expectTranscript("", {});
}

TEST(Transcript, OverlongLineIsCutAndItsRestDropped) {
  const std::string longLine = "ABOUT" + std::string(9995, ' ') + "END";
  expectTranscript(longLine + "\n" + std::string(8191, 'x') + "ABOUT\nABOUT\n", {kAbout, "UNKNOWN command", kAbout});
}

TEST(Transcript, UnknownInputAndSilentInfo) {
  expectTranscript("INFO no_such_key 5\nINFO timeout_turn 5000x\nhello\nzvunheardof 3\n\nEND\n",
                   {"UNKNOWN command", "UNKNOWN command", "UNKNOWN command"});
}

TEST(Transcript, DrawResignPassStop) {
  expectTranscript("zvdraw\nzvresign\nzvpass\nzvstop\nZVDRAWX\nEND\n",
                   {"MESSAGE DRAW REJECT", "MESSAGE Thanks :)", "MESSAGE DRAW REJECT"});
}

TEST(Transcript, NoUsableCellMeansPass) {
  expectTranscript("START 1\nBEGIN\nBEGIN\nEND\n", {kGreeting, "OK", "0,0", "MESSAGE pass"});
}

TEST(Transcript, EndOfInputInsideBoardStillAnswers) {
  expectTranscript("START 15\nBOARD\n7,7,1\n7,8,2", {kGreeting, "OK", "ERROR x,y,who or DONE expected after BOARD", kAnyMove});
}

}  // namespace
}  // namespace zorva::testing
