#include "protocol/cell_body.h"

#include "protocol/commands.h"
#include "protocol/engine_state.h"
#include "protocol/messages.h"
#include "protocol/output.h"
#include "protocol/scan.h"

namespace zorva {

namespace {
bool inStorage(int32_t v) { return v >= 0 && v < kMaxSide; }
}  // namespace

CellBody readCellBody() {
  CellBody body;
  for (;;) {
    const bool more = readInputLine();
    int32_t xy[2];
    if (scanInts(engine.inputLine, "%d,%d", xy) != 2) {
      // At the end of input an empty rest is no malformed line.
      if (!equalsIgnoreCase(engine.inputLine, "DONE") && (more || engine.inputLine[0]))
        sendLine(reply::kErrorCellLine);
      return body;
    }
    if (inStorage(xy[0]) && inStorage(xy[1])) {
      body.cells.push_back(makeMove(xy[0], xy[1]));
    } else {
      sendLine(reply::kErrorCellRange, xy[0], xy[1]);
      body.rejected = true;
    }
    if (!more) return body;
  }
}

}  // namespace zorva
