// Random and mutated scripts: each must either run or fail with exactly one
// message, the same way every time, without crashing or hanging.

#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <string>

#include "config/script.h"

namespace zorva::config {
namespace {

class ScriptGenerator {
 public:
  explicit ScriptGenerator(uint32_t seed) : rng_(seed) {}

  std::string program() {
    std::string out = "int a = 1; float b = 2.5; int x; int f = 3; int arr[4] = {1, 2};\n";
    int items = 1 + pick(8);
    for (int i = 0; i < items; ++i) out += statement(3, false);
    // Functions are known wherever they stand, so they can come last.
    return out + functions();
  }

  // Deletes, duplicates or inserts a few spans, often cutting tokens in half.
  std::string mutate(std::string text) {
    static const char* const kPieces[] = {"$", "/*", "*/", "//", "{", "}", "(", ")", ";", "[",
                                          "]", "=", "==", ".", "5.", ".5", "int ", "float ",
                                          "return ", "break;", "\n", "\xff", "x", "2147483648"};
    int edits = 1 + pick(4);
    for (int i = 0; i < edits; ++i) {
      std::size_t at = text.empty() ? 0 : static_cast<std::size_t>(pick(static_cast<int>(text.size())));
      std::size_t span = static_cast<std::size_t>(1 + pick(6));
      switch (pick(3)) {
        case 0: text.erase(at, span); break;
        case 1: text.insert(at, text.substr(at, span)); break;
        default: text.insert(at, kPieces[pick(std::size(kPieces))]); break;
      }
    }
    return text;
  }

 private:
  int pick(int n) { return static_cast<int>(rng_() % static_cast<uint32_t>(n)); }
  const char* name() {
    static const char* const kNames[] = {"r", "a", "b", "f", "x", "info_rule"};
    return kNames[pick(6)];  // all int but b
  }

  std::string fresh() { return std::string("v").append(std::to_string(++fresh_)); }

  std::string expr(int depth) {
    static const char* const kOps[] = {"+", "-", "*", "/", "%", "<<", ">>", "<", "<=", ">",
                                       ">=", "==", "!=", "&", "^", "|", "&&", "||"};
    static const char* const kUnary[] = {"-", "!", "~", "+", "(int)", "(float)"};
    int choice = depth <= 0 ? pick(3) : pick(8);
    switch (choice) {
      case 0: return std::to_string(pick(40) - 5);
      case 1:
        if (pick(3)) return std::to_string(pick(9));
        return std::to_string(pick(100)) + "." + std::to_string(pick(10));
      case 2: return name();
      case 3: return std::string(kUnary[pick(6)]) + expr(depth - 1);
      case 4: return "(" + expr(depth - 1) + " " + kOps[pick(18)] + " " + expr(depth - 1) + ")";
      case 5: return pick(4) ? std::string("arr[") + (pick(2) ? "a" : "x") + " & 1]" : "arr[" + expr(depth - 1) + "]";
      case 6: return pick(2) ? "k()" : "g(" + expr(depth - 1) + ", " + expr(depth - 1) + ")";
      default: return "(" + std::string(name()) + " = " + expr(depth - 1) + ")";
    }
  }

  std::string statement(int depth, bool inLoop) {
    int choice = depth <= 0 ? pick(3) : pick(inLoop ? 10 : 8);
    switch (choice) {
      case 0: return std::string(name()) + " = " + expr(2) + ";\n";
      case 1: return std::string(pick(2) ? "{ int " : "{ float ") + fresh() + " = " + expr(2) + "; }\n";
      case 2: return "{ int arr[" + std::to_string(2 + pick(3)) + "] = {" + expr(1) + ", " + expr(1) + "}; }\n";
      case 3: return "if (" + expr(2) + ") " + statement(depth - 1, inLoop) + " else " + statement(depth - 1, inLoop);
      case 4: {
        std::string c = fresh();  // a counter keeps most loops short
        return "{ int " + c + " = 0; while (" + c + " < 4 && " + expr(2) + ") { " + c + " = " + c +
               " + 1; " + statement(depth - 1, true) + statement(depth - 1, true) + "} }\n";
      }
      case 5: return "{ " + statement(depth - 1, inLoop) + statement(depth - 1, inLoop) + "}\n";
      case 6: return "h(" + expr(1) + ");\n";
      case 7: return "// note\n" + statement(depth - 1, inLoop);
      case 8: return "break;\n";
      default: return "continue;\n";
    }
  }

  std::string functions() {
    return "int g(int p, float q) { if (p > 3) return g(p - 1, q) + 1; return p * q; }\n"
           "void h(int p) { while (p > 0) { p = p - 1; r = r + p; } }\n"
           "float k() { " + statement(2, false) + "return " + expr(2) + "; }\n";
  }

  std::mt19937 rng_;
  int fresh_ = 0;
};

TEST(ScriptRobustness, GeneratedAndMutatedScriptsRunOrFailCleanly) {
  ScriptGenerator gen(20240607u);
  Limits limits;
  limits.maxSteps = 20000;
  limits.maxArrayCells = 4096;
  int ran = 0;
  int failed = 0;
  auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < 2500; ++i) {
    std::string text = gen.program();
    if (i % 3 != 0) text = gen.mutate(text);
    int32_t r = 7;
    int32_t rule = 0;
    Binding bindings[] = {{"r", &r}, {"info_rule", &rule}};
    ScriptResult first = runScript(text, bindings, limits);
    if (first.ok) {
      ++ran;
      EXPECT_EQ(first.error, "") << text;
    } else {
      ++failed;
      ASSERT_FALSE(first.error.empty()) << text;
      ASSERT_EQ(first.error.find('\n'), std::string::npos) << text;
      ASSERT_EQ(r, 7) << "bindings changed by a failing script:\n" << text;
    }
    int32_t r2 = 7;
    int32_t rule2 = 0;
    Binding again[] = {{"r", &r2}, {"info_rule", &rule2}};
    ScriptResult second = runScript(text, again, limits);
    ASSERT_EQ(second.ok, first.ok) << text;
    ASSERT_EQ(second.error, first.error) << text;
    ASSERT_EQ(r2, r) << text;
  }
  // Both outcomes must be common, or the generator tests too little.
  EXPECT_GT(ran, 300);
  EXPECT_GT(failed, 300);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

}  // namespace
}  // namespace zorva::config
