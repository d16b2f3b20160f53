#include "protocol/soosorv_commands.h"

#include <algorithm>
#include <mutex>
#include <optional>

#include "protocol/jobs.h"
#include "analysis/soosorv.h"
#include "analysis/soosorv_book.h"
#include "analysis/symmetry.h"
#include "board/forbid.h"
#include "protocol/cell_body.h"
#include "protocol/commands.h"
#include "protocol/engine_state.h"
#include "protocol/game.h"
#include "protocol/messages.h"
#include "protocol/output.h"
#include "protocol/scan.h"
#include "protocol/think_thread.h"

namespace zorva {

namespace {

constexpr int kGoOn = 0;
constexpr int kStonesBeforeFifth = 4;
constexpr int kImageRoom = 8;  // symmetricImages writes at most seven

// Out-of-range cells were left out of the body, so its position would be
// another: such a body is found nowhere.
db::Position bookPosition(const CellBody& body) {
  const size_t moves = body.rejected ? 0 : body.cells.size();
  return {engine.settings.rule, engine.boardHeight, engine.boardWidth,
          std::span<const int32_t>(body.cells.data(), moves)};
}

// Neither a cell declared unusable for the colour nor, for black, a Renju forbidden point.
bool mayPlay(Board& b, Move m, Colour colour) {
  return onBoard(rowOf(m), colOf(m)) && b.at(m) == EMPTY && !b.isMarked(m, colour) &&
         !(b.rule == kRenju && colour == BLACK && isForbidden(b, m));
}

// The blocked cells and the cells declared unusable for a colour belong to
// the board, not to the stones on it.
void keepDeclarations(const Board& from, Board& to) {
  for (int row = 0; row < to.height; ++row)
    for (int col = 0; col < to.width; ++col) {
      const Move m = makeMove(row, col);
      if (from.at(m) == WALL) to.placeStone(m, WALL);
      for (const Colour colour : {BLACK, WHITE})
        if (from.isMarked(m, colour)) to.markCell(m, colour);
    }
}

// The four stones played in turn onto the game board emptied of its stones, in `b`.
bool replayOpening(const CellBody& body, Board& b) {
  if (body.rejected || body.cells.size() != size_t(kStonesBeforeFifth)) return false;
  b.reset(engine.boardWidth, engine.boardHeight, engine.settings.rule);
  keepDeclarations(engine.board, b);
  for (const Move m : body.cells) {
    if (!mayPlay(b, m, b.sideToMove())) return false;
    b.placeStone(m, b.sideToMove());
  }
  return true;
}

// Offers the side to move may play, none twice, none giving a position that
// another offer's position is an image of.
bool legalOffers(const CellBody& body, Board& b) {
  const std::vector<Move>& cells = body.cells;
  if (body.rejected || cells.empty() || cells.size() > size_t(kMaxFifthOffers)) return false;
  const Colour side = b.sideToMove();
  Move images[kImageRoom];
  for (size_t i = 0; i < cells.size(); ++i) {
    if (!mayPlay(b, cells[i], side)) return false;
    const int n = symmetricImages(b, cells[i], side, images);
    for (size_t j = 0; j < i; ++j)
      if (cells[j] == cells[i] || std::find(images, images + n, cells[j]) != images + n) return false;
  }
  return true;
}

// The input thread's board for checking positions: too large for the stack.
Board& scratchBoard() {
  static Board board;
  return board;
}

// The think thread is idle since the preamble; the job starts on what its command stored.
int startJob(int mode) {
  engine.thinkMode = mode;
  startThinking();
  return kGoOn;
}

}  // namespace

int cmdSoosorvStep3(const char*) {
  const CellBody body = readCellBody();
  if (!bookInUse(engine.search)) return kGoOn;
  const std::optional<CountedMove> fourth = bookFourthMove(engine.database, bookPosition(body));
  if (fourth)
    sendLine(reply::kSoosorvFourth, rowOf(fourth->cell), colOf(fourth->cell), fourth->count);
  else
    sendLine(reply::kSoosorvNoFourth);
  return kGoOn;
}

int cmdSoosorvStep4(const char* args) {
  int32_t offers;
  const bool counted = scanInts(args, "%d", &offers) == 1;
  const CellBody body = readCellBody();
  if (!bookInUse(engine.search)) return kGoOn;
  if (!counted) {
    sendLine(reply::kErrorOfferCount);
    return kGoOn;
  }
  const bool swap = bookAcceptsOffers(engine.database, bookPosition(body), offers);
  sendLine(reply::kSoosorvSecond, swap ? reply::kYes : reply::kNo);
  return kGoOn;
}

int cmdSoosorvStep5(const char* args) {
  int32_t offers;
  const bool counted = scanInts(args, "%d", &offers) == 1;
  const CellBody body = readCellBody();
  preamble();
  Board& opening = scratchBoard();
  if (!replayOpening(body, opening)) {
    sendLine(reply::kIllegalSequence);
    return kGoOn;
  }
  if (!counted || offers < 1 || offers > kMaxFifthOffers) {
    sendLine(reply::kIllegalFifthSet);
    return kGoOn;
  }
  {
    std::lock_guard lock(engine.boardLock);
    copyBoard(opening, engine.board);
  }
  engine.think.builtRule = -1;  // a new position: nothing proven about it yet
  fifthMoveRequest().offers = offers;
  return startJob(kModeSoosorvOffers);
}

int cmdSoosorvStep6(const char*) {
  const CellBody body = readCellBody();
  preamble();
  if (engine.board.stoneCount() != kStonesBeforeFifth) {
    sendLine(reply::kIllegalSequence);
    return kGoOn;
  }
  // The game board takes a new rule only at the next search's set-up.
  Board& position = scratchBoard();
  copyBoard(engine.board, position);
  position.setRule(engine.settings.rule);
  if (!legalOffers(body, position)) {
    sendLine(reply::kIllegalFifthSet);
    return kGoOn;
  }
  FifthMoveRequest& request = fifthMoveRequest();
  request.candidateCount = int(body.cells.size());
  std::copy(body.cells.begin(), body.cells.end(), request.candidates);
  return startJob(kModeSoosorvChoice);
}

}  // namespace zorva
