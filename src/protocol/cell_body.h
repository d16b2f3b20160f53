#pragma once
// The "x,y" lines that several commands read after their own line, up to DONE.
#include <vector>

#include "board/types.h"

namespace zorva {

struct CellBody {
  std::vector<Move> cells;  // in the order read, each inside the 22 x 22 storage
  bool rejected = false;    // some cell lay outside it and was left out
};

// Reads lines until DONE (any case) or the end of input. A cell outside
// 0..21 in either coordinate gets an error line and is left out, since it
// would alias another cell's key; any other line ends the body with an
// error line, as a malformed BOARD line does.
CellBody readCellBody();

}  // namespace zorva
