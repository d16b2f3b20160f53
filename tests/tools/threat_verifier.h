#pragma once
// The brute force for wins by continuous threats, on the referee's rules
// code (see referee_search.h), shared by the suites that check the threat
// searches and the checkmate solvers against it.
#include <algorithm>
#include <cstdint>
#include <iterator>
#include <unordered_map>
#include <vector>

#include "match/rules.h"
#include "tools/referee_search.h"

namespace zorva::tactics {

// Threat moves (fours and threes) the attacker may make before its win by
// fours; the wins below need at most this many, and "no win" means none this
// deep.
constexpr int kThreatBudget = 3;
constexpr int kLongWinThreats = 6;  // the engine's own wins are checked this far

// The brute force for wins by continuous threats. A threat is a four, or a
// three in the wide sense: a move after which the attacker wins by fours if
// the defender passes. A four must be answered at its completion point; a
// three at any cell, so every empty cell the defender may play is tried, and
// its fours too, each of which the attacker must block before going on.
// Black never plays a forbidden point under Renju, attacking or defending.
class ThreatVerifier {
 public:
  ThreatVerifier(referee::Board& b, Rule rule) : fours(b, rule) {
    fours.nodeLimit = 20000000;
    std::fill(std::begin(killers_), std::end(killers_), Cell{-1, -1});
  }

  Verifier fours;  // wins by fours alone, on the same board

  // A search cut short by a node limit: a "no win" then proves nothing.
  bool exhausted() const { return fours.exhausted || nodes_ > kNodeLimit; }

  // The fewest threat moves of a win, or -1.
  int shortest(Stone a) {
    for (int threats = 0; threats <= kThreatBudget; ++threats)
      if (attack(a, threats)) return threats;
    return -1;
  }

  // Every first move of `a` (every empty cell is tried) that wins within the budget.
  std::vector<Cell> winningMoves(Stone a) {
    return movesWhere(a, [&] { return answer(a, kThreatBudget - 1); });
  }

  // Does `a`'s move at `c` win within `threats` further threat moves?
  bool winsAfter(Stone a, Cell c, int threats) {
    fours.put(c.x, c.y, a);
    const bool won = answer(a, threats);
    fours.lift(c.x, c.y);
    return won;
  }

  // Does `a`'s move at `c`, which threatens nothing by fours alone, win
  // against every reply of the defender's, each followed by a win within
  // `threats` threat moves? Every legal cell is tried as the reply.
  bool winsAfterQuiet(Stone a, Cell c, int threats) {
    const Stone d = referee::other(a);
    fours.put(c.x, c.y, a);
    bool won = fours.fivePoints(d).empty() && fours.win(d, kPlyBudget) < 0;
    for (int x = 0; x < board().height() && won; ++x)
      for (int y = 0; y < board().width() && won; ++y) {
        if (board().at(x, y) != referee::kEmpty || !fours.legal(d, x, y)) continue;
        fours.put(x, y, d);
        won = attack(a, threats);
        fours.lift(x, y);
      }
    fours.lift(c.x, c.y);
    return won;
  }

  // Every move of `x` after which the opponent has no win within the budget.
  std::vector<Cell> holdingMoves(Stone x) {
    return movesWhere(x, [&] { return !attack(referee::other(x), kThreatBudget); });
  }

 private:
  static constexpr int64_t kNodeLimit = 3000000;
  struct Memo {
    int8_t win = 127;  // the fewest threats known to win
    int8_t fail = -1;  // the most threats known not to
  };

  template <typename F>
  std::vector<Cell> movesWhere(Stone s, F good) {
    std::vector<Cell> moves;
    for (int x = 0; x < board().height(); ++x)
      for (int y = 0; y < board().width(); ++y) {
        if (board().at(x, y) != referee::kEmpty || !fours.legal(s, x, y)) continue;
        fours.put(x, y, s);
        if (good()) moves.push_back({x, y});
        fours.lift(x, y);
      }
    return moves;
  }

  referee::Board& board() { return fours.b; }

  // `a` to move.
  bool attack(Stone a, int threats) {
    const Stone d = referee::other(a);
    if (!fours.fivePoints(a).empty()) return true;
    const std::vector<Cell> theirs = fours.fivePoints(d);
    if (theirs.size() >= 2) return false;
    const uint64_t key = mixBits(fours.hash() ^ (a == referee::kWhite ? 0x2545F4914F6CDD1Dull : 0));
    if (const auto found = memo_.find(key); found != memo_.end()) {
      if (threats >= found->second.win) return true;
      if (threats <= found->second.fail) return false;
    }
    bool won = false;
    if (++nodes_ > kNodeLimit) return false;
    if (theirs.size() == 1) {
      // The block is forced and costs no threat.
      const Cell c = theirs[0];
      if (fours.legal(a, c.x, c.y)) {
        fours.put(c.x, c.y, a);
        won = answer(a, threats);
        fours.lift(c.x, c.y);
      }
    } else if (fours.win(a, kPlyBudget) >= 0) {
      won = true;
    } else if (threats > 0) {
      // The threat that won last at this depth first: a position seldom
      // changes enough between siblings to need another.
      Cell& killer = killers_[threats];
      auto tryThreat = [&](int x, int y) {
        if (!candidate(a, x, y) || !fours.legal(a, x, y)) return false;
        fours.put(x, y, a);
        won = answer(a, threats - 1);
        fours.lift(x, y);
        if (won) killer = {x, y};
        return won;
      };
      const Cell first = killer;
      if (first.x < 0 || !tryThreat(first.x, first.y))
        for (int x = 0; x < board().height() && !won; ++x)
          for (int y = 0; y < board().width() && !won; ++y)
            if (!(Cell{x, y} == first)) tryThreat(x, y);
    }
    if (exhausted()) return won;  // a cut search decides nothing for the table
    Memo& m = memo_[key];
    if (won)
      m.win = std::min<int8_t>(m.win, int8_t(threats));
    else
      m.fail = std::max<int8_t>(m.fail, int8_t(threats));
    return won;
  }

  // Where a threat of `a` may be: a cell that makes three stones of `a` in
  // five cells of a line free of the defender's. Threats elsewhere are
  // possible but rare; the brute force forgoes them below the first move,
  // which only makes its wins fewer, never false.
  bool candidate(Stone a, int x, int y) const {
    const referee::Board& b = fours.b;
    if (b.at(x, y) != referee::kEmpty) return false;
    for (int d = 0; d < referee::kDirections; ++d)
      for (int start = -4; start <= 0; ++start) {
        int own = 0;
        bool open = true;
        for (int k = start; k < start + 5 && open; ++k) {
          const int cx = x + k * referee::kDx[d], cy = y + k * referee::kDy[d];
          open = b.inside(cx, cy) && b.at(cx, cy) != referee::other(a);
          own += b.at(cx, cy) == a;
        }
        if (open && own >= 2) return true;
      }
    return false;
  }

  // `a` has just moved; the defender is to move.
  bool answer(Stone a, int threats) {
    const Stone d = referee::other(a);
    if (!fours.fivePoints(d).empty()) return false;
    const std::vector<Cell> ours = fours.fivePoints(a);
    if (ours.size() >= 2) return true;
    if (ours.size() == 1) {
      const Cell c = ours[0];
      if (!fours.legal(d, c.x, c.y)) return true;
      fours.put(c.x, c.y, d);
      const bool won = attack(a, threats);
      fours.lift(c.x, c.y);
      return won;
    }
    // Not a four: a three only if the defender's pass would lose to fours.
    if (fours.win(a, kPlyBudget) < 0) return false;
    // The defender may ignore a three while it wins by fours itself.
    if (fours.win(d, kPlyBudget) >= 0) return false;
    const std::vector<Cell> line = fours.winningLine(a);
    // The defences on the winning line first: they are the likely refutations.
    std::vector<Cell> defences = line;
    for (int x = 0; x < board().height(); ++x)
      for (int y = 0; y < board().width(); ++y)
        if (std::find(line.begin(), line.end(), Cell{x, y}) == line.end()) defences.push_back({x, y});
    // Without forbidden points a stone can change the line only where it
    // takes one of its cells or lies on one of their lines within four steps
    // (to shorten a five of the attacker's or lengthen a four of its own);
    // elsewhere, unless it makes a five point of its own, the line still
    // wins. Under Renju a forbidden point may turn on stones further away.
    const int w = board().width();
    std::vector<uint8_t> near(size_t(board().height()) * w, fours.rule == Rule::Renju);
    for (const Cell& c : line)
      for (int dir = 0; dir < referee::kDirections; ++dir)
        for (int k = -4; k <= 4; ++k) {
          const int x = c.x + k * referee::kDx[dir], y = c.y + k * referee::kDy[dir];
          if (board().inside(x, y)) near[x * w + y] = 1;
        }
    for (const Cell& m : defences) {
      if (board().at(m.x, m.y) != referee::kEmpty || (!near[m.x * w + m.y] && !mayMakeFour(d, m))) continue;
      if (!fours.legal(d, m.x, m.y)) continue;
      fours.put(m.x, m.y, d);
      const bool lost = stillWins(a, line, m) || attack(a, threats);
      fours.lift(m.x, m.y);
      if (!lost) return false;
    }
    return true;
  }

  // Whether a stone of `s` on the empty `c` could make a five point: it
  // needs three more stones of `s` within four steps on one line.
  bool mayMakeFour(Stone s, Cell c) const {
    for (int d = 0; d < referee::kDirections; ++d) {
      int n = 0;
      for (int k = -4; k <= 4; ++k)
        n += k != 0 && fours.b.at(c.x + k * referee::kDx[d], c.y + k * referee::kDy[d]) == s;
      if (n >= 3) return true;
    }
    return false;
  }

  // Whether the win by fours `line` of `a`, to move, still forces the five
  // after the defender's stone on `m`: each four leaves one five point and
  // the defender none of its own, and the last four leaves two or one black
  // may not take. The defender's new five points can only be on the lines
  // through its new stones, and the attacker's on those through its fours.
  bool stillWins(Stone a, const std::vector<Cell>& line, Cell m) {
    const Stone d = referee::other(a);
    if (!fours.fivePointsThrough(m.x, m.y, d).empty()) return false;
    std::vector<Cell> placed;
    bool won = false;
    for (size_t i = 0; i < line.size(); i += 2) {
      const Cell f = line[i];
      if (board().at(f.x, f.y) != referee::kEmpty || !fours.legal(a, f.x, f.y)) break;
      fours.put(f.x, f.y, a);
      placed.push_back(f);
      const std::vector<Cell> fives = fours.fivePointsThrough(f.x, f.y, a);
      if (fives.size() >= 2 || (fives.size() == 1 && !fours.legal(d, fives[0].x, fives[0].y))) {
        won = true;
        break;
      }
      if (fives.size() != 1) break;
      fours.put(fives[0].x, fives[0].y, d);
      placed.push_back(fives[0]);
      if (!fours.fivePointsThrough(fives[0].x, fives[0].y, d).empty()) break;
    }
    for (auto c = placed.rbegin(); c != placed.rend(); ++c) fours.lift(c->x, c->y);
    return won;
  }

  int64_t nodes_ = 0;
  Cell killers_[kLongWinThreats + 1] = {};
  std::unordered_map<uint64_t, Memo> memo_;
};

}  // namespace zorva::tactics
