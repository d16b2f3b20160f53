#include "protocol/game.h"

#include <algorithm>

#include "protocol/engine_state.h"
#include "protocol/messages.h"
#include "protocol/output.h"
#include "protocol/progress.h"
#include "protocol/engine_search.h"

namespace zorva {

namespace {

constexpr int kDefaultSide = 20;

bool sizeAllowed(int side) { return side >= 1 && side <= kMaxSide; }

bool emptyCell(int x, int y) { return onBoard(x, y) && engine.board.at(makeMove(x, y)) == EMPTY; }

bool placeForSideToMove(int x, int y) {
  if (!emptyCell(x, y)) return false;
  std::lock_guard lock(engine.boardLock);  // the think thread plays its move while commands read
  engine.board.placeStone(makeMove(x, y), engine.board.sideToMove());
  return true;
}

}  // namespace

// The recorded size and the board agree except after a refused size, when
// only the board's own rectangle is safe to write to.
bool onBoard(int x, int y) {
  return x >= 0 && y >= 0 && x < engine.boardHeight && y < engine.boardWidth && engine.board.inside(x, y);
}

void ensureGame() {
  if (engine.boardWidth != 0) return;
  engine.boardWidth = engine.boardHeight = kDefaultSide;
  newGame();
}

void newGame(bool checkSize) {
  if (checkSize && (!sizeAllowed(engine.boardWidth) || !sizeAllowed(engine.boardHeight))) {
    sendLine(reply::kErrorBoardSize);
    return;
  }
  engine.maxSide = std::max(engine.boardWidth, engine.boardHeight);
  engine.think.builtRule = -1;
  sendLine(reply::kGreeting, reply::kEdition, reply::kVersion);
  engine.board.reset(engine.boardWidth, engine.boardHeight, engine.settings.rule);
  prepareTable(progressLines());
  sendLine(reply::kOk);
}

bool playOpponentMove(int x, int y) {
  if (placeForSideToMove(x, y)) return true;
  sendLine(reply::kErrorOpponentMove, x, y);
  return false;
}

bool playOwnMove(int x, int y) {
  if (x == -1) {
    sendLine(reply::kPass);
    return false;
  }
  if (placeForSideToMove(x, y)) return true;
  sendLine(reply::kErrorOwnMove, x, y);
  return false;
}

bool placeBlock(int x, int y) {
  if (emptyCell(x, y)) {
    engine.board.placeStone(makeMove(x, y), WALL);
    return true;
  }
  sendLine(reply::kErrorBlockMove, x, y);
  return false;
}

}  // namespace zorva
