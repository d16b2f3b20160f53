#pragma once
// The configuration script "config.c": runs a script against the engine
// variables bound to it.

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace zorva::config {

// An engine variable the script sees as a global int of this name.
struct Binding {
  const char* name;
  int32_t* value;
};

struct ScriptResult {
  bool ok;
  std::string error;  // the message alone, without the "ERROR (config) " prefix
};

// Resource bounds of one run. Every evaluated expression node and executed
// statement is one step, and each array cell initialised is one more.
// Depth counts the evaluator's own nesting (calls, statements, expressions):
// 2000 keeps the native stack below about 0.5 MB in a release build and below
// 4 MB with address sanitizer, and lets a simple recursive function such as
// "int f(int n) { if (n == 0) return 0; return 1 + f(n - 1); }" go about 500
// calls deep.
struct Limits {
  int64_t maxSteps = 20'000'000;
  int maxDepth = 2000;
  int64_t maxArrayCells = 1 << 20;  // live array cells of the whole script
};

// Runs the whole script. Bound variables start with *value; on success their
// final values are written back; on any error nothing is written back, so a
// configuration is never half applied. Exactly one message per failing script.
ScriptResult runScript(std::string_view text, std::span<const Binding> bindings);
ScriptResult runScript(std::string_view text, std::span<const Binding> bindings,
                       const Limits& limits);

}  // namespace zorva::config
