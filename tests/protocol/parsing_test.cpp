// The front end's text handling, in process: keyword matching, number
// scanning and INFO.
#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "protocol/commands.h"
#include "protocol/engine_state.h"
#include "protocol/progress.h"
#include "protocol/scan.h"
#include "protocol/settings.h"

namespace zorva {
namespace {

TEST(MatchCommand, PrefixWithoutWordBoundary) {
  EXPECT_STREQ(matchCommand("turn", "TURN 7,7"), "7,7");
  EXPECT_STREQ(matchCommand("turn", "tUrN\t  7,7"), "7,7");
  EXPECT_STREQ(matchCommand("turn", "turn7,7"), "7,7");
  EXPECT_STREQ(matchCommand("start", "STARTED"), "ED");
  EXPECT_STREQ(matchCommand("about", "about"), "");
  EXPECT_EQ(matchCommand("start", "sta"), nullptr);
  EXPECT_EQ(matchCommand("start", "rectstart 5,5"), nullptr);
  EXPECT_EQ(matchCommand("thread_num", "thread-num 3"), nullptr);
}

TEST(ScanInts, FormatsOfTheProtocol) {
  int32_t v[4] = {};
  EXPECT_EQ(scanInts("15 ,20", "%d ,%d", v), 2);
  EXPECT_EQ(v[1], 20);
  EXPECT_EQ(scanInts("15,20", "%d ,%d", v), 2) << "a blank in the format also matches no blank";
  EXPECT_EQ(scanInts("15 , 20", "%d ,%d", v), 2);
  EXPECT_EQ(scanInts("15 20", "%d ,%d", v), 1);
  EXPECT_EQ(scanInts(" -3,+4,2 trailing", "%d,%d,%d", v), 3);
  EXPECT_EQ(v[0], -3);
  EXPECT_EQ(v[1], 4);
  EXPECT_EQ(scanInts("7, 8", "%d,%d", v), 2) << "a number may follow white space";
  EXPECT_EQ(scanInts("7 ,8", "%d,%d", v), 1);
  EXPECT_EQ(scanInts("", "%d", v), 0);
  EXPECT_EQ(scanInts("-", "%d", v), 0);
  EXPECT_EQ(scanInts("99999999999999999999,-99999999999999999999", "%d,%d", v), 2);
  EXPECT_EQ(v[0], INT32_MAX);
  EXPECT_EQ(v[1], INT32_MIN);
  EXPECT_EQ(scanInts("2147483648,-2147483648", "%d,%d", v), 2);
  EXPECT_EQ(v[0], INT32_MAX);
  EXPECT_EQ(v[1], INT32_MIN);
}

TEST(ParseDecimal, PrefixRules) {
  EXPECT_EQ(parseDecimal("5000x"), 5000);
  EXPECT_EQ(parseDecimal("  -12 7"), -12);
  EXPECT_EQ(parseDecimal("x5"), 0);
  EXPECT_EQ(parseDecimal(""), 0);
  EXPECT_EQ(parseDecimal("123456789012"), INT32_MAX);
}

TEST(Info, KeysAndSpecialValues) {
  Settings& s = engine.settings;
  handleInfo("timeout_turn 5000x");
  EXPECT_EQ(s.timeoutTurn, 5000);
  handleInfo("TIME_LEFT   777");
  EXPECT_EQ(s.timeLeft, 777);
  handleInfo("hash_size 0");
  EXPECT_EQ(s.hashSize, 1);
  handleInfo("hash_size -5");
  EXPECT_EQ(s.hashSize, 1);
  handleInfo("hash_size 20");
  EXPECT_EQ(s.hashSize, 20);
  handleInfo("thread_num 12");
  EXPECT_EQ(s.threadNum, 12) << "stored as read; the search clamps where it uses it";
  handleInfo("max_node -1");
  EXPECT_EQ(s.maxNode, -1);
  const int rules[][2] = {{0, 0}, {1, 1}, {2, 2}, {3, 1}, {4, 2}, {5, 2}, {6, 2}, {7, 2}, {8, 0}, {12, 2}, {9, 1}, {-1000, 0}, {-999, 1}, {-2, 2}};
  for (auto [code, stored] : rules) {
    handleInfo(("rule " + std::to_string(code)).c_str());
    EXPECT_EQ(s.rule, stored) << "rule code " << code;
  }
  handleInfo("rule 0");
  engine.ponderActive = 1;
  handleInfo("pondering 0");
  EXPECT_EQ(engine.ponderActive, 0);
  handleInfo("folder /some where/else ");
  EXPECT_STREQ(s.folder, "/some where/else ");
  handleInfo(("folder " + std::string(5000, 'f')).c_str());
  EXPECT_EQ(std::string(s.folder).size(), size_t(kFolderLength - 1));
  handleInfo("no_such_key 9");
  handleInfo("timeout_turn");
  EXPECT_EQ(s.timeoutTurn, 0) << "a missing number reads as 0";
}

TEST(Progress, DisplayedValues) {
  EXPECT_EQ(displayedValue(9999990, 6, false), 10000) << "9999984 clamped";
  EXPECT_EQ(displayedValue(-9999990, 6, true), -9999);
  EXPECT_EQ(displayedValue(501, 3, false), 501);
  EXPECT_STREQ(valueLabel(501), ":-)");
  EXPECT_STREQ(valueLabel(500), "");
  EXPECT_STREQ(valueLabel(-501), ":-(");
}

}  // namespace
}  // namespace zorva
