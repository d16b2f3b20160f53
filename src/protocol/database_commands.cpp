#include "protocol/database_commands.h"

#include <mutex>
#include <string>
#include <vector>

#include "database/db_commands.h"
#include "protocol/commands.h"
#include "protocol/engine_state.h"
#include "protocol/output.h"
#include "protocol/scan.h"

namespace zorva {

namespace {

constexpr char kDatabaseFile[] = "zorva.db";
// A coordinate outside the storage would alias another cell in x * 32 + y;
// it becomes a cell that is on no board, so the position is never found.
constexpr int32_t kOffBoardCell = 31 * kRowSlots + 31;
constexpr int kGoOn = 0;

void send(const db::Lines& lines) {
  for (const std::string& line : lines) sendLine("%s", line.c_str());
}

// Reads "x,y" lines up to DONE (or any other line) as the moves of a position from the empty board.
std::vector<int32_t> readMoves() {
  std::vector<int32_t> moves;
  for (;;) {
    const bool more = readInputLine();
    int32_t xy[2];
    if (scanInts(engine.inputLine, "%d,%d", xy) != 2) break;
    const bool storable = xy[0] >= 0 && xy[0] < kMaxSide && xy[1] >= 0 && xy[1] < kMaxSide;
    moves.push_back(storable ? xy[0] * kRowSlots + xy[1] : kOffBoardCell);
    if (!more) break;
  }
  return moves;
}

db::Position positionOf(const std::vector<int32_t>& moves) {
  return {engine.settings.rule, engine.boardHeight, engine.boardWidth, moves};
}

std::string nextLine() {
  readInputLine();
  return engine.inputLine;
}

}  // namespace

void openDatabaseAtStart(const char* programFolder) {
  engine.database.setPath(std::string(programFolder) + kDatabaseFile);
  if (engine.settings.useDatabase) send(db::openDatabase(engine.database));
}

void applyUseDatabase(int value) {
  if (value == 0 && engine.database.inUse())
    send(db::closeDatabase(engine.database));
  else if (value != 0 && !engine.database.inUse())
    send(db::openDatabase(engine.database));
}

void closeDatabaseAtEnd() {
  if (engine.database.inUse()) send(db::closeDatabase(engine.database));
}

int cmdSetDatabase(const char*) {
  const std::string name = nextLine();
  send(db::setDatabase(engine.database, name, engine.settings.useDatabase != 0));
  return kGoOn;
}

int cmdQueryDatabaseOne(const char*) {
  const std::vector<int32_t> moves = readMoves();
  send(db::queryOne(engine.database, positionOf(moves)));
  return kGoOn;
}

int cmdQueryDatabaseAll(const char*) {
  const std::vector<int32_t> moves = readMoves();
  static Board board;  // the game board as it is now: the think thread may play its move meanwhile
  {
    std::lock_guard lock(engine.boardLock);
    copyBoard(engine.board, board);
  }
  const auto occupied = [](int32_t cell) {
    return !board.inside(cell / kRowSlots, cell % kRowSlots) || board.at(cell) != EMPTY;
  };
  send(db::queryAll(engine.database, positionOf(moves), occupied));
  return kGoOn;
}

int cmdEditTvdDatabase(const char* args) {
  const std::string fields = args;
  const std::vector<int32_t> moves = readMoves();
  send(db::editTvd(engine.database, fields, positionOf(moves)));
  return kGoOn;
}

int cmdEditRawMsgDatabase(const char* args) {
  const std::string message = args;
  const std::vector<int32_t> moves = readMoves();
  send(db::editRawMsg(engine.database, message, positionOf(moves)));
  return kGoOn;
}

int cmdDeleteDatabaseOne(const char*) {
  const std::vector<int32_t> moves = readMoves();
  send(db::deleteOne(engine.database, positionOf(moves)));
  return kGoOn;
}

int cmdDeleteDatabaseAll(const char*) {
  const std::vector<int32_t> moves = readMoves();
  send(db::deleteAll(engine.database, positionOf(moves),
                     [](const std::string& line) { sendLine("%s", line.c_str()); }));
  return kGoOn;
}

int cmdDbToTxt(const char*) {
  const std::string params = nextLine();
  send(db::dbToTxt(engine.database, params, engine.settings.rule, engine.boardHeight, engine.boardWidth));
  return kGoOn;
}

int cmdTxtToDb(const char*) {
  const std::string name = nextLine();
  send(db::txtToDb(engine.database, name, engine.settings.rule, engine.boardHeight, engine.boardWidth));
  return kGoOn;
}

int cmdDbCheck(const char*) {
  send(db::dbCheck(engine.database));
  return kGoOn;
}

int cmdIgnored(const char*) { return kGoOn; }

}  // namespace zorva
