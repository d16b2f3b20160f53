#include "config/lexer.h"

#include <gtest/gtest.h>

#include <vector>

namespace zorva::config {
namespace {

std::vector<int32_t> kinds(std::string_view text) {
  ScanResult r = scan(text);
  EXPECT_EQ(r.error, "") << text;
  std::vector<int32_t> out;
  for (const Token& t : r.tokens) out.push_back(t.kind);
  return out;
}

// The message without its place (" at line L, column C").
std::string scanError(std::string_view text) {
  const std::string error = scan(text).error;
  return error.substr(0, error.rfind(" at line "));
}

TEST(Lexer, OperatorsPreferTwoCharacters) {
  EXPECT_EQ(kinds("a>=b"), (std::vector<int32_t>{kTokIdentifier, kTokGreaterEqual, kTokIdentifier, kTokEnd}));
  EXPECT_EQ(kinds("a> =b"), (std::vector<int32_t>{kTokIdentifier, '>', '=', kTokIdentifier, kTokEnd}));
  EXPECT_EQ(kinds("&&||<=<<>>==!="),
            (std::vector<int32_t>{kTokAndAnd, kTokOrOr, kTokLessEqual, kTokShiftLeft,
                                  kTokShiftRight, kTokEqual, kTokNotEqual, kTokEnd}));
  // Greedy from the left: "<<=" is "<<" then "=", "&&&" is "&&" then "&".
  EXPECT_EQ(kinds("<<="), (std::vector<int32_t>{kTokShiftLeft, '=', kTokEnd}));
  EXPECT_EQ(kinds("&&&"), (std::vector<int32_t>{kTokAndAnd, '&', kTokEnd}));
  EXPECT_EQ(kinds("!%&()*+,-/;<=>[]^{|}~").size(), 21u);  // "<=" is one token
}

TEST(Lexer, KeywordsNeedAWordBoundary) {
  ScanResult r = scan("intx int x integer if_ else1 _while return;");
  ASSERT_EQ(r.error, "");
  std::vector<int32_t> expected{kTokIdentifier, kTokInt, kTokIdentifier, kTokIdentifier,
                                kTokIdentifier, kTokIdentifier, kTokIdentifier, kTokReturn, ';', kTokEnd};
  ASSERT_EQ(r.tokens.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_EQ(r.tokens[i].kind, expected[i]) << i;
  EXPECT_EQ(r.tokens[0].text, "intx");
  EXPECT_EQ(kinds("int float void if else while break continue return"),
            (std::vector<int32_t>{128, 129, 130, 131, 132, 133, 134, 135, 136, kTokEnd}));
}

TEST(Lexer, LongNamesAreCutTo31Characters) {
  std::string name(40, 'n');
  ScanResult r = scan(name + "+x");
  ASSERT_EQ(r.error, "");
  EXPECT_EQ(r.tokens[0].text, std::string(31, 'n'));
  EXPECT_EQ(r.tokens[1].kind, '+');
}

TEST(Lexer, Numbers) {
  ScanResult r = scan("3. .5 3 3.25 0.125 4294967297 2147483648 1.2.3");
  ASSERT_EQ(r.error, "");
  const auto& t = r.tokens;
  EXPECT_EQ(t[0].kind, kTokFloatLiteral);
  EXPECT_FLOAT_EQ(t[0].floatValue, 3.0f);
  EXPECT_EQ(t[1].kind, kTokFloatLiteral);
  EXPECT_FLOAT_EQ(t[1].floatValue, 0.5f);
  EXPECT_EQ(t[2].kind, kTokIntLiteral);
  EXPECT_EQ(t[2].intValue, 3);
  EXPECT_FLOAT_EQ(t[3].floatValue, 3.25f);
  EXPECT_FLOAT_EQ(t[4].floatValue, 0.125f);
  EXPECT_EQ(t[5].intValue, 1);  // wraps modulo 2^32
  EXPECT_EQ(t[6].intValue, INT32_MIN);
  EXPECT_FLOAT_EQ(t[7].floatValue, 1.2f);  // "1.2.3" is 1.2 then .3
  EXPECT_FLOAT_EQ(t[8].floatValue, 0.3f);
  EXPECT_EQ(kinds("3x"), (std::vector<int32_t>{kTokIntLiteral, kTokIdentifier, kTokEnd}));
}

TEST(Lexer, Comments) {
  EXPECT_EQ(kinds("a // $ ignored\nb"), (std::vector<int32_t>{kTokIdentifier, kTokIdentifier, kTokEnd}));
  EXPECT_EQ(kinds("a /* $ /* */ b /**/ / c"),
            (std::vector<int32_t>{kTokIdentifier, kTokIdentifier, '/', kTokIdentifier, kTokEnd}));
  EXPECT_EQ(kinds("// only a comment"), (std::vector<int32_t>{kTokEnd}));
  EXPECT_EQ(kinds(""), (std::vector<int32_t>{kTokEnd}));
  EXPECT_EQ(scanError("a /* never closed"), "Unterminated comment");
  EXPECT_EQ(scanError("/*/"), "Unterminated comment");
  EXPECT_EQ(scanError("/* ends with a star *"), "Unterminated comment");
  // Comments do not nest: the first "*/" ends it and the rest is code.
  EXPECT_EQ(kinds("/* /* */ */"), (std::vector<int32_t>{'*', '/', kTokEnd}));
}

TEST(Lexer, UnexpectedSymbols) {
  EXPECT_EQ(scanError("$"), "Unexpected symbol $");
  EXPECT_EQ(scanError("int a = 3; a = a + $1;"), "Unexpected symbol $");
  EXPECT_EQ(scanError("a = 1; // fine\n b = 2 # 3"), "Unexpected symbol #");
  EXPECT_EQ(scanError("a.b"), "Unexpected symbol .");
  EXPECT_EQ(scanError("\"s\""), "Unexpected symbol \"");
  EXPECT_EQ(scanError("x = 1; \xC3\xA9"), "Unexpected symbol \\xC3");
  EXPECT_EQ(scanError(std::string_view("a\0b", 3)), "Unexpected symbol \\x00");
  EXPECT_EQ(scanError("\x7f"), "Unexpected symbol \\x7F");
  EXPECT_EQ(scan("$").tokens.size(), 0u);
}

}  // namespace
}  // namespace zorva::config
