#pragma once
// The engine's settings: the values INFO and config.c set, as the manager
// left them. The think driver reads them between depths; the node search
// reads a copy taken when it starts (SearchSettings).
#include <cstdint>

#include "board/types.h"
#include "search/relaxed.h"

namespace zorva {

constexpr int kFolderLength = 1024;
// No line of play is longer than the board has cells.
constexpr int32_t kMaxDepth = kMaxStones;

// Settings are plain 32-bit words that INFO may change while a search reads them.
struct Settings {
  Relaxed<int32_t> maxMemory{0};
  Relaxed<int32_t> timeoutMatch{100000000};
  Relaxed<int32_t> timeoutTurn{30000};
  Relaxed<int32_t> timeLeft{100000000};
  Relaxed<int32_t> gameType{1};
  Relaxed<int32_t> maxDepth{kMaxDepth};
  Relaxed<int32_t> startDepth{1};
  Relaxed<int32_t> maxNode{2000000000};
  Relaxed<int32_t> timeIncrement{0};
  Relaxed<int32_t> cautionFactor{1};
  Relaxed<int32_t> threadNum{1};
  Relaxed<int32_t> threadSplitDepth{8};
  Relaxed<int32_t> threeDef{1};
  Relaxed<int32_t> earlyStop{1};
  Relaxed<int32_t> nbestSym{0};
  Relaxed<int32_t> dbDepthWl{5};
  Relaxed<int32_t> checkmate{0};
  Relaxed<int32_t> useDatabase{0};
  Relaxed<int32_t> pondering{0};
  Relaxed<int32_t> hashSize{524288};
  Relaxed<int32_t> showDetail{0};
  Relaxed<int32_t> rule{0};
  char folder[kFolderLength] = {};
  // Set only by the configuration script.
  Relaxed<int32_t> boardSize{15};
  Relaxed<int32_t> benchmark{0};
  Relaxed<int32_t> learning{0};
};

}  // namespace zorva
