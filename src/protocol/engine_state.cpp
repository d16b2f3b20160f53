#include "protocol/engine_state.h"

#include "protocol/progress.h"

namespace zorva {

EngineState::EngineState() {
  search.engineSettings = &settings;
  search.think = &think;
  search.stopRequest = &stopFlag;
  search.blockTable = blockTable;
  search.blockPaths = &blockPaths;
  search.database = &database;
  search.observer = &progressLines();
}

EngineState engine;

}  // namespace zorva
