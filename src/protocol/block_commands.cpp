#include "protocol/block_commands.h"

#include <algorithm>
#include <iterator>
#include <mutex>

#include "board/zobrist.h"
#include "protocol/cell_body.h"
#include "protocol/commands.h"
#include "protocol/engine_state.h"
#include "protocol/game.h"
#include "protocol/messages.h"
#include "protocol/output.h"
#include "protocol/scan.h"

namespace zorva {

namespace {

constexpr int kGoOn = 0;

// The search reads these tables without a lock, so every change waits for
// the think thread to be idle.
void setBlocks(int32_t value) {
  const CellBody body = readCellBody();
  stopForChange();
  for (Move m : body.cells) engine.blockTable[m] = value;
}

// The position a sequence of moves from the empty board reaches, keyed as
// the search keys it: the first move black's, the next white's, and so on.
uint64_t pathKey(const CellBody& body) {
  uint64_t key = 0;
  for (size_t i = 0; i < body.cells.size(); ++i) key ^= zobristKeys[body.cells[i]][i % 2 == 0 ? BLACK : WHITE];
  return key;
}

// Reads a path and tells whether it may change the set: a path with a
// rejected cell names no position, and a full set takes no change at all.
bool readPath(CellBody* body) {
  *body = readCellBody();
  stopForChange();
  if (engine.blockPaths.count() >= BlockPaths::kCapacity) {
    sendLine(reply::kErrorTooManyBlockPaths);
    return false;
  }
  return !body->rejected && !body->cells.empty();
}

// "x y c": a cell of the board and c, which must be 0 or 1 and means nothing else.
bool readForbidCell(const char* args, Move* m) {
  int32_t v[3];
  if (scanInts(args, "%d %d %d", v) != 3 || !onBoard(v[0], v[1]) || (v[2] != 0 && v[2] != 1)) return false;
  *m = makeMove(v[0], v[1]);
  return true;
}

}  // namespace

int cmdBlock(const char*) {
  setBlocks(1);
  return kGoOn;
}

int cmdBlockUndo(const char*) {
  setBlocks(0);
  return kGoOn;
}

int cmdBlockReset(const char*) {
  stopForChange();
  std::fill(std::begin(engine.blockTable), std::end(engine.blockTable), 0);
  return kGoOn;
}

int cmdBlockPath(const char*) {
  CellBody body;
  if (!readPath(&body)) return kGoOn;
  engine.blockPaths.add(pathKey(body));
  for (Move m : body.cells) engine.blockPaths.mark(m);
  return kGoOn;
}

int cmdBlockPathUndo(const char*) {
  CellBody body;
  if (readPath(&body)) engine.blockPaths.remove(pathKey(body));
  return kGoOn;
}

int cmdBlockPathReset(const char*) {
  stopForChange();
  engine.blockPaths.reset();
  return kGoOn;
}

// A declared cell is a wall for black: the codes around it are re-read, the
// forbidden-point test and the search treat it as unplayable for black.
int cmdForbidAdd(const char* args) {
  Move m;
  if (!readForbidCell(args, &m)) return kGoOn;
  stopForChange();
  std::lock_guard lock(engine.boardLock);
  engine.board.markCell(m, BLACK);
  return kGoOn;
}

int cmdForbidDel(const char* args) {
  Move m;
  if (!readForbidCell(args, &m)) return kGoOn;
  stopForChange();
  std::lock_guard lock(engine.boardLock);
  engine.board.unmarkCell(m, BLACK);
  return kGoOn;
}

}  // namespace zorva
