#include "protocol/settings.h"

#include <algorithm>
#include <climits>
#include <cstring>

#include "protocol/commands.h"
#include "protocol/database_commands.h"
#include "protocol/engine_state.h"
#include "protocol/scan.h"
#include "protocol/think_thread.h"

namespace zorva {

namespace {

constexpr int kRuleRenju = 2;
constexpr int kRenjuBit = 4;

constexpr int32_t kLeast = INT32_MIN, kMost = INT32_MAX;

struct InfoKey {
  const char* key;
  SettingField field;
  // The range the code takes: times never run backwards, depths stay within
  // the deepest line a board holds (beyond it the search's depth arithmetic
  // and its internal deepening would run away), the table has at least one
  // bucket. Other settings are flags or are limited where they are used.
  int32_t least = kLeast;
  int32_t most = kMost;
};

// Tested in this order; no key is a prefix of another.
constexpr InfoKey kInfoKeys[] = {
    {"max_memory", &Settings::maxMemory},
    {"timeout_match", &Settings::timeoutMatch, 0},
    {"timeout_turn", &Settings::timeoutTurn, 0},
    {"time_left", &Settings::timeLeft, 0},
    {"game_type", &Settings::gameType},
    {"max_depth", &Settings::maxDepth, 0, kMaxDepth},
    {"start_depth", &Settings::startDepth, 1, kMaxDepth},
    {"max_node", &Settings::maxNode},
    {"time_increment", &Settings::timeIncrement, 0},
    {"caution_factor", &Settings::cautionFactor},
    {"thread_num", &Settings::threadNum},
    {"thread_split_depth", &Settings::threadSplitDepth},
    {"three_def", &Settings::threeDef},
    {"earlystop", &Settings::earlyStop},
    {"nbestsym", &Settings::nbestSym},
    {"dbdepthwl", &Settings::dbDepthWl},
    {"checkmate", &Settings::checkmate},
    {"usedatabase", &Settings::useDatabase},
    {"pondering", &Settings::pondering},
    {"hash_size", &Settings::hashSize, 1},
    {"show_detail", &Settings::showDetail},
    {"rule", &Settings::rule},
};

void applyNumber(SettingField field, int32_t value) {
  Settings& s = engine.settings;
  s.*field = settingValue(field, value);
  if (field == &Settings::pondering && value == 0) engine.ponderActive = 0;
  if (field == &Settings::useDatabase) applyUseDatabase(value);
  if (field == &Settings::hashSize || field == &Settings::rule) prepareTableWhileIdle();
}

void copyFolder(const char* text) {
  std::strncpy(engine.settings.folder, text, kFolderLength - 1);
  engine.settings.folder[kFolderLength - 1] = '\0';
}

}  // namespace

int32_t settingValue(SettingField field, int32_t value) {
  if (field == &Settings::rule) return normaliseRule(value);
  for (const InfoKey& k : kInfoKeys)
    if (k.field == field) return std::clamp(value, k.least, k.most);
  return value;
}

int normaliseRule(int code) { return (code & kRenjuBit) || code == kRuleRenju ? kRuleRenju : code & 1; }

void handleInfo(const char* args) {
  if (const char* value = matchCommand("folder", args)) {
    copyFolder(value);
    return;
  }
  for (const InfoKey& k : kInfoKeys)
    if (const char* value = matchCommand(k.key, args)) applyNumber(k.field, parseDecimal(value));
}

}  // namespace zorva
