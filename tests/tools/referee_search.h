#pragma once
// What the tactical suites share: a brute force for wins by continuous fours
// written on the referee's rules code (nothing of the engine's pattern
// tables), the two-letter cell notation of their tables, and one turn of the
// engine's driver on a position.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <string>
#include <unordered_map>
#include <vector>

#include "board/board.h"
#include "match/rules.h"
#include "protocol/engine_state.h"
#include "protocol/output.h"
#include "search/driver.h"
#include "protocol/engine_search.h"
#include "search/tt.h"

namespace zorva::tactics {

using referee::Cell;
using referee::Rule;
using referee::Stone;

// Plies a win may take, as in the engine's threat search (kMaxVcfPlies).
constexpr int kPlyBudget = 40;

inline uint64_t mixBits(uint64_t z) {
  z += 0x9E3779B97F4A7C15ull;
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
  return z ^ (z >> 31);
}
inline uint64_t stoneKey(int x, int y, Stone s) { return mixBits(uint64_t(x * 32 + y) * 3 + s); }

// ---------------------------------------------------------------------------
// The brute force: wins by continuous fours found by trying every cell with
// the referee's five and forbidden-point tests, with a table of positions
// already decided so that the exhaustive searches behind "no win" stay small.
struct Verifier {
  referee::Board& b;
  Rule rule;
  int64_t nodes = 0;
  int64_t nodeLimit = 2000000;
  bool exhausted = false;  // the node limit cut a search short: a "no win" then proves nothing

  explicit Verifier(referee::Board& board, Rule r) : b(board), rule(r) {
    for (int x = 0; x < b.height(); ++x)
      for (int y = 0; y < b.width(); ++y)
        if (b.at(x, y) != referee::kEmpty) hash_ ^= stoneKey(x, y, b.at(x, y));
  }

  // Lets black play forbidden points: what black's wins, and white's, would
  // be without them. The decided positions no longer hold and are dropped.
  void ignoreForbidden(bool ignore) {
    ignoreForbidden_ = ignore;
    memo_.clear();
  }

  uint64_t hash() const { return hash_; }
  void put(int x, int y, Stone s) {
    b.set(x, y, s);
    hash_ ^= stoneKey(x, y, s);
  }
  void lift(int x, int y) {
    hash_ ^= stoneKey(x, y, b.at(x, y));
    b.set(x, y, referee::kEmpty);
  }

  bool five(int x, int y, Stone s) const { return referee::makesFive(b, x, y, s, rule); }
  bool forbidden(Stone s, int x, int y) {
    return !ignoreForbidden_ && rule == Rule::Renju && s == referee::kBlack && referee::isForbidden(b, x, y);
  }
  // A five is allowed even where the move would otherwise be forbidden.
  bool legal(Stone s, int x, int y) { return five(x, y, s) || !forbidden(s, x, y); }

  std::vector<Cell> fivePoints(Stone s) const {
    std::vector<Cell> points;
    for (int x = 0; x < b.height(); ++x)
      for (int y = 0; y < b.width(); ++y)
        if (b.at(x, y) == referee::kEmpty && five(x, y, s)) points.push_back({x, y});
    return points;
  }

  // Plies until `s`, to move, has a five point by continuous fours, or -1.
  int win(Stone s, int budget) {
    if (!fivePoints(s).empty()) return 0;
    return search(s, budget, fivePoints(referee::other(s)));
  }

  // The fewest plies of a win by continuous fours, or -1.
  int shortest(Stone s) {
    for (int budget = 0; budget <= kPlyBudget; budget += 2)
      if (win(s, budget) >= 0) return budget;
    return -1;
  }

  // A shortest win by fours of `s`, to move: its fours with the opponent's
  // blocks between them, the last four leaving a five point that cannot be
  // taken away. Empty when there is none, or a five point already.
  std::vector<Cell> winningLine(Stone s) {
    std::vector<Cell> line;
    for (int budget = shortest(s); budget > 0;) {
      Cell four{-1, -1};
      forEachFour(s, fivePoints(referee::other(s)), [&](int x, int y) {
        const int plies = afterFour(s, x, y, budget);
        if (plies < 0) return false;
        four = {x, y};
        budget = plies;
        return true;
      });
      if (four.x < 0) break;  // only when the node limit cut the search short
      line.push_back(four);
      put(four.x, four.y, s);
      const std::vector<Cell> fives = fivePoints(s);
      if (budget == 2 && (fives.size() != 1 || forbidden(referee::other(s), fives[0].x, fives[0].y))) break;
      line.push_back(fives[0]);
      put(fives[0].x, fives[0].y, referee::other(s));
      budget -= 2;
    }
    for (auto c = line.rbegin(); c != line.rend(); ++c) lift(c->x, c->y);
    return line;
  }

  // The fours that start a win within `budget` plies; the opponent has no five point.
  std::vector<Cell> winningFours(Stone s, int budget) {
    std::vector<Cell> moves;
    for (int x = 0; x < b.height(); ++x)
      for (int y = 0; y < b.width(); ++y)
        if (b.at(x, y) == referee::kEmpty && isFour(s, x, y) && !forbidden(s, x, y) && afterFour(s, x, y, budget) >= 0)
          moves.push_back({x, y});
    return moves;
  }

  // The moves of `s` after which the opponent has neither a five point nor a
  // win by continuous fours.
  std::vector<Cell> holdingMoves(Stone s) {
    std::vector<Cell> moves;
    for (int x = 0; x < b.height(); ++x)
      for (int y = 0; y < b.width(); ++y) {
        if (b.at(x, y) != referee::kEmpty || !legal(s, x, y)) continue;
        put(x, y, s);
        if (win(referee::other(s), kPlyBudget) < 0) moves.push_back({x, y});
        lift(x, y);
      }
    return moves;
  }

  // The five points of `s` that its stone on (x, y) made: `s` had none
  // before, so each is on a line through the stone and makes its five along
  // that line, at least five stones long, before the rules judge it.
  std::vector<Cell> fivePointsThrough(int x, int y, Stone s) const {
    std::vector<Cell> points;
    for (int d = 0; d < referee::kDirections; ++d)
      for (int k = -4; k <= 4; ++k) {
        const int px = x + k * referee::kDx[d], py = y + k * referee::kDy[d];
        if (k == 0 || !b.inside(px, py) || b.at(px, py) != referee::kEmpty) continue;
        if (referee::runThrough(b, px, py, d, s) < 5 || !five(px, py, s)) continue;
        if (std::find(points.begin(), points.end(), Cell{px, py}) == points.end()) points.push_back({px, py});
      }
    return points;
  }

 private:
  struct Memo {
    int16_t win = -1;   // plies of a known win, or -1
    int16_t fail = -1;  // the largest budget known to hold no win, or -1
  };

  // The search behind win(): `s` has no five point, `threats` are the
  // opponent's.
  int search(Stone s, int budget, const std::vector<Cell>& threats) {
    if (budget < 2) return -1;
    if (++nodes > nodeLimit) {
      exhausted = true;
      return -1;
    }
    const uint64_t key = hash_ ^ (s == referee::kWhite ? 0x5851F42D4C957F2Dull : 0);
    if (const auto found = memo_.find(key); found != memo_.end()) {
      if (found->second.win >= 0 && found->second.win <= budget) return found->second.win;
      if (budget <= found->second.fail) return -1;
    }
    int result = -1;
    forEachFour(s, threats, [&](int x, int y) { return (result = afterFour(s, x, y, budget)) >= 0; });
    Memo& m = memo_[key];
    if (result >= 0)
      m.win = m.win < 0 ? int16_t(result) : std::min(m.win, int16_t(result));
    else if (!exhausted)
      m.fail = std::max(m.fail, int16_t(budget));
    return result;
  }

  // Calls `tryFour` on the fours `s` may play until it returns true. Two five
  // points of the opponent cannot both be blocked; one must be, and the block
  // has to be a four of ours to keep the attack going.
  template <typename F>
  void forEachFour(Stone s, const std::vector<Cell>& threats, F tryFour) {
    if (threats.size() > 1) return;
    if (threats.size() == 1) {
      const Cell c = threats[0];
      if (isFour(s, c.x, c.y) && !forbidden(s, c.x, c.y)) tryFour(c.x, c.y);
      return;
    }
    // A four needs three more stones of `s` within four steps on one line:
    // counted from the stones, which are far fewer than the cells.
    const int w = b.width(), cells = b.height() * w;
    std::vector<uint8_t> count(size_t(referee::kDirections) * cells, 0);
    for (int x = 0; x < b.height(); ++x)
      for (int y = 0; y < w; ++y) {
        if (b.at(x, y) != s) continue;
        for (int d = 0; d < referee::kDirections; ++d)
          for (int k = -4; k <= 4; ++k) {
            const int cx = x + k * referee::kDx[d], cy = y + k * referee::kDy[d];
            if (k != 0 && b.inside(cx, cy)) ++count[d * cells + cx * w + cy];
          }
      }
    for (int x = 0; x < b.height(); ++x)
      for (int y = 0; y < w; ++y) {
        bool near = false;
        for (int d = 0; d < referee::kDirections && !near; ++d) near = count[d * cells + x * w + y] >= 3;
        if (near && b.at(x, y) == referee::kEmpty && makesFour(s, x, y) && !forbidden(s, x, y) && tryFour(x, y))
          return;
      }
  }

  // Whether a stone of `s` on the empty cell makes a five point.
  bool isFour(Stone s, int x, int y) {
    bool near = false;  // a four needs three more stones of `s` within four steps on one line
    for (int d = 0; d < referee::kDirections && !near; ++d) {
      int n = 0;
      for (int k = -4; k <= 4; ++k) n += k != 0 && b.at(x + k * referee::kDx[d], y + k * referee::kDy[d]) == s;
      near = n >= 3;
    }
    return near && makesFour(s, x, y);
  }
  bool makesFour(Stone s, int x, int y) {
    put(x, y, s);
    const bool four = !fivePointsThrough(x, y, s).empty();
    lift(x, y);
    return four;
  }

  // Plies until `s` has a five point after its four on (x, y), or -1. Two
  // five points win, and so does one that black may not take.
  int afterFour(Stone s, int x, int y, int budget) {
    const Stone o = referee::other(s);
    put(x, y, s);
    const std::vector<Cell> fives = fivePointsThrough(x, y, s);
    int plies = -1;
    if (fives.size() >= 2 || (fives.size() == 1 && forbidden(o, fives[0].x, fives[0].y))) {
      plies = 2;
    } else if (fives.size() == 1 && budget >= 2) {
      // The four's one five point was the only one; the block's are the
      // opponent's only threats.
      put(fives[0].x, fives[0].y, o);
      const int rest = search(s, budget - 2, fivePointsThrough(fives[0].x, fives[0].y, o));
      lift(fives[0].x, fives[0].y);
      if (rest >= 0) plies = rest + 2;
    }
    lift(x, y);
    return plies;
  }

  uint64_t hash_ = 0;
  bool ignoreForbidden_ = false;
  std::unordered_map<uint64_t, Memo> memo_;
};

// ---------------------------------------------------------------------------
// Positions. Cells are written as two letters, row then column, 'a' for 0:
// "hc" is row 7, column 2. Stones go down alternately, black first, so the
// side to move follows from the counts.

inline Rule refereeRule(int rule) {
  return rule == kRenju ? Rule::Renju : rule == kStandard ? Rule::ExactFive : Rule::Freestyle;
}

inline std::vector<Cell> cellsOf(const char* text) {
  std::vector<Cell> cells;
  for (; text[0] && text[1]; text += 2) cells.push_back({text[0] - 'a', text[1] - 'a'});
  return cells;
}

inline std::string cellsText(std::vector<Cell> cells) {
  std::sort(cells.begin(), cells.end(), [](Cell a, Cell b) { return a.x != b.x ? a.x < b.x : a.y < b.y; });
  std::string text;
  for (const Cell& c : cells) text += {char('a' + c.x), char('a' + c.y)};
  return text;
}

inline std::string moveText(Move m) {
  return m == kNoMove ? "none" : std::string{char('a' + rowOf(m)), char('a' + colOf(m))};
}

inline bool inCells(const char* cells, Move m) {
  for (const Cell& c : cellsOf(cells))
    if (makeMove(c.x, c.y) == m) return true;
  return false;
}

inline referee::Board refereeBoard(int size, const char* black, const char* white) {
  referee::Board b(size, size);
  for (const Cell& c : cellsOf(black)) b.set(c.x, c.y, referee::kBlack);
  for (const Cell& c : cellsOf(white)) b.set(c.x, c.y, referee::kWhite);
  return b;
}

inline void setUpBoard(Board& board, int rule, int size, const char* black, const char* white) {
  board.reset(size, size, rule);
  const std::vector<Cell> b = cellsOf(black), w = cellsOf(white);
  for (size_t i = 0; i < std::max(b.size(), w.size()); ++i) {
    if (i < b.size()) board.placeStone(makeMove(b[i].x, b[i].y), BLACK);
    if (i < w.size()) board.placeStone(makeMove(w[i].x, w[i].y), WHITE);
  }
}

// ---------------------------------------------------------------------------
// The engine's turn.

// The settings a turn here changes, put back afterwards for the other tests
// of the program.
class SavedSettings {
 public:
  SavedSettings() {
    for (size_t i = 0; i < std::size(kFields); ++i) saved_[i] = engine.settings.*kFields[i];
  }
  ~SavedSettings() {
    for (size_t i = 0; i < std::size(kFields); ++i) engine.settings.*kFields[i] = saved_[i];
  }
  SavedSettings(const SavedSettings&) = delete;
  SavedSettings& operator=(const SavedSettings&) = delete;

 private:
  static constexpr Relaxed<int32_t> Settings::*kFields[] = {
      &Settings::rule, &Settings::timeoutTurn, &Settings::timeLeft, &Settings::timeIncrement,
      &Settings::startDepth, &Settings::maxDepth, &Settings::maxNode, &Settings::earlyStop,
      &Settings::showDetail, &Settings::threadNum, &Settings::threadSplitDepth, &Settings::hashSize};
  int32_t saved_[std::size(kFields)];
};

// How a turn is bounded: by depth alone (no clock, so the verdict does not
// depend on the machine's speed), or by the turn's time as in a game.
struct TurnLimits {
  int threads = 1;
  int maxDepth = 100;
  int timeoutTurnMs = 0;  // 0: no clock
};

// One think on a cold start (empty table, no earlier turn): the settings and
// the board set as `limits` say, then `driver()` runs with its output thrown away.
template <class Driver>
Move coldThink(int rule, int size, const char* black, const char* white, TurnLimits limits, Driver driver) {
  Settings& s = engine.settings;
  const bool clocked = limits.timeoutTurnMs > 0;
  s.rule = rule;
  s.timeoutTurn = clocked ? limits.timeoutTurnMs : 100000000;
  s.timeLeft = 100000000;
  s.timeIncrement = 0;
  s.startDepth = 1;
  s.maxDepth = limits.maxDepth;
  s.maxNode = clocked ? 2000000000 : -1;
  s.earlyStop = 1;
  s.showDetail = 0;
  s.threadNum = limits.threads;
  s.threadSplitDepth = 2;  // low enough that helpers join at these depths
  s.hashSize = 16;
  engine.stopFlag = 0;
  engine.search.aborted = 0;
  engine.think.builtRule = -1;
  engine.think.finalValue = 0;
  engine.think.currentDepth = 0;
  std::fill(std::begin(engine.blockTable), std::end(engine.blockTable), 0);
  setUpBoard(engine.board, rule, size, black, white);
  if (transpositionTable.allocated()) transpositionTable.clear();  // each run starts cold
  // The rule change prints a line; nothing here reads it.
  std::FILE* sink = std::fopen("/dev/null", "w");
  setOutput(sink);
  const Move m = driver();
  setOutput(nullptr);
  if (sink) std::fclose(sink);
  return m;
}

// One turn of the engine's normal driver on a cold start.
inline Move engineTurn(int rule, int size, const char* black, const char* white, TurnLimits limits) {
  return coldThink(rule, size, black, white, limits, [] {
    EngineSearch backend;
    return runTurnDriver(backend, engine.board, true);
  });
}

}  // namespace zorva::tactics
