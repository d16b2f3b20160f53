#include "protocol/analysis_lines.h"

#include <algorithm>

#include "protocol/messages.h"
#include "protocol/output.h"
#include "protocol/progress.h"

namespace zorva {

namespace {

constexpr int32_t kScoreLimit = 10000;
constexpr int64_t kMillion = 1000000;

// A cell as the letter of its column and the number of its row counted
// from the bottom; "-" and 0 when there is none.
struct LetterCell {
  char letter;
  int number;
};
LetterCell letterCell(Move m, int height) {
  if (m == kNoMove) return {'-', 0};
  return {char('A' + colOf(m)), height - rowOf(m)};
}

int millions(int64_t nodes) { return int(nodes / kMillion); }

}  // namespace

void ProtocolReporter::balance(const Progress& p, int32_t offset, int32_t score, std::span<const Move> stones,
                               bool final) {
  const LetterCell a = letterCell(stones[0], height_);
  const int32_t shown = std::min(score, kScoreLimit);
  if (stones.size() == 1) {
    sendLine(final ? reply::kBalanceOneFinal : reply::kBalanceOneDepth, p.depth, p.reach, -offset, shown,
             long(p.elapsedMs), millions(p.nodes), a.letter, a.number);
    return;
  }
  const LetterCell b = letterCell(stones[1], height_);
  sendLine(final ? reply::kBalanceTwoFinal : reply::kBalanceTwoDepth, p.depth, p.reach, -offset, shown,
           long(p.elapsedMs), millions(p.nodes), a.letter, a.number, b.letter, b.number);
}

void ProtocolReporter::nbest(std::span<const RankedMove> moves) {
  int rank = 0;
  for (const RankedMove& m : moves) {
    const LetterCell c = letterCell(m.move, height_);
    sendLine(reply::kNBestLine, ++rank, m.depth, displayedValue(m.value, m.depth, false), c.letter, c.number,
             long(m.elapsedMs), millions(m.nodes));
  }
}

void ProtocolReporter::defence(std::span<const RankedMove> holding) {
  int rank = 0;
  for (const RankedMove& m : holding) {
    const LetterCell c = letterCell(m.move, height_);
    sendLine(reply::kDefendLine, reply::kDefendVariants[defendVariant_], ++rank, m.depth, displayedValue(m.value, m.depth, false), c.letter, c.number,
             long(m.elapsedMs), millions(m.nodes));
  }
}

void ProtocolReporter::noDefence(const RankedMove& longest, int lossPlies) {
  const LetterCell c = letterCell(longest.move, height_);
  sendLine(reply::kDefendNone, reply::kDefendVariants[defendVariant_], longest.depth, lossPlies, c.letter, c.number, long(longest.elapsedMs),
           millions(longest.nodes));
}

void ProtocolReporter::swapAnswer(SwapStep step, bool swap) {
  sendLine(step == SwapStep::First ? reply::kSwap2First : reply::kSwap2Second, swap ? reply::kYes : reply::kNo);
}

void ProtocolReporter::swapStones(Move fourth, Move fifth) {
  // Cells as their row and column; -1 -1 when no pair was found.
  const auto row = [](Move m) { return m == kNoMove ? -1 : rowOf(m); };
  const auto col = [](Move m) { return m == kNoMove ? -1 : colOf(m); };
  sendLine(reply::kSwap2Fourth, row(fourth), col(fourth));
  sendLine(reply::kSwap2Fifth, row(fifth), col(fifth));
}

void ProtocolReporter::fifthOffers(std::span<const Move> cells) {
  sendLine(reply::kSoosorvOffersBegin);
  for (const Move m : cells) sendLine(reply::kSoosorvOffer, rowOf(m), colOf(m));
  sendLine(reply::kSoosorvOffersEnd);
}

void ProtocolReporter::fifthOffersShort() { sendLine(reply::kUnexpectedError); }

void ProtocolReporter::fifthChoice(Move cell) { sendLine(reply::kSoosorvChoice, rowOf(cell), colOf(cell)); }

}  // namespace zorva
