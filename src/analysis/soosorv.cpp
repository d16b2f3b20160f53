#include "analysis/soosorv.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "analysis/analysis_report.h"
#include "analysis/narrowing.h"
#include "analysis/nbest.h"
#include "analysis/soosorv_book.h"
#include "analysis/symmetry.h"
#include "search/driver.h"
#include "search/movegen.h"

namespace zorva {

namespace {

// The ranking's two phases (the best move, then the others) share one
// decision budget.
constexpr int32_t kRankingPhases = 2;
// A target beyond every value, proven wins included: distance from it ranks
// candidates by value alone.
constexpr int32_t kBeyondAnyValue = 20000000;
constexpr int kImageRoom = 8;  // symmetricImages writes at most seven

struct Offers {
  int count = 0;
  Move cells[kMaxFifthOffers];
  std::span<const Move> view() const { return {cells, size_t(count)}; }
};

db::Position positionOf(const Board& b) {
  return {b.rule, b.height, b.width, std::span<const int32_t>(b.moves, size_t(b.moveCount))};
}

bool isImageOfOffer(const Board& b, const Offers& offers, Move m, Colour side) {
  Move images[kImageRoom];
  for (const Move offered : offers.view()) {
    const int n = symmetricImages(b, offered, side, images);
    if (offered == m || std::find(images, images + n, m) != images + n) return true;
  }
  return false;
}

// Adds `m` unless the offers are complete, the side may not play it, or it
// repeats an offer up to symmetry.
void offer(const SearchContext& ctx, Board& b, Offers& offers, int wanted, Move m, Colour side) {
  if (offers.count >= wanted || m == kNoMove || !choosable(ctx, b, m, side) ||
      isImageOfOffer(b, offers, m, side))
    return;
  offers.cells[offers.count++] = m;
}

// The moves the book holds values for, the opponent's worst first.
void offerFromBook(const SearchContext& ctx, Board& b, Colour side, int wanted, Offers& offers) {
  struct Valued {
    int32_t value;
    Move cell;
  };
  std::vector<Valued> known;
  const db::Position stones = positionOf(b);
  for (int row = 0; row < b.height; ++row)
    for (int col = 0; col < b.width; ++col)
      if (b.at(makeMove(row, col)) == EMPTY)
        if (const std::optional<int32_t> v = bookValueAfter(*ctx.database, stones, makeMove(row, col)))
          known.push_back({*v, makeMove(row, col)});
  std::stable_sort(known.begin(), known.end(), [](const Valued& x, const Valued& y) { return x.value < y.value; });
  for (const Valued& k : known) offer(ctx, b, offers, wanted, k.cell, side);
}

// Keeps the last list of an N-best run; prints nothing.
class RankCollector : public AnalysisReporter {
 public:
  std::vector<Move> moves;
  void nbest(std::span<const RankedMove> ranked) override {
    moves.clear();
    for (const RankedMove& r : ranked) moves.push_back(r.move);
  }
  void balance(const Progress&, int32_t, int32_t, std::span<const Move>, bool) override {}
  void defence(std::span<const RankedMove>) override {}
  void noDefence(const RankedMove&, int) override {}
  void swapAnswer(SwapStep, bool) override {}
  void swapStones(Move, Move) override {}
};

// The moves ranked best for the side to move, each search ruling out the
// ranks above it and their images.
void offerFromSearch(AnalysisSearch& search, int wanted, Offers& offers) {
  RankCollector ranks;
  const int32_t budget = thinkBudget(*search.context().engineSettings, Budget::kDecision);
  runNBest(search, ranks, wanted, {budget / kRankingPhases, true});
  Board& b = search.board();
  for (const Move m : ranks.moves) offer(search.context(), b, offers, wanted, m, b.sideToMove());
}

// Tops the offers up from the cells near the stones, by the static value of
// the side that plays them: the stone's own value, which a value for the side
// to move after it reads less well.
void offerFromEvaluation(AnalysisSearch& search, int wanted, Offers& offers) {
  Board& b = search.board();
  const Colour side = b.sideToMove();
  const NarrowingRules rules{side, 1, side, kBeyondAnyValue};
  CandidateList& list = analysisCandidates();
  collectSingles(search, rules, list);
  sortCandidates(list);
  for (int i = 0; i < list.count && offers.count < wanted; ++i)
    offer(search.context(), b, offers, wanted, list.entries[i].first, side);
}

// The candidate the book values best for the chooser, when it values them all.
std::optional<Move> chosenFromBook(const SearchContext& ctx, const Board& b, std::span<const Move> candidates) {
  if (!bookInUse(ctx)) return std::nullopt;
  const db::Position stones = positionOf(b);
  std::optional<Move> best;
  int32_t bestValue = 0;
  for (const Move m : candidates) {
    const std::optional<int32_t> v = bookValueAfter(*ctx.database, stones, m);
    if (!v) return std::nullopt;
    if (!best || *v > bestValue) {
      best = m;
      bestValue = *v;
    }
  }
  return best;
}

// Narrows the candidates towards the chooser's best: each scores its
// distance below a value no position reaches. They start in the order of the
// offering side's static value, the lowest first.
Move chosenFromSearch(AnalysisSearch& search, std::span<const Move> candidates) {
  startAnalysisClock(search.context(), thinkBudget(*search.context().engineSettings, Budget::kDecision));
  search.prepare();
  Board& b = search.board();
  const Colour side = b.sideToMove();
  const NarrowingRules rules{side, 1, opponent(side), kBeyondAnyValue};
  CandidateList& list = analysisCandidates();
  list.count = 0;
  for (const Move m : candidates) {
    b.placeStone(m, side);
    list.entries[list.count++] = {kBeyondAnyValue + search.evaluate(side), m, kNoMove};
    b.removeStone(m);
  }
  sortCandidates(list);
  Move best = list.entries[0].first;
  const int last = narrow(search, rules, list, [&](int) { best = list.entries[0].first; });
  finishAnalysis(search.context(), last + 1);
  return best;
}

}  // namespace

bool bookInUse(const SearchContext& ctx) {
  return ctx.engineSettings->useDatabase && ctx.database && ctx.database->inUse();
}

FifthMoveRequest& fifthMoveRequest() {
  static FifthMoveRequest request;
  return request;
}

void runFifthOffers(AnalysisSearch& search, SoosorvReporter& reporter, int count) {
  search.prepare();
  Board& b = search.board();
  Offers offers;
  if (bookInUse(search.context())) offerFromBook(search.context(), b, b.sideToMove(), count, offers);
  if (offers.count < count) {
    offers.count = 0;
    offerFromSearch(search, count, offers);
    offerFromEvaluation(search, count, offers);
  }
  if (offers.count < count)
    reporter.fifthOffersShort();
  else
    reporter.fifthOffers(offers.view());
}

void runFifthChoice(AnalysisSearch& search, SoosorvReporter& reporter, std::span<const Move> candidates) {
  search.prepare();
  if (candidates.size() == 1) {
    reporter.fifthChoice(candidates[0]);
    return;
  }
  const std::optional<Move> fromBook = chosenFromBook(search.context(), search.board(), candidates);
  reporter.fifthChoice(fromBook ? *fromBook : chosenFromSearch(search, candidates));
}

}  // namespace zorva
