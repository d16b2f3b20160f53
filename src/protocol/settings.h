#pragma once
// INFO: the manager's settings, stored in EngineState.
#include <cstdint>

#include "protocol/engine_state.h"

namespace zorva {

using SettingField = Relaxed<int32_t> Settings::*;

// `value` brought into the range the engine takes for that setting (the
// rule code normalised), as INFO and the configuration script store it.
int32_t settingValue(SettingField field, int32_t value);

// Applies "key value" (the text behind INFO). Never replies.
void handleInfo(const char* args);

// Rule code as stored: 4..7 and 2 mean Renju, otherwise the lowest bit.
int normaliseRule(int code);

}  // namespace zorva
