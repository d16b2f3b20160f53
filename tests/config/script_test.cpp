#include "config/script.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

namespace zorva::config {
namespace {

struct Outcome {
  bool ok;
  std::string error;  // the message without its place
  int32_t r;
  std::string place;  // " at line L, column C"
};

// Runs `text` with one engine variable, r, starting at 0.
Outcome run(std::string_view text, const Limits& limits = Limits{}) {
  int32_t r = 0;
  Binding bindings[] = {{"r", &r}};
  ScriptResult result = runScript(text, bindings, limits);
  const size_t at = result.error.rfind(" at line ");
  if (at == std::string::npos) return Outcome{result.ok, result.error, r, ""};
  return Outcome{result.ok, result.error.substr(0, at), r, result.error.substr(at)};
}

struct ValueCase {
  const char* script;
  int32_t expected;
};

void expectValues(const std::vector<ValueCase>& cases) {
  for (const ValueCase& c : cases) {
    Outcome o = run(c.script);
    EXPECT_TRUE(o.ok) << c.script << " -> " << o.error;
    EXPECT_EQ(o.r, c.expected) << c.script;
  }
}

struct ErrorCase {
  const char* script;
  const char* error;
};

void expectErrors(const std::vector<ErrorCase>& cases) {
  for (const ErrorCase& c : cases) {
    Outcome o = run(c.script);
    EXPECT_FALSE(o.ok) << c.script;
    EXPECT_EQ(o.error, c.error) << c.script;
  }
}

TEST(Script, PrecedenceAndAssociativity) {
  expectValues({
      {"r = 1 + 2 * 3;", 7},          {"r = (1 + 2) * 3;", 9},
      {"r = 10 - 4 - 3;", 3},         {"r = 100 / 10 / 5;", 2},
      {"r = 7 - -2;", 9},             {"r = -2 * -3 % 4;", 2},
      {"r = -7 / 2 * 10 + -7 % 2;", -31},
      {"r = 1 << 2 + 1;", 8},         {"r = 7 >> 1 << 2;", 12},
      {"r = -8 >> 1;", -4},           {"r = 1 < 2 == 1;", 1},
      {"r = 2 == 2 < 1;", 0},         {"r = 3 > 2 > 1;", 0},
      {"r = 5 != 4 == 1;", 1},        {"r = 6 & 3 ^ 1 | 8;", 11},
      {"r = 1 | 2 ^ 3 & 6;", 1},      {"r = 1 & 2 == 2;", 1},
      {"r = 0 || 1 && 0;", 0},        {"r = 1 || 0 && 0;", 1},
      {"r = !0 + ~0;", 0},            {"r = !!7 - -~1;", -1},
      {"int a; int b; a = b = 5; r = a * 10 + b;", 55},
      {"r = 2 + (r = 3);", 5},
  });
}

TEST(Script, IntegerAndFloatConversions) {
  expectValues({
      {"r = 7 / 2 * 2.0;", 6},        {"r = 7 / 2.0 * 2;", 7},
      {"r = 2.9;", 2},                {"r = -2.9;", -2},
      {"float f = 7; r = f / 2 * 10;", 35},
      {"int i = 2.75 * 2; r = i;", 5},
      {"r = ((int)2.5 + (float)1 / 2) * 2;", 5},
      {"r = 1 / 3 == 0 && 1.0 / 4 == .25;", 1},
      {"r = 0.5 && 2;", 1},           {"r = 0.0 || 0;", 0},
      {"r = 3. < 3.25;", 1},          {"r = 16777217.0 == 16777216;", 1},  // 32-bit floats
      {"r = 2147483647 + 1 == -2147483648;", 1},
      {"r = 65536 * 65536;", 0},      {"r = -2147483648 / -1;", INT_MIN},
      {"r = -2147483648 % -1;", 0},   {"r = 1 << 31;", INT_MIN},
      {"r = 2147483520.0;", 2147483520},  {"r = -(float)2147483647;", INT_MIN},
  });
}

TEST(Script, ShortCircuitSkipsTheRightOperand) {
  expectValues({
      {"int n = 0; int bump() { n = n + 1; return 1; }"
       " int a = 0 && bump(); int b = 1 || bump(); int c = 1 && bump();"
       " r = n * 100 + a * 10 + b + c;", 102},
      {"r = 0 && 1 / 0;", 0},
      {"r = 1 || undefined_name;", 1},
  });
}

TEST(Script, FunctionsAndScopes) {
  expectValues({
      {"int fib(int n) { if (n < 2) return n; return fib(n - 1) + fib(n - 2); } r = fib(15);", 610},
      {"int half(float x) { return x / 2; } r = half(7);", 3},
      {"float avg(int a, int b) { return (a + b) / 2.0; } r = avg(3, 4) * 2;", 7},
      {"int g = 1; void set(int v) { g = v; return; g = 0; } set(42); r = g;", 42},
      {"r = twice(4); int twice(int x) { return 2 * x; }", 8},
      {"int sq(int x); r = sq(5); int sq(int x) { return x * x; }", 25},
      {"int x = 1; void f() { int x = 5; } f(); r = x;", 1},
      {"int even(int n) { if (n == 0) return 1; return odd(n - 1); }"
       " int odd(int n) { if (n == 0) return 0; return even(n - 1); } r = even(10) * 10 + odd(7);", 11},
      {"int three(void) { return 3; } r = three();", 3},
      {"int depth(int n) { if (n == 0) return 0; return 1 + depth(n - 1); } r = depth(400);", 400},
      {"int x = 1; { int x = 2; r = x; } r = r * 10 + x;", 21},
      {"if (0) r = 1; else if (0) r = 2; else r = 3;", 3},
      {"if (1) if (0) r = 1; else r = 2;", 2},
      {"r = 5; return; r = 6;", 5},
      {"int r = 4;", 4},  // an engine variable may be declared again at top level
  });
}

TEST(Script, ArraysAndLoops) {
  expectValues({
      {"int a[3] = {1, 2, 3}; r = a[0] + a[1] * 10 + a[2] * 100;", 321},
      {"int a[5] = {1, 2}; r = a[1] + a[4];", 2},
      {"int a[] = {4, 5, 6,}; r = a[2];", 6},
      {"float a[2] = {1.5, 2}; r = a[0] * a[1];", 3},
      {"int a[2] = {1.9, -1.9}; r = a[0] * 10 + a[1];", 9},
      {"int n = 4; int a[n * 2]; a[7] = 3; r = a[7] + a[0];", 3},
      {"int a[3]; r = a[1] = 5;", 5},
      {"int i = 0; int s = 0; while (1) { i = i + 1; if (i > 10) break;"
       " if (i % 2) continue; s = s + i; } r = s;", 30},
      {"int i = 0; while (i < 3) { int j = 0; while (1) { j = j + 1; if (j == 4) break;"
       " r = r + 1; } i = i + 1; }", 9},
      {"int i = 0; while (i < 100000) i = i + 1; r = i;", 100000},
      {"int f() { int i = 0; while (1) { i = i + 1; if (i == 7) return i; } } r = f();", 7},
  });
}

TEST(Script, RunTimeErrors) {
  expectErrors({
      {"r = x;", "Undefined variable x"},
      {"x = 1;", "Undefined variable x"},
      {"void f() { r = y; } { int y = 3; f(); }", "Undefined variable y"},
      {"r = 1.5 % 2;", "The operands of % must be integer"},
      {"r = 5 % 2.0;", "The operands of % must be integer"},
      {"r = !0.0;", "The operands of ! must be integer"},
      {"r = ~2.0;", "The operands of ~ must be integer"},
      {"r = 1.0 << 1;", "The operands of << must be integer"},
      {"r = 1 | 1.0;", "The operands of | must be integer"},
      {"r = 1 / 0;", "Division by zero"},
      {"r = 1 % 0;", "Division by zero"},
      {"r = 1.0 / 0;", "Division by zero"},
      {"r = 1 >> -1;", "The shift amount must be between 0 and 31"},
      {"r = 1 << 32;", "The shift amount must be between 0 and 31"},
      {"r = 3000000000.0;", "Float value does not fit in an int"},
      {"r = (float)2147483647;", "Float value does not fit in an int"},  // rounds to 2^31
      {"float f = 1; while (f < 3000000000.0) f = f * 2; r = f;", "Float value does not fit in an int"},
      {"int f() { } r = f();", "Function f ended without returning a value"},
      {"void f() { } r = f();", "Function f returns no value"},
      {"r = g(1);", "Undefined function g"},
      {"int f(int a) { return a; } r = f();", "Wrong number of arguments in the call of f"},
      {"int a; float a;", "Redefinition of a"},
      {"float r = 1;", "Redefinition of r"},
      {"int a[0];", "The size of array a must be positive"},
      {"int a[-1];", "The size of array a must be positive"},
      {"int a[1.5];", "The size of array a must be integer"},
      {"int a[2000000];", "Array a is too large"},
      {"int a[2]; r = a[2];", "Index 2 is out of range for a[2]"},
      {"int a[2]; a[-1] = 0;", "Index -1 is out of range for a[2]"},
      {"int a[2]; r = a;", "Array a is used without an index"},
      {"int a[2]; a = 1;", "Array a is used without an index"},
      {"int x; r = x[0];", "x is not an array"},
      {"int a[2]; r = a[0.5];", "The index of a must be integer"},
      {"int f(int n) { return f(n + 1); } r = f(0);", "Recursion is too deep"},
      {"void k() { k(); } k();", "Recursion is too deep"},
      {"int f(int n) { if (n >= 0) { while (1) { int a[1]; return -(1 + 2 * f(n + 1)); } } return 0; }"
       " r = f(0);", "Recursion is too deep"},
  });
}

TEST(Script, ParseErrors) {
  expectErrors({
      {"void f() { return 1; }", "Type of return value must match the definition"},
      {"int f() { return; }", "Type of return value must match the definition"},
      {"return 1;", "Type of return value must match the definition"},
      {"int f() { return 1; } int f() { return 2; }", "Redefinition of f"},
      {"void config_core() { }", "Redefinition of config_core"},
      {"int f(int a, int a) { return 1; }", "Redefinition of a"},
      {"break;", "break outside of a loop"},
      {"if (1) continue;", "continue outside of a loop"},
      {"int a[2] = {1, 2, 3};", "Syntax of array initialization is incorrect"},
      {"int a[2] = 5;", "Syntax of array initialization is incorrect"},
      {"int a[];", "Syntax of array initialization is incorrect"},
      {"int a[2] = {1 2};", "Syntax of array initialization is incorrect"},
      {"int a[2] = {1,, 2};", "Syntax of array initialization is incorrect"},
      {"int a[2] = {1, 2;", "Syntax of array initialization is incorrect"},
      {"int x = {1};", "Syntax of array initialization is incorrect"},
      {"1 = r;", "The left side of = must be a variable"},
      {"r + 1 = 2;", "The left side of = must be a variable"},
      {"r = 1 +;", "Unexpected syntax error"},
      {"r = (1;", "Unexpected syntax error"},
      {"if 1 r = 2;", "Unexpected syntax error"},
      {"int;", "Unexpected syntax error"},
      {"void x;", "Unexpected syntax error"},
      {"r = 1", "Unexpected syntax error"},
      {"{ r = 1;", "Unexpected syntax error"},
      {"if (1) int y;", "Unexpected syntax error"},
      {"void f() { int g() { return 1; } }", "Unexpected syntax error"},
      {"r = $;", "Unexpected symbol $"},
      {"r = 1; /* open", "Unterminated comment"},
  });
}

TEST(Script, ErrorsNameTheirLineAndColumn) {
  const struct {
    const char* script;
    const char* place;
  } cases[] = {
      {"int a = 1;\nint b = a $ 2;", " at line 2, column 11"},       // the stray character
      {"r = 1;\n  r = 1 +;", " at line 2, column 10"},                 // the token the parser stopped at
      {"r = 1; /* open\n", " at line 1, column 8"},                    // where the comment began
      {"int f() {\n  return q;\n}\nr = f();", " at line 2, column 3"},  // the statement that failed
      {"r = 1;\nif (r) r = r / 0;", " at line 2, column 8"},
      {"int a[2] = {1, 2};\n\n   a[2] = 3;", " at line 3, column 4"},
  };
  for (const auto& c : cases) {
    const Outcome o = run(c.script);
    EXPECT_FALSE(o.ok) << c.script;
    EXPECT_EQ(o.place, c.place) << c.script << " -> " << o.error;
  }
}

TEST(Script, FaultAnywhereStopsTheWholeScript) {
  // Scanning and parsing finish before anything runs.
  Outcome o = run("r = 5; r = 1 +;");
  EXPECT_EQ(o.error, "Unexpected syntax error");
  EXPECT_EQ(o.r, 0);
  o = run("r = 5; // $ in a comment is fine\n r = r $");
  EXPECT_EQ(o.error, "Unexpected symbol $");
  EXPECT_EQ(o.r, 0);
}

TEST(Script, NestingIsBounded) {
  std::string deep = "r = " + std::string(300, '(') + "1" + std::string(300, ')') + ";";
  EXPECT_EQ(run(deep).error, "Script is nested too deeply");
  std::string chain = "r = 1";
  for (int i = 0; i < 300; ++i) chain += " + 1";
  EXPECT_EQ(run(chain + ";").error, "Script is nested too deeply");
  std::string blocks = std::string(300, '{') + std::string(300, '}');
  EXPECT_EQ(run(blocks).error, "Script is nested too deeply");
  std::string unary = "r = " + std::string(100000, '-') + "1;";
  EXPECT_EQ(run(unary).error, "Script is nested too deeply");
  chain = "r = 1";
  for (int i = 0; i < 150; ++i) chain += " + 1";
  EXPECT_EQ(run(chain + ";").r, 151);
}

TEST(Script, StepBudgetEndsRunawayScripts) {
  Limits small;
  small.maxSteps = 100000;
  EXPECT_EQ(run("while (1);", small).error, "Script runs too long: more than 100000 steps");
  EXPECT_EQ(run("void f(int n) { if (n) { f(n - 1); f(n - 1); } } f(30);", small).error.substr(0, 20), "Script runs too long");
  // Array cells count as steps, so a loop of big arrays ends just as soon.
  EXPECT_EQ(run("while (1) { int a[50000]; }", small).error.substr(0, 20), "Script runs too long");
  EXPECT_TRUE(run("int a[1000]; int b[1000];", small).ok);  // block exit returns the cells
  EXPECT_TRUE(run("int i = 0; while (i < 1000) { int a[1000]; i = i + 1; }").ok);
}

TEST(Script, BindingsChangeOnlyOnSuccess) {
  int32_t hash = 19;
  int32_t rule = 1;
  Binding bindings[] = {{"info_hash_size", &hash}, {"info_rule", &rule}};
  ScriptResult result = runScript("info_hash_size = 22; info_rule = 2; missing = 1;", bindings);
  EXPECT_FALSE(result.ok);
  EXPECT_EQ(result.error, "Undefined variable missing at line 1, column 37");
  EXPECT_EQ(hash, 19);
  EXPECT_EQ(rule, 1);

  result = runScript("info_hash_size = info_hash_size + info_rule * 2.9; { int info_rule = 7; }", bindings);
  EXPECT_TRUE(result.ok) << result.error;
  EXPECT_EQ(hash, 21);
  EXPECT_EQ(rule, 1);

  EXPECT_TRUE(runScript("", bindings).ok);
  EXPECT_EQ(hash, 21);
}

// The example in the user documentation must keep working.
TEST(Script, DocumentedExample) {
  const char* text = R"(
// config.c
int threads = 2;
info_thread_num = threads;              // search threads
info_hash_size = 20;                    // 2^20 table entries
info_rule = 0;                          /* 0 freestyle, 1 standard, 2 renju */
int minutes(float m) { return m * 60 * 1000; }
int table[3] = {10, 12, 14};
if (info_thread_num > 1) info_thread_split_depth = table[1];
info_max_node = minutes(0.5) * 100;
)";
  int32_t threads = 1, hash = 0, rule = 2, split = 8, nodes = 0;
  Binding bindings[] = {{"info_thread_num", &threads}, {"info_hash_size", &hash},
                        {"info_rule", &rule}, {"info_thread_split_depth", &split},
                        {"info_max_node", &nodes}};
  ScriptResult result = runScript(text, bindings);
  ASSERT_TRUE(result.ok) << result.error;
  EXPECT_EQ(threads, 2);
  EXPECT_EQ(hash, 20);
  EXPECT_EQ(rule, 0);
  EXPECT_EQ(split, 12);
  EXPECT_EQ(nodes, 3000000);
}

}  // namespace
}  // namespace zorva::config
