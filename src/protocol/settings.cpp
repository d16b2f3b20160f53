#include "protocol/settings.h"

#include <cstring>

#include "protocol/commands.h"
#include "protocol/database_commands.h"
#include "protocol/engine_state.h"
#include "protocol/scan.h"

namespace zorva {

namespace {

constexpr int kRuleRenju = 2;
constexpr int kRenjuBit = 4;

using Field = Relaxed<int32_t> Settings::*;

struct InfoKey {
  const char* key;
  Field field;
};

// Tested in this order; no key is a prefix of another.
constexpr InfoKey kInfoKeys[] = {
    {"max_memory", &Settings::maxMemory},
    {"timeout_match", &Settings::timeoutMatch},
    {"timeout_turn", &Settings::timeoutTurn},
    {"time_left", &Settings::timeLeft},
    {"game_type", &Settings::gameType},
    {"max_depth", &Settings::maxDepth},
    {"start_depth", &Settings::startDepth},
    {"max_node", &Settings::maxNode},
    {"time_increment", &Settings::timeIncrement},
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
    {"hash_size", &Settings::hashSize},
    {"show_detail", &Settings::showDetail},
    {"rule", &Settings::rule},
};

void applyNumber(Field field, int32_t value) {
  Settings& s = engine.settings;
  if (field == &Settings::rule) value = normaliseRule(value);
  if (field == &Settings::hashSize && value < 1) value = 1;
  s.*field = value;
  if (field == &Settings::pondering && value == 0) engine.ponderActive = 0;
  if (field == &Settings::useDatabase) applyUseDatabase(value);
}

void copyFolder(const char* text) {
  std::strncpy(engine.settings.folder, text, kFolderLength - 1);
  engine.settings.folder[kFolderLength - 1] = '\0';
}

}  // namespace

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
