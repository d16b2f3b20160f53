#include "protocol/rules_commands.h"

#include <cstdio>
#include <initializer_list>
#include <mutex>

#include "board/forbid.h"
#include "protocol/commands.h"
#include "protocol/engine_state.h"
#include "protocol/messages.h"
#include "protocol/output.h"

namespace zorva {

namespace {

constexpr int kGoOn = 0;

// A copy of the game board under the rule now set. These commands run
// without stopping the think thread, so they must not write the game board
// (the forbidden-point test places stones) and take the rule as it is now,
// even before the next search has applied it to the game board.
Board& inspectionBoard() {
  static Board view;
  {
    std::lock_guard lock(engine.boardLock);
    copyBoard(engine.board, view);
  }
  view.setRule(engine.settings.rule);
  return view;
}

// Forbidden for black: by the Renju test or declared by the user's marks.
bool forbiddenCell(Board& b, int x, int y) {
  if (!b.inside(x, y)) return false;
  const Move m = makeMove(x, y);
  return b.at(m) == EMPTY && (b.isMarked(m, BLACK) || isForbidden(b, m));
}

// One "MESSAGE" line of a feature block: a number per column.
template <class Value>
void sendFeatureRow(Value value) {
  char text[16 + 4 * kMaxSide];
  int n = std::snprintf(text, sizeof text, "%s", reply::kFeatureRow);
  for (int y = 0; y < engine.boardWidth && y < kMaxSide; ++y)
    n += std::snprintf(text + n, sizeof text - n, reply::kFeatureValue, value(y));
  sendLine("%s", text);
}

}  // namespace

int cmdSetUpBoard(const char*) {
  readBoardCommand();
  return kGoOn;
}

int cmdShowForbid(const char*) {
  if (engine.settings.rule != kRenju) return kGoOn;
  Board& b = inspectionBoard();
  char text[16 + 4 * kMaxStones];
  int n = std::snprintf(text, sizeof text, "%s", reply::kForbidHead);
  for (int x = 0; x < engine.maxSide && x < kMaxSide; ++x)
    for (int y = 0; y < engine.maxSide && y < kMaxSide; ++y)
      if (forbiddenCell(b, x, y)) n += std::snprintf(text + n, sizeof text - n, reply::kForbidCell, x, y);
  std::snprintf(text + n, sizeof text - n, "%s", reply::kForbidEnd);
  sendLine("%s", text);
  return kGoOn;
}

// Eight blocks of codes (black's four directions, then white's), one line a
// row, each followed by an empty message; then the forbidden cells, 1 or 0.
int cmdPrintFeature(const char*) {
  Board& b = inspectionBoard();
  const int rows = engine.boardHeight < kMaxSide ? engine.boardHeight : kMaxSide;
  for (Colour colour : {BLACK, WHITE})
    for (int d = 0; d < kDirections; ++d) {
      for (int x = 0; x < rows; ++x)
        sendFeatureRow([&](int y) { return b.inside(x, y) ? int(b.code(makeMove(x, y), colour, d)) : 0; });
      sendLine("%s", reply::kFeatureBlockEnd);
    }
  const bool renju = engine.settings.rule == kRenju;
  for (int x = 0; x < rows; ++x) sendFeatureRow([&](int y) { return renju && forbiddenCell(b, x, y) ? 1 : 0; });
  sendLine("%s", reply::kFeatureBlockEnd);
  return kGoOn;
}

}  // namespace zorva
