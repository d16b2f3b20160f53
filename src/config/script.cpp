#include "config/script.h"

#include <new>

#include "config/interpreter.h"
#include "config/lexer.h"
#include "config/parser.h"

namespace zorva::config {
namespace {

ScriptResult runChecked(std::string_view text, std::span<const Binding> bindings,
                        const Limits& limits) {
  // The whole text is scanned and parsed before anything runs, so a fault
  // anywhere in the file stops the script before it changes a variable.
  ScanResult scanned = scan(text);
  if (!scanned.error.empty()) return ScriptResult{false, scanned.error};
  ParseResult parsed = parse(scanned.tokens);
  if (!parsed.error.empty()) return ScriptResult{false, parsed.error};

  Interpreter interpreter(parsed.program, limits);
  for (const Binding& b : bindings) interpreter.bind(b.name, b.value ? *b.value : 0);
  if (!interpreter.run()) return ScriptResult{false, interpreter.error()};

  // Read every value first, then write: the bindings change all or none.
  std::vector<int32_t> values;
  values.reserve(bindings.size());
  for (const Binding& b : bindings) {
    std::optional<int32_t> v = interpreter.global(b.name);
    values.push_back(v ? *v : 0);
  }
  for (std::size_t i = 0; i < bindings.size(); ++i) {
    if (bindings[i].value) *bindings[i].value = values[i];
  }
  return ScriptResult{true, {}};
}

}  // namespace

ScriptResult runScript(std::string_view text, std::span<const Binding> bindings) {
  return runScript(text, bindings, Limits{});
}

ScriptResult runScript(std::string_view text, std::span<const Binding> bindings,
                       const Limits& limits) {
  // The script's memory is bounded by Limits, but the host may still be short
  // of memory; that must not escape as an exception either.
  try {
    return runChecked(text, bindings, limits);
  } catch (const std::bad_alloc&) {
    return ScriptResult{false, "Out of memory"};
  }
}

}  // namespace zorva::config
