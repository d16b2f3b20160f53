#pragma once
// INFO: the manager's settings, stored in EngineState.

namespace zorva {

// Applies "key value" (the text behind INFO). Never replies.
void handleInfo(const char* args);

// Rule code as stored: 4..7 and 2 mean Renju, otherwise the lowest bit.
int normaliseRule(int code);

}  // namespace zorva
