#include "search/report.h"

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

void reportDepth(int depth, int minRemainingDepth, int32_t value, int64_t elapsedMs, int64_t nodes, Move best,
                 int boardHeight, bool aborted) {
  const char* format = aborted ? "MESSAGE DETAIL DEPTH:%d-%d* VAL:%d TIME:%ldms NODE:%dm [%c,%d]"
                               : "MESSAGE DETAIL DEPTH:%d-%d VAL:%d TIME:%ldms NODE:%dm [%c,%d]";
  const bool hasMove = best != kNoMove;
  sendLine(format, depth, depth - minRemainingDepth, std::clamp(value, -kDisplayLimit, kDisplayLimit), long(elapsedMs),
           int(nodes / kMillion), hasMove ? columnLetter(best) : '-', hasMove ? boardHeight - rowOf(best) : 0);
}

void reportTurn(const TurnSummary& s, const Line& bestLine, int boardHeight) {
  const int32_t shown = displayedValue(s.value, s.depth, s.aborted);
  const long speed = long(s.nodes / (s.elapsedMs + 1));
  const int reach = s.depth - s.minRemainingDepth;
  if (s.showDetail) {
    sendLine("MESSAGE Depth: %d-%d | Time: %ldms | Node: %dm", s.depth, reach, long(s.elapsedMs),
             int(s.nodes / kMillion));
    sendLine("MESSAGE Speed: %ld | Evaluation: %d %s", speed, shown, valueLabel(shown));
  } else {
    sendLine("MESSAGE %d | %d | %ldms | %ld | %d %s", s.depth, reach, long(s.elapsedMs), speed, shown,
             valueLabel(shown));
  }
  std::string text = s.showDetail ? "Bestline: " : "";
  const int shownMoves = std::min(bestLine.length, std::max(s.depth, 0));
  for (int i = 0; i < shownMoves; ++i) appendCell(text, bestLine.moves[i], boardHeight, s.showDetail);
  sendLine("MESSAGE %s", text.c_str());
}

// Printed from inside the search, so built in a fixed buffer.
void reportRealtimeLine(const Move* moves, int length) {
  char text[sizeof reply::kRealtimePv + 8 * kMaxLine];
  int n = std::snprintf(text, sizeof text, "%s", reply::kRealtimePv);
  for (int i = 0; i < length && i < kMaxLine; ++i)
    n += std::snprintf(text + n, sizeof text - n, reply::kRealtimePvCell, rowOf(moves[i]), colOf(moves[i]));
  sendLine("%s", text);
}

void reportBlockedCells(const int32_t* blockTable, int boardWidth, int boardHeight) {
  std::string text;
  for (int row = 0; row < boardHeight; ++row)
    for (int col = 0; col < boardWidth; ++col)
      if (blockTable[makeMove(row, col)]) appendCell(text, makeMove(row, col), boardHeight, true);
  if (!text.empty()) sendLine("MESSAGE Block%s", text.c_str());
}

}  // namespace zorva
