#pragma once
// The search as the analyses see it: a position to play candidates on, the
// node, root and threat searches on it, and the limits of a job, kept in
// the think state where the search polls them.
#include <cstdint>
#include <span>

#include "board/board.h"
#include "search/context.h"
#include "search/driver.h"
#include "search/settings.h"

namespace zorva {

struct RootResult {
  int32_t value;
  Move move;      // kNoMove when the root had no move left
  bool onlyMove;  // the root found every other move lost at once
};

// A decision search's result: the value of the last depth done, from the
// side to move's view, and that depth.
struct DecisionResult {
  int32_t value;
  int depth;
};

class AnalysisSearch {
 public:
  virtual ~AnalysisSearch() = default;
  // The context the searches run in: settings, think state, flags, database.
  virtual SearchContext& context() = 0;
  // Rule and table set-up; the game position copied to board().
  virtual void prepare() = 0;
  // The analysed position; candidates are played on it and taken back.
  virtual Board& board() = 0;
  virtual int32_t evaluate(Colour side) = 0;
  // Before each depth: forgets the move order, and tells the search how
  // deep the iteration reaches from the analysed position.
  virtual void startDepth(int plies) = 0;
  // The node search on board(), `ply` stones after the analysed position.
  virtual int32_t searchNode(int depth, int ply, int32_t alpha, int32_t beta, Colour side) = 0;
  // The root search on board() without the `excluded` moves, `hint` first.
  virtual RootResult searchRoot(int depth, Colour side, std::span<const Move> excluded, Move hint) = 0;
  // Deepens on the game position for the side to move as a one-off
  // decision does: its own budget, the tables prepared, until a value is
  // proven or the budget is spent.
  virtual DecisionResult searchDecision() = 0;
  // Plies before `side`, to move, makes five by continuous threats, or -1:
  // by the turn's threat search and the wide proof (`level` 0), or by that
  // level of the threat solvers.
  virtual int threatWinPlies(Colour side, int level) = 0;
  // Out of time or nodes, or asked to stop: the last values mean nothing.
  virtual bool aborted() = 0;
  // Adds the helper threads' node counts into the think state.
  virtual void mergeStatistics() = 0;
};

// The analyses on a turn's search: searcher 0, with its helper threads, on
// a copy of `position` (the game's, which a decision search deepens on).
class EngineAnalysis : public AnalysisSearch {
 public:
  EngineAnalysis(SearchBackend& turn, const Board& position) : turn_(turn), position_(position) {}
  SearchContext& context() override;
  void prepare() override;
  Board& board() override;
  int32_t evaluate(Colour side) override;
  void startDepth(int plies) override;
  int32_t searchNode(int depth, int ply, int32_t alpha, int32_t beta, Colour side) override;
  RootResult searchRoot(int depth, Colour side, std::span<const Move> excluded, Move hint) override;
  DecisionResult searchDecision() override;
  int threatWinPlies(Colour side, int level) override;
  bool aborted() override;
  void mergeStatistics() override;

 private:
  SearchBackend& turn_;
  const Board& position_;
};

// Where a job stands, for its progress lines.
struct Progress {
  int depth;  // plies from the analysed position
  int reach;  // the same less the smallest remaining depth any node reached
  int64_t elapsedMs;
  int64_t nodes;
};

// Starts a job's clock with a budget that stays fixed (no turn's
// lengthening), its counters cleared.
void startAnalysisClock(SearchContext& ctx, int32_t budgetMs);
// Gives the second phase of a job the same budget again, from now; the
// clock still counts from the job's start.
void extendAnalysisBudget(SearchContext& ctx);
Progress progressAt(const SearchContext& ctx, int depth);
// Records the end of a job as a turn's end is recorded; its value is no
// result a later turn may build on, so it is 0.
void finishAnalysis(SearchContext& ctx, int depth);

}  // namespace zorva
