#pragma once
// The fifth-move decisions of the Soosorv rule. The side to move after four
// stones offers a number of fifth moves and the opponent takes the one it
// likes best, so the offers are the moves best for the side that offers
// them: however the opponent chooses, it gains as little as the position
// allows. The opponent's choice is the offer after which it stands best.
// Both come from the opening database when it holds values for every move
// concerned, else from a search within the budget of a swap decision.
#include <span>

#include "analysis/analysis_search.h"
#include "board/types.h"
#include "search/context.h"

namespace zorva {

// The largest count a database record can hold, "Z".
constexpr int kMaxFifthOffers = 35;

class SoosorvReporter {
 public:
  virtual ~SoosorvReporter() = default;
  // The fifth moves offered, best first.
  virtual void fifthOffers(std::span<const Move> cells) = 0;
  // Fewer usable, distinct cells than offers were asked for.
  virtual void fifthOffersShort() = 0;
  // The offer taken.
  virtual void fifthChoice(Move cell) = 0;
};

// The database is on and loaded.
bool bookInUse(const SearchContext& ctx);

// What the command asked for; written only while the think thread is idle.
struct FifthMoveRequest {
  int offers = 1;
  int candidateCount = 0;
  Move candidates[kMaxFifthOffers] = {};
};
FifthMoveRequest& fifthMoveRequest();

// Offers `count` distinct fifth moves on the game position: no two give
// positions that are images of each other, none is forbidden for Renju
// black or unusable for the side. A stop offers the best ranked so far,
// topped up by the static evaluation.
void runFifthOffers(AnalysisSearch& search, SoosorvReporter& reporter, int count);
// Chooses among `candidates`, each an empty cell the side to move may play;
// a stop takes the best of the last finished pass.
void runFifthChoice(AnalysisSearch& search, SoosorvReporter& reporter, std::span<const Move> candidates);

}  // namespace zorva
