#include "search/threat_solver.h"

#include <algorithm>
#include <climits>
#include <cstring>

#include "board/forbid.h"
#include "board/values.h"
#include "search/limits.h"
#include "search/movegen.h"
#include "search/searcher.h"
#include "search/vcf.h"

namespace zorva {

namespace {

constexpr int kWideFourNodes = 20000;  // per fours search of the wide levels: a proof must not miss a long one
constexpr int kQuietNodes = 20000;     // the threat search that tells a quiet move's threat
constexpr int kQuietThrees = 2;
constexpr int kQuietWidth = 12;
constexpr int kLineReach = 4;  // a stone changes a five only within this many steps
constexpr int kWindow = 5;
constexpr int kMemoBits = 18;
constexpr int8_t kNoWin = 127;
constexpr uint64_t kWhiteAttacks = 0x7F4A7C159E3779B9ull;
constexpr uint64_t kRuleKeys[kRuleCount] = {0x2545F4914F6CDD1Dull, 0x94D049BB133111EBull, 0xBF58476D1CE4E5B9ull};
constexpr uint64_t kLevelKeys[kSolverLevels + 1] = {0, 0, 0x9E6C63D0676A9A99ull, 0xE7037ED1A0B428DBull,
                                                    0x8EBC6AF09C88C6E3ull};

bool mayPlay(Board& b, Colour c, Move m) {
  return b.at(m) == EMPTY && !(b.rule == kRenju && c == BLACK && isForbidden(b, m));
}

bool makesFour(const Board& b, Colour c, Move m) {
  return b.threat(c, kFourClass).contains(m) || b.threat(c, kOpenFourClass).contains(m);
}

// Level 1 keeps one result a position in the searcher's threat cache, with
// the threes it holds for.
struct CacheMemo {
  VcfCacheEntry& slot;
  uint64_t key;

  bool find(int threats, int* plies) const {
    if (slot.key != key || !(slot.plies >= 0 ? slot.budget <= threats : threats <= slot.budget)) return false;
    *plies = slot.plies;
    return true;
  }
  void win(int threats, int plies) { slot = {key, int16_t(plies), int16_t(threats)}; }
  void fail(int threats) { slot = {key, -1, int16_t(threats)}; }
};

// The wide levels keep the fewest threats known to win (and in how many
// plies) and the most known not to.
struct Memo {
  uint64_t key;
  int8_t win;
  int8_t fail;
  int16_t plies;
};

Memo* memoTable() {
  static Memo table[1 << kMemoBits];
  return table;
}

struct TableMemo {
  Memo& m;
  uint64_t key;

  bool find(int threats, int* plies) const {
    if (m.key != key || (threats < m.win && threats > m.fail)) return false;
    *plies = threats >= m.win ? m.plies : -1;
    return true;
  }
  void claim() {
    if (m.key != key) m = {key, kNoWin, -1, 0};
  }
  void win(int threats, int plies) {
    claim();
    if (threats < m.win) m = {key, int8_t(threats), m.fail, int16_t(plies)};
  }
  void fail(int threats) {
    claim();
    m.fail = std::max(m.fail, int8_t(threats));
  }
};

template <int L>
auto memoFor(Searcher& s, uint64_t key) {
  if constexpr (L == 1)
    return CacheMemo{s.vctCache[key & (kVctCacheSize - 1)], key};
  else
    return TableMemo{memoTable()[key & ((1 << kMemoBits) - 1)], key};
}

// Directions in which a stone of `a` on the cell would join at least `own`
// stones of `a` in a five-cell window free of the other side and walls.
int windowDirections(const Board& b, Colour a, int row, int col, int own) {
  int directions = 0;
  for (int d = 0; d < kDirections; ++d)
    for (int start = 1 - kWindow; start <= 0; ++start) {
      int mine = 0;
      bool open = true;
      for (int k = start; k < start + kWindow && open; ++k) {
        const int r = row + k * kDirRowStep[d], c = col + k * kDirColStep[d];
        const Colour cell = b.inside(r, c) ? b.at(makeMove(r, c)) : WALL;
        open = cell == EMPTY || cell == a;
        mine += cell == a;
      }
      if (open && mine >= own) {
        ++directions;
        break;
      }
    }
  return directions;
}

// Cells where the defender's stone could stop the fours win marked in
// `zone`: on its lines within kLineReach steps, or a four of the defender's.
void zoneDefences(const Board& b, Colour defender, const bool* zone, bool* cells) {
  for (int row = 0; row < b.height; ++row)
    for (int col = 0; col < b.width; ++col) {
      if (!zone[makeMove(row, col)]) continue;
      for (int d = 0; d < kDirections; ++d)
        for (int k = -kLineReach; k <= kLineReach; ++k) {
          const int r = row + k * kDirRowStep[d], c = col + k * kDirColStep[d];
          if (b.inside(r, c)) cells[makeMove(r, c)] = true;
        }
    }
  for (ThreatClass c : {kFourClass, kOpenFourClass})
    b.threat(defender, c).forEach([cells](Move m) {
      cells[m] = true;
      return true;
    });
}

}  // namespace

// The node pair, written once: the attacker's nodes and the defender's,
// with the attacker's colour and the level fixed per instance.
template <Colour A, int L>
struct SolverNodes {
  static constexpr Colour D = opponent(A);

  static int attack(ThreatSolver& run, int threats, Move* firstMove);
  static int answer(ThreatSolver& run, int threats);
  static int moves(ThreatSolver& run, ScoredMove* out);
  static int defences(ThreatSolver& run, Move* out);
  static int rootMoves(ThreatSolver& run, Move* out);
};

// The attacker's threats, strongest shapes first, at most the run's width.
template <Colour A, int L>
int SolverNodes<A, L>::moves(ThreatSolver& run, ScoredMove* out) {
  Board& b = run.s_.board;
  int n = 0;
  if constexpr (L <= 2) {
    auto add = [&](Move m) {
      if (b.rule == kRenju && A == BLACK && isForbidden(b, m)) return true;
      for (int i = 0; i < n; ++i)
        if (out[i].move == m) return true;
      out[n++] = {moveValue[b.info[m].patternWord[colourIndex(A)] & 0xFFFF], m};
      return true;
    };
    b.threat(A, kFourClass).forEach(add);
    b.threat(A, kThreeClass).forEach(add);
  } else {
    for (int row = 0; row < b.height; ++row)
      for (int col = 0; col < b.width; ++col) {
        const Move m = makeMove(row, col);
        if (b.at(m) != EMPTY) continue;
        const bool threat = windowDirections(b, A, row, col, 2) > 0;
        // A quiet move threatens twice only when it builds two lines at once.
        const bool quiet = L == 4 && !threat && windowDirections(b, A, row, col, 1) >= 2;
        if ((threat || quiet) && mayPlay(b, A, m))
          out[n++] = {moveValue[b.info[m].patternWord[colourIndex(A)] & 0xFFFF] - (quiet ? INT16_MAX : 0), m};
      }
  }
  sortMoves(out, n);
  return std::min(n, run.width_);
}

// The answers to a threat that is not a four, or -1 when the last move
// threatened nothing.
template <Colour A, int L>
int SolverNodes<A, L>::defences(ThreatSolver& run, Move* out) {
  Board& b = run.s_.board;
  bool cells[kCellSlots] = {};
  int n = 0;
  if constexpr (L == 1) {
    // A three threatens an open four: the attacker's four and open-four
    // points include every cell that keeps it from opening, and the
    // defender's own fours gain the tempo back.
    if (!hasPlayableOpenFour(b, A)) return -1;
    auto add = [&](Move m) {
      if (cells[m] || (b.rule == kRenju && D == BLACK && isForbidden(b, m))) return true;
      cells[m] = true;
      out[n++] = m;
      return true;
    };
    for (ThreatClass c : {kOpenFourClass, kFourClass}) {
      b.threat(A, c).forEach(add);
      b.threat(D, c).forEach(add);
    }
    return n;
  } else {
    // A threat when a pass would lose to fours (at level 4 to threes and
    // fours), and none while the defender wins by fours first.
    bool zone[kCellSlots] = {};
    const int fourNodes = std::min(run.nodesLeft(), kWideFourNodes);
    bool quiet = false;
    if (vcfPlies(run.s_, A, nullptr, fourNodes, zone) < 0) {
      if constexpr (L < 4) return -1;
      ThreatSolver threes(run.s_, 1, {kQuietNodes, kQuietThrees, kQuietWidth});
      if (threes.attack(A, nullptr) < 0) return -1;
      quiet = true;
    }
    if (vcfPlies(run.s_, D, nullptr, fourNodes) >= 0) return -1;
    // Under Renju a stone anywhere may change a forbidden point, and a
    // threat of threes may be stopped far from its cells.
    if (quiet || b.rule == kRenju)
      std::fill(cells, cells + kCellSlots, true);
    else
      zoneDefences(b, D, zone, cells);
    for (int row = 0; row < b.height; ++row)
      for (int col = 0; col < b.width; ++col)
        if (const Move m = makeMove(row, col); cells[m] && mayPlay(b, D, m)) out[n++] = m;
    return n;
  }
}

// The attacker to move: plies to its win, or -1.
template <Colour A, int L>
int SolverNodes<A, L>::attack(ThreatSolver& run, int threats, Move* firstMove) {
  Board& b = run.s_.board;
  if (Move five; b.threat(A, kFiveClass).firstOf(&five) > 0) {
    if (firstMove) *firstMove = five;
    markFives(b, A, run.zone_);
    return 0;
  }
  Move block = kNoMove;
  const int theirs = b.threat(D, kFiveClass).firstOf(&block);
  if (theirs >= 2) return -1;
  if (theirs == 0) {
    const int fourNodes = std::min(run.nodesLeft(), L == 1 ? kVcfNodeLimit : kWideFourNodes);
    if (const int plies = vcfPlies(run.s_, A, firstMove, fourNodes, run.zone_); plies >= 0) return plies;
    // At level 1 an open three of the defender outruns any three: only
    // fours could win, and they just failed.
    if (threats <= 0 || (L == 1 && hasPlayableOpenFour(b, D))) return -1;
  }
  if (run.exhausted()) return -1;
  const uint64_t key = b.hash ^ (A == WHITE ? kWhiteAttacks : 0) ^ kRuleKeys[b.rule] ^ kLevelKeys[L];
  auto memo = memoFor<L>(run.s_, key);
  // A remembered win names no cells, so a run that marks them searches again.
  if (int known; !firstMove && memo.find(threats, &known) && !(run.zone_ && known >= 0)) return known;

  ScoredMove moves[kMaxStones];
  int count = 0;
  if (theirs == 1) {
    if (!mayPlay(b, A, block)) return -1;
    moves[count++] = {0, block};
  } else {
    count = SolverNodes::moves(run, moves);
  }
  for (int i = 0; i < count; ++i) {
    const Move m = moves[i].move;
    // A four costs no threat, nor beyond level 1 a forced block.
    const bool free = makesFour(b, A, m) || (L > 1 && theirs == 1);
    b.placeStone<Update::Light>(m, A);
    const int rest = answer(run, free ? threats : threats - 1);
    b.removeStone<Update::Light>(m);
    if (rest >= 0) {
      if (run.zone_) run.zone_[m] = true;
      memo.win(threats, rest + 1);
      if (firstMove) *firstMove = m;
      return rest + 1;
    }
    if (L > 1 && run.truncated_) return -1;
  }
  if (!run.truncated_ && !run.s_.ctx->aborted) memo.fail(threats);
  return -1;
}

// The defender to move after the attacker's threat: plies to the
// attacker's win against every answer, or -1 when one answer holds.
template <Colour A, int L>
int SolverNodes<A, L>::answer(ThreatSolver& run, int threats) {
  Board& b = run.s_.board;
  if (!b.threat(D, kFiveClass).empty() || (L == 1 && run.exhausted())) return -1;
  Move five = kNoMove;
  const int fives = b.threat(A, kFiveClass).firstOf(&five);
  if (fives >= 2 || (fives == 1 && !mayPlay(b, D, five))) {
    markFives(b, A, run.zone_);
    return 1;
  }
  if (fives == 1) {
    b.placeStone<Update::Light>(five, D);
    const int rest = attack(run, threats, nullptr);
    b.removeStone<Update::Light>(five);
    if (rest >= 0 && run.zone_) run.zone_[five] = true;
    return rest < 0 ? -1 : rest + 1;
  }
  Move cells[kMaxStones];
  const int count = defences(run, cells);
  if (count < 0) return -1;
  int longest = 0;
  for (int i = 0; i < count; ++i) {
    b.placeStone<Update::Light>(cells[i], D);
    const int rest = attack(run, threats, nullptr);
    b.removeStone<Update::Light>(cells[i]);
    if (rest < 0) return -1;
    longest = std::max(longest, rest);
  }
  if (run.zone_)
    for (int i = 0; i < count; ++i) run.zone_[cells[i]] = true;
  return longest + 1;
}

// The moves of an attacker's node: its five, the block of the defender's,
// or its threats; none when the defender has two fives.
template <Colour A, int L>
int SolverNodes<A, L>::rootMoves(ThreatSolver& run, Move* out) {
  Board& b = run.s_.board;
  Move forced = kNoMove;
  if (b.threat(A, kFiveClass).firstOf(&forced) > 0) {
    out[0] = forced;
    return 1;
  }
  const int theirs = b.threat(D, kFiveClass).firstOf(&forced);
  if (theirs >= 2) return 0;
  if (theirs == 1) {
    out[0] = forced;
    return mayPlay(b, A, forced) ? 1 : 0;
  }
  ScoredMove scored[kMaxStones];
  const int count = moves(run, scored);
  for (int i = 0; i < count; ++i) out[i] = scored[i].move;
  return count;
}

namespace {

// Calls `f.operator()<A, L>()` for the run's level and the attacker's colour.
template <class F>
int byLevel(int level, Colour attacker, F f) {
  const bool black = attacker == BLACK;
  switch (level) {
    case 1:
      return black ? f.template operator()<BLACK, 1>() : f.template operator()<WHITE, 1>();
    case 2:
      return black ? f.template operator()<BLACK, 2>() : f.template operator()<WHITE, 2>();
    case 3:
      return black ? f.template operator()<BLACK, 3>() : f.template operator()<WHITE, 3>();
    default:
      return black ? f.template operator()<BLACK, 4>() : f.template operator()<WHITE, 4>();
  }
}

}  // namespace

ThreatSolver::ThreatSolver(Searcher& s, int level, const SolverLimits& limits, bool* zone)
    : s_(s),
      level_(std::clamp(level, 1, kSolverLevels)),
      threats_(limits.threats),
      width_(limits.width),
      zone_(zone),
      lastNode_(s.nodes + limits.nodes) {}

bool ThreatSolver::exhausted() {
  if (countNode(s_) || s_.nodes > lastNode_) truncated_ = true;
  return truncated_;
}

int ThreatSolver::nodesLeft() const { return int(std::clamp<int64_t>(lastNode_ - s_.nodes, 0, INT_MAX)); }

int ThreatSolver::attack(Colour attacker, Move* firstMove) {
  return byLevel(level_, attacker,
                 [&]<Colour A, int L>() { return SolverNodes<A, L>::attack(*this, threats_, firstMove); });
}

int ThreatSolver::afterThreat(Colour attacker, int threats) {
  return byLevel(level_, attacker, [&]<Colour A, int L>() { return SolverNodes<A, L>::answer(*this, threats); });
}

int ThreatSolver::attackerMoves(Colour attacker, Move* out) {
  return byLevel(level_, attacker, [&]<Colour A, int L>() { return SolverNodes<A, L>::rootMoves(*this, out); });
}

bool ThreatSolver::isFour(Colour attacker, Move m) const { return makesFour(s_.board, attacker, m); }

void clearSolverMemo() { std::memset(memoTable(), 0, sizeof(Memo) << kMemoBits); }

}  // namespace zorva
