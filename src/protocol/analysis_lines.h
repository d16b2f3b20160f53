#pragma once
// The analyses' results as protocol lines.
#include <cstdint>
#include <span>

#include "analysis/analysis_report.h"
#include "analysis/soosorv.h"

namespace zorva {

// Prints through the protocol's output: progress cells in letter form, the
// opening rules' answers as row and column.
class ProtocolReporter : public AnalysisReporter, public SoosorvReporter {
 public:
  // `defendVariant`: 0 for the threat-based search-defend, else the solver
  // level its variant is built on (1 or 2).
  explicit ProtocolReporter(int boardHeight, int defendVariant = 0)
      : height_(boardHeight), defendVariant_(defendVariant) {}
  void balance(const Progress& p, int32_t offset, int32_t score, std::span<const Move> stones, bool final) override;
  void nbest(std::span<const RankedMove> moves) override;
  void defence(std::span<const RankedMove> holding) override;
  void noDefence(const RankedMove& longest, int lossPlies) override;
  void swapAnswer(SwapStep step, bool swap) override;
  void swapStones(Move fourth, Move fifth) override;
  void fifthOffers(std::span<const Move> cells) override;
  void fifthOffersShort() override;
  void fifthChoice(Move cell) override;

 private:
  int height_;
  int defendVariant_;
};

}  // namespace zorva
