#include "protocol/engine_state.h"

namespace zorva {

EngineState engine;

}  // namespace zorva
