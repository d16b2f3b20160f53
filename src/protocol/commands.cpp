#include "protocol/commands.h"

#include <cctype>
#include <cstdint>

#include "protocol/analysis_commands.h"
#include "protocol/block_commands.h"
#include "protocol/database_commands.h"
#include "protocol/engine_state.h"
#include "protocol/game.h"
#include "protocol/hash_commands.h"
#include "protocol/line_reader.h"
#include "protocol/messages.h"
#include "protocol/opening_commands.h"
#include "protocol/output.h"
#include "protocol/rules_commands.h"
#include "protocol/scan.h"
#include "protocol/settings.h"
#include "protocol/soosorv_commands.h"
#include "protocol/think_thread.h"
#include "search/searcher.h"
#include "search/tt.h"

namespace zorva {

// The think thread reads the game while it thinks: stop it before any change.
void stopForChange() {
  if (engine.settings.pondering) engine.ponderActive = 0;
  stopThinking();
}

namespace {

std::FILE* inputStream = nullptr;

constexpr int kEnd = 1;
constexpr int kGoOn = 0;
constexpr int kWhoOwn = 1, kWhoOpponent = 2, kWhoBlock = 3;

char upper(char c) { return c >= 'a' && c <= 'z' ? char(c - 'a' + 'A') : c; }

// START and RECTSTART store the new size only once the think thread is idle,
// so that a move still being played is checked against the size it was
// chosen for; a size of 0 still makes ensureGame start a 20x20 game first.
void startWithSize(int32_t width, int32_t height) {
  stopForChange();
  engine.boardWidth = width;
  engine.boardHeight = height;
  ensureGame();
  newGame();
}

// Starts the think thread on a turn for the side to move.
void startTurn() {
  engine.thinkMode = 0;
  startThinking();
}

int cmdInfo(const char* args) {
  handleInfo(args);
  return kGoOn;
}

int cmdStart(const char* args) {
  int32_t size[2] = {0, 0};
  if (scanInts(args, "%d %d", size) == 1) size[1] = size[0];
  startWithSize(size[0], size[1]);
  return kGoOn;
}

int cmdRectStart(const char* args) {
  int32_t size[2];
  if (scanInts(args, "%d ,%d", size) != 2) {
    sendLine(reply::kErrorRectStart);
    return kGoOn;
  }
  startWithSize(size[0], size[1]);
  return kGoOn;
}

int cmdRestart(const char*) {
  preamble();
  newGame(false);
  return kGoOn;
}

// Reads "x,y" into xy; true when both numbers were read and the cell is on the board.
bool readCell(const char* args, int32_t* xy) { return scanInts(args, "%d,%d", xy) == 2 && onBoard(xy[0], xy[1]); }

int cmdTurn(const char* args) {
  preamble();
  int32_t xy[2];
  if (!readCell(args, xy)) {
    sendLine(reply::kErrorCoordinates);
    return kGoOn;
  }
  playOpponentMove(xy[0], xy[1]);
  startTurn();
  return kGoOn;
}

int cmdPlay(const char* args) {
  preamble();
  int32_t xy[2];
  if (!readCell(args, xy)) {
    sendLine(reply::kErrorCoordinates);
    return kGoOn;
  }
  playOwnMove(xy[0], xy[1]);
  sendLine(reply::kMove, xy[0], xy[1]);
  return kGoOn;
}

int cmdBegin(const char*) {
  preamble();
  startTurn();
  return kGoOn;
}

int cmdAbout(const char*) {
  sendLine(reply::kAbout, reply::kEngineName, reply::kAuthor, reply::kVersion, reply::kCountry, reply::kWww);
  return kGoOn;
}

int cmdEnd(const char*) {
  closeDatabaseAtEnd();
  return kEnd;
}

// Reads "x,y,who" lines until one is not a valid entry; that line must be DONE.
void readBoardBody() {
  for (;;) {
    readInputLine();
    int32_t entry[3];
    const bool valid = scanInts(engine.inputLine, "%d,%d,%d", entry) == 3 && onBoard(entry[0], entry[1]);
    const int who = valid ? entry[2] : 0;
    if (who == kWhoOwn)
      playOwnMove(entry[0], entry[1]);
    else if (who == kWhoOpponent)
      playOpponentMove(entry[0], entry[1]);
    else if (who == kWhoBlock)
      placeBlock(entry[0], entry[1]);
    else {
      if (!equalsIgnoreCase(engine.inputLine, "DONE")) sendLine(reply::kErrorBoardLine);
      return;
    }
  }
}

}  // namespace

void preamble() {
  stopForChange();
  ensureGame();
}

void readBoardCommand() {
  preamble();
  engine.think.builtRule = -1;  // a new position: nothing proven about it yet
  readBoardBody();
}

namespace {

int cmdBoard(const char*) {
  readBoardCommand();
  startTurn();
  return kGoOn;
}

int cmdTakeBack(const char* args) {
  preamble();
  int32_t xy[2];
  const TakeBackResult result =
      readCell(args, xy) ? engine.board.takeBack(xy[0], xy[1]) : TakeBackResult::BadCell;
  if (result == TakeBackResult::Done)
    sendLine(reply::kOk);
  else if (result == TakeBackResult::NotAStone)
    sendLine(reply::kUnknown);
  else
    sendLine(reply::kErrorCoordinates);
  return kGoOn;
}

// Asks the running job to stop; it still answers as usual.
int cmdStop(const char*) {
  engine.stopFlag = 1;
  return kGoOn;
}

int cmdDraw(const char*) {
  sendLine(reply::kDraw, engine.think.drawAcceptable ? reply::kDrawAccept : reply::kDrawReject);
  return kGoOn;
}

int cmdResign(const char*) {
  sendLine(reply::kThanks);
  return kGoOn;
}

int cmdPass(const char*) { return kGoOn; }

int cmdShowInfo(const char*) {
  sendLine(reply::kInfoMaxThreads, kMaxSearchers);
  sendLine(reply::kInfoMaxHashSize, TranspositionTable::kMaxSizeExponent);
  return kGoOn;
}

struct Command {
  const char* keyword;
  int (*run)(const char* args);
};

// Tested in this order, first match wins: a keyword must come before every
// keyword it is a prefix of.
constexpr Command kCommands[] = {
    {"info", cmdInfo},
    {"start", cmdStart},
    {"rectstart", cmdRectStart},
    {"restart", cmdRestart},
    {"turn", cmdTurn},
    {"play", cmdPlay},
    {"begin", cmdBegin},
    {"about", cmdAbout},
    {"end", cmdEnd},
    {"board", cmdBoard},
    {"zvboard", cmdSetUpBoard},
    {"zvstop", cmdStop},
    {"zvblockpathreset", cmdBlockPathReset},
    {"zvblockpathundo", cmdBlockPathUndo},
    {"zvblockpath", cmdBlockPath},
    {"zvblockreset", cmdBlockReset},
    {"zvblockundo", cmdBlockUndo},
    {"zvblock", cmdBlock},
    {"zvforbid add", cmdForbidAdd},
    {"zvforbid del", cmdForbidDel},
    {"zvprintfeaturebatch", cmdIgnored},
    {"zvprintfeature", cmdPrintFeature},
    {"takeback", cmdTakeBack},
    {"zvshowforbid", cmdShowForbid},
    {"zvshowinfo", cmdShowInfo},
    {"zvshowhashusage", cmdShowHashUsage},
    {"zvhashclear", cmdHashClear},
    {"zvhashdump", cmdHashDump},
    {"zvhashload", cmdHashLoad},
    {"zvbalancetwo", cmdBalanceTwo},
    {"zvbalanceone", cmdBalanceOne},
    {"zvnbest", cmdNBest},
    {"zvsearchdefend", cmdSearchDefend},
    {"zvsavedatabase", cmdIgnored},
    {"zvloaddatabase", cmdIgnored},
    {"zvswap2step1", cmdSwap2Step1},
    {"zvswap2step2", cmdSwap2Step2},
    {"zvswap2step3", cmdSwap2Step3},
    {"zvsoosorvstep1", cmdSoosorvStep1},
    {"zvsoosorvstep2", cmdSoosorvStep2},
    {"zvsoosorvstep3", cmdSoosorvStep3},
    {"zvsoosorvstep4", cmdSoosorvStep4},
    {"zvsoosorvstep5", cmdSoosorvStep5},
    {"zvsoosorvstep6", cmdSoosorvStep6},
    {"zvdraw", cmdDraw},
    {"zvresign", cmdResign},
    {"zvpass", cmdPass},
    {"zvdbtotxt", cmdDbToTxt},
    {"zvtxttodb", cmdTxtToDb},
    {"zvdbcheck", cmdDbCheck},
    {"zvsetdatabase", cmdSetDatabase},
    {"zvedittvddatabase", cmdEditTvdDatabase},
    {"zveditrawmsgdatabase", cmdEditRawMsgDatabase},
    {"zvdeletedatabaseone", cmdDeleteDatabaseOne},
    {"zvdeletedatabaseall", cmdDeleteDatabaseAll},
    {"zvdeletedatabaseiso", cmdIgnored},
    {"zvquerydatabaseone", cmdQueryDatabaseOne},
    {"zvquerydatabaseall", cmdQueryDatabaseAll},
};

}  // namespace

const char* matchCommand(const char* keyword, const char* line) {
  for (; *keyword; ++keyword, ++line)
    if (upper(*keyword) != upper(*line)) return nullptr;
  while (std::isspace(static_cast<unsigned char>(*line))) ++line;
  return line;
}

int handleCommand() {
  for (const Command& command : kCommands)
    if (const char* args = matchCommand(command.keyword, engine.inputLine)) return command.run(args);
  sendLine(reply::kUnknownCommand);
  return kGoOn;
}

void setInput(std::FILE* stream) { inputStream = stream; }

bool readInputLine() { return readLine(inputStream ? inputStream : stdin, engine.inputLine, kLineBuffer); }

}  // namespace zorva
