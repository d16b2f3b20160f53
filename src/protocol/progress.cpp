#include "protocol/progress.h"

#include <algorithm>
#include <cstdio>
#include <string>

#include "protocol/messages.h"
#include "protocol/output.h"
#include "search/tt.h"

namespace zorva {

namespace {

constexpr int32_t kDisplayLimit = 10000;
constexpr int32_t kAbortedDisplayLimit = 9999;
constexpr int32_t kLabelMargin = 500;
constexpr int64_t kMillion = 1000000;

char columnLetter(Move m) { return char('A' + colOf(m)); }

void appendCell(std::string& text, Move m, int boardHeight, bool letters) {
  char cell[32];
  if (letters)
    std::snprintf(cell, sizeof cell, "[%c%d] ", columnLetter(m), boardHeight - rowOf(m));
  else
    std::snprintf(cell, sizeof cell, "[%d,%d] ", rowOf(m) + 1, colOf(m) + 1);
  text += cell;
}

}  // namespace

int32_t displayedValue(int32_t value, int depth, bool aborted) {
  if (value >= kProvenBound)
    value -= depth;
  else if (value < -(kProvenBound - 1))
    value += depth;
  const int32_t limit = aborted ? kAbortedDisplayLimit : kDisplayLimit;
  return std::clamp(value, -limit, limit);
}

const char* valueLabel(int32_t displayed) {
  return displayed > kLabelMargin ? ":-)" : displayed < -kLabelMargin ? ":-(" : "";
}

ProgressLines& progressLines() {
  static ProgressLines lines;
  return lines;
}

const char* ruleName(int rule) {
  return rule == kFreestyle ? "Gomoku (Freestyle)" : rule == kStandard ? "Gomoku (Standard)" : "Renju";
}

void ProgressLines::rootPass() { sendLine(reply::kRealtimeRefresh); }

void ProgressLines::rootMoveStarted(Move m) { sendLine(reply::kRealtimePos, rowOf(m), colOf(m)); }

void ProgressLines::rootMoveDone(Move m, bool lost) {
  sendLine(reply::kRealtimeDone, rowOf(m), colOf(m));
  if (lost) sendLine(reply::kRealtimeLose, rowOf(m), colOf(m));
}

// The line is built in a fixed buffer: this runs inside the search.
void ProgressLines::rootBest(Move m, int32_t value, const Move* line, int length) {
  sendLine(reply::kRealtimeBest, rowOf(m), colOf(m));
  sendLine(reply::kRealtimeVal, std::clamp(value, -kDisplayLimit, kDisplayLimit));
  char text[sizeof reply::kRealtimePv + 8 * kMaxLine];
  int n = std::snprintf(text, sizeof text, "%s", reply::kRealtimePv);
  for (int i = 0; i < length && i < kMaxLine; ++i)
    n += std::snprintf(text + n, sizeof text - n, reply::kRealtimePvCell, rowOf(line[i]), colOf(line[i]));
  sendLine("%s", text);
}

void ProgressLines::depthDone(const DepthReport& d) {
  const char* format = d.aborted ? reply::kDepthCut : reply::kDepthDone;
  const bool hasMove = d.best != kNoMove;
  sendLine(format, d.depth, d.depth - d.minRemainingDepth, std::clamp(d.value, -kDisplayLimit, kDisplayLimit),
           long(d.elapsedMs), int(d.nodes / kMillion), hasMove ? columnLetter(d.best) : '-',
           hasMove ? d.boardHeight - rowOf(d.best) : 0);
}

void ProgressLines::turnDone(const TurnSummary& s, const Line& bestLine, const int32_t* blockTable) {
  const int32_t shown = displayedValue(s.value, s.depth, s.aborted);
  const long speed = long(s.nodes / (s.elapsedMs + 1));
  const int reach = s.depth - s.minRemainingDepth;
  if (s.showDetail) {
    sendLine(reply::kTurnDepth, s.depth, reach, long(s.elapsedMs),
             int(s.nodes / kMillion));
    sendLine(reply::kTurnSpeed, speed, shown, valueLabel(shown));
  } else {
    sendLine(reply::kTurnSummary, s.depth, reach, long(s.elapsedMs), speed, shown,
             valueLabel(shown));
  }
  std::string text = s.showDetail ? reply::kBestLineLabel : "";
  const int shownMoves = std::min(bestLine.length, std::max(s.depth, 0));
  for (int i = 0; i < shownMoves; ++i) appendCell(text, bestLine.moves[i], s.boardHeight, s.showDetail);
  sendLine(reply::kBestLine, text.c_str());
  if (!s.showDetail || !blockTable) return;
  // Reminds the user which cells the engine was not allowed to choose.
  std::string blocked;
  for (int row = 0; row < s.boardHeight; ++row)
    for (int col = 0; col < s.boardWidth; ++col)
      if (blockTable[makeMove(row, col)]) appendCell(blocked, makeMove(row, col), s.boardHeight, true);
  if (!blocked.empty()) sendLine(reply::kBlockedCells, blocked.c_str());
}

void ProgressLines::ruleSetUp(int rule) { sendLine(reply::kRule, ruleName(rule)); }

void ProgressLines::tableRefused(uint64_t wantedMiB, uint64_t heldMiB) {
  sendLine(reply::kHashRefused, (unsigned long long)wantedMiB, (unsigned long long)heldMiB);
}

}  // namespace zorva
