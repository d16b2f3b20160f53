#include "analysis/threat_proof.h"

#include <algorithm>
#include <cstring>

#include "board/forbid.h"
#include "search/limits.h"
#include "search/vcf.h"

namespace zorva {

namespace {

constexpr int kFourNodes = 20000;  // per fours search: a proof must not miss a long one
constexpr int kLineReach = 4;      // a stone changes a five only within this many steps
constexpr int kWindow = 5;
constexpr int kMemoBits = 18;
constexpr int8_t kNoWin = 127;
constexpr uint64_t kWhiteAttacks = 0x2545F4914F6CDD1Dull;
constexpr uint64_t kRuleKeys[kRuleCount] = {0x9E6C63D0676A9A99ull, 0xE7037ED1A0B428DBull, 0x8EBC6AF09C88C6E3ull};

// What is known of a position and attacker: the fewest threats known to
// win (and in how many plies), the most known not to.
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

bool mayPlay(Board& b, Colour c, Move m) {
  return b.at(m) == EMPTY && !(b.rule == kRenju && c == BLACK && isForbidden(b, m));
}

// A cell that makes three stones of `a` in five cells of a line with no
// stone of the other side or wall: where a threat can be. Threats
// elsewhere are rare enough to forgo.
bool threatCell(const Board& b, Colour a, int row, int col) {
  for (int d = 0; d < kDirections; ++d)
    for (int start = 1 - kWindow; start <= 0; ++start) {
      int own = 0;
      bool open = true;
      for (int k = start; k < start + kWindow && open; ++k) {
        const int r = row + k * kDirRowStep[d], c = col + k * kDirColStep[d];
        const Colour cell = b.inside(r, c) ? b.at(makeMove(r, c)) : WALL;
        open = cell == EMPTY || cell == a;
        own += cell == a;
      }
      if (open && own >= 2) return true;
    }
  return false;
}

// Cells where the defender's stone could stop the fours win marked in
// `zone`: on its lines within kLineReach steps, or a four of the defender's.
void defenceCells(const Board& b, Colour defender, const bool* zone, bool* cells) {
  if (b.rule == kRenju) {
    std::fill(cells, cells + kCellSlots, true);
    return;
  }
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

struct Proof {
  Searcher& s;
  int64_t nodeLimit;
  int64_t nodes = 0;
  bool exhausted = false;

  int attack(Colour a, int threats);
  int answer(Colour a, int threats);
  int threaten(Colour a, int threats);
};

// `a` to move: plies before its five, or -1.
int Proof::attack(Colour a, int threats) {
  Board& b = s.board;
  const Colour d = opponent(a);
  if (!b.threat(a, kFiveClass).empty()) return 0;
  Move block = kNoMove;
  const int theirs = b.threat(d, kFiveClass).firstOf(&block);
  if (theirs >= 2) return -1;
  if (++nodes > nodeLimit || countNode(s)) {
    exhausted = true;
    return -1;
  }
  const uint64_t key = b.hash ^ (a == WHITE ? kWhiteAttacks : 0) ^ kRuleKeys[b.rule];
  Memo& memo = memoTable()[key & ((1 << kMemoBits) - 1)];
  if (memo.key == key && threats >= memo.win) return memo.plies;
  if (memo.key == key && threats <= memo.fail) return -1;

  int plies = -1;
  if (theirs == 1) {
    // The block is forced and costs no threat.
    if (mayPlay(b, a, block)) {
      b.placeStone<Update::Light>(block, a);
      const int rest = answer(a, threats);
      b.removeStone<Update::Light>(block);
      if (rest >= 0) plies = rest + 1;
    }
  } else if ((plies = vcfPlies(s, a, nullptr, kFourNodes)) < 0 && threats > 0) {
    plies = threaten(a, threats);
  }
  if (memo.key != key) memo = {key, kNoWin, -1, 0};
  if (plies >= 0 && threats < memo.win) memo = {key, int8_t(threats), memo.fail, int16_t(plies)};
  if (plies < 0 && !exhausted) memo.fail = std::max(memo.fail, int8_t(threats));
  return plies;
}

// Tries every threat of `a`; plies before its five, or -1.
int Proof::threaten(Colour a, int threats) {
  Board& b = s.board;
  for (int row = 0; row < b.height; ++row)
    for (int col = 0; col < b.width; ++col) {
      const Move m = makeMove(row, col);
      if (b.at(m) != EMPTY || !threatCell(b, a, row, col) || !mayPlay(b, a, m)) continue;
      b.placeStone<Update::Light>(m, a);
      const int rest = answer(a, threats - 1);
      b.removeStone<Update::Light>(m);
      if (rest >= 0) return rest + 1;
      if (exhausted) return -1;
    }
  return -1;
}

// `a` has just moved, the defender is to move: plies before a's five
// against every answer, or -1 when one answer holds.
int Proof::answer(Colour a, int threats) {
  Board& b = s.board;
  const Colour d = opponent(a);
  if (!b.threat(d, kFiveClass).empty()) return -1;
  Move five = kNoMove;
  const int ours = b.threat(a, kFiveClass).firstOf(&five);
  if (ours >= 2 || (ours == 1 && !mayPlay(b, d, five))) return 1;
  if (ours == 1) {
    b.placeStone<Update::Light>(five, d);
    const int rest = attack(a, threats);
    b.removeStone<Update::Light>(five);
    return rest < 0 ? -1 : rest + 1;
  }
  // Not a four: a threat only if a pass would lose to fours, and none while
  // the defender wins by fours first.
  bool zone[kCellSlots] = {};
  if (vcfPlies(s, a, nullptr, kFourNodes, zone) < 0 || vcfPlies(s, d, nullptr, kFourNodes) >= 0) return -1;
  bool cells[kCellSlots] = {};
  defenceCells(b, d, zone, cells);
  int longest = 0;
  for (int row = 0; row < b.height; ++row)
    for (int col = 0; col < b.width; ++col) {
      const Move m = makeMove(row, col);
      if (!cells[m] || !mayPlay(b, d, m)) continue;
      b.placeStone<Update::Light>(m, d);
      const int rest = attack(a, threats);
      b.removeStone<Update::Light>(m);
      if (rest < 0) return -1;
      longest = std::max(longest, rest);
    }
  return longest + 1;
}

}  // namespace

int threatProofPlies(Searcher& s, Colour attacker, int threats, int64_t nodeLimit) {
  Proof proof{s, nodeLimit};
  return proof.attack(attacker, threats);
}

void clearThreatProofs() { std::memset(memoTable(), 0, sizeof(Memo) << kMemoBits); }

}  // namespace zorva
