// Feeds arbitrary bytes to the configuration script interpreter. Besides the
// sanitizers, it checks the contract of runScript: a failing script reports
// one non-empty line and leaves the bound variables untouched.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "config/script.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace zorva::config;
  std::string_view text(reinterpret_cast<const char*>(data), size);
  int32_t hash = 19;
  int32_t rule = 2;
  Binding bindings[] = {{"info_hash_size", &hash}, {"info_rule", &rule}};
  // Smaller than the defaults so that each input stays fast; the bounds
  // themselves are what is being exercised.
  Limits limits;
  limits.maxSteps = 200000;
  limits.maxArrayCells = 65536;
  ScriptResult result = runScript(text, bindings, limits);
  if (result.ok != result.error.empty()) __builtin_trap();
  if (!result.ok) {
    if (result.error.find('\n') != std::string::npos) __builtin_trap();
    if (hash != 19 || rule != 2) __builtin_trap();
  }
  return 0;
}
