// The engine's threat search against a brute-force one built on the
// referee's rules code: wins by continuous fours found by either must be
// real for the other, in random play-like positions under every rule.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "board/board.h"
#include "board/zobrist.h"
#include "match/rules.h"
#include "protocol/engine_state.h"
#include "search/searcher.h"
#include "search/vcf.h"
#include "protocol/engine_search.h"

namespace zorva {
namespace {

using referee::Rule;
using referee::Stone;

constexpr int kSide = 15;
constexpr int kShortWin = 8;   // plies within which the engine must find every win
constexpr int kLongWin = 40;   // plies within which the engine's wins must be confirmed

struct Brute {
  referee::Board& b;
  Rule rule;
  int nodes = 0;
  bool exhausted = false;

  std::vector<referee::Cell> fivePoints(Stone s) {
    std::vector<referee::Cell> points;
    for (int x = 0; x < kSide; ++x)
      for (int y = 0; y < kSide; ++y)
        if (b.at(x, y) == referee::kEmpty && referee::makesFive(b, x, y, s, rule)) points.push_back({x, y});
    return points;
  }

  bool forbiddenFor(Stone s, int x, int y) { return rule == Rule::Renju && s == referee::kBlack && referee::isForbidden(b, x, y); }

  // Plies until `s` wins by continuous fours, or -1.
  int win(Stone s, int budget) {
    if (!fivePoints(s).empty()) return 0;
    if (budget < 2 || ++nodes > 20000) {
      exhausted |= budget >= 2;
      return -1;
    }
    const Stone o = referee::other(s);
    const std::vector<referee::Cell> threats = fivePoints(o);
    if (threats.size() >= 2) return -1;
    for (int x = 0; x < kSide; ++x)
      for (int y = 0; y < kSide; ++y) {
        if (b.at(x, y) != referee::kEmpty) continue;
        if (threats.size() == 1 && !(threats[0] == referee::Cell{x, y})) continue;
        if (forbiddenFor(s, x, y)) continue;
        b.set(x, y, s);
        const std::vector<referee::Cell> fives = fivePoints(s);
        int plies = -1;
        if (fives.size() >= 2 || (fives.size() == 1 && forbiddenFor(o, fives[0].x, fives[0].y))) {
          plies = 2;
        } else if (fives.size() == 1) {
          b.set(fives[0].x, fives[0].y, o);
          const int rest = win(s, budget - 2);
          b.set(fives[0].x, fives[0].y, referee::kEmpty);
          if (rest >= 0) plies = rest + 2;
        }
        b.set(x, y, referee::kEmpty);
        if (plies >= 0) return plies;
      }
    return -1;
  }
};

TEST(RefereeCrossCheck, ThreatSearchWinsAreRealAndShortOnesAreFound) {
  initZobrist();
  engine.settings.maxNode = -1;
  engine.search.aborted = 0;
  prepareSearchContext();
  Searcher& s = searcher(2);
  std::mt19937 rng(777);
  int wins = 0, checked = 0;
  for (int game = 0; checked < 300; ++game) {
    const int rule = game % 3;
    s.board.reset(kSide, kSide, rule);
    s.clearThreatCache();
    referee::Board refereeBoard(kSide, kSide);
    Brute brute{refereeBoard, Rule(rule)};
    int lastX = kSide / 2, lastY = kSide / 2;
    const int stones = 12 + int(rng() % 24);
    bool over = false;
    for (int i = 0; i < stones && !over; ++i) {
      const Stone stone = refereeBoard.toMove();
      int x, y, tries = 0;
      do {
        x = lastX + int(rng() % 5) - 2;
        y = lastY + int(rng() % 5) - 2;
      } while (++tries < 50 && (!refereeBoard.inside(x, y) || refereeBoard.at(x, y) != referee::kEmpty ||
                                brute.forbiddenFor(stone, x, y)));
      if (tries >= 50) break;
      over = referee::makesFive(refereeBoard, x, y, stone, Rule(rule));
      refereeBoard.set(x, y, stone);
      s.board.placeStone(makeMove(x, y), stone == referee::kBlack ? BLACK : WHITE);
      if (rng() % 3 == 0) lastX = x, lastY = y;
    }
    if (over) continue;
    const Stone toMove = refereeBoard.toMove();
    const Colour side = toMove == referee::kBlack ? BLACK : WHITE;
    if (!brute.fivePoints(referee::other(toMove)).empty()) continue;  // a block, not an attack
    ++checked;
    const bool engineWins = vcf(s, 10, side) > 0;
    brute.nodes = 0;
    brute.exhausted = false;
    const int shortWin = brute.win(toMove, kShortWin);
    if (shortWin >= 0) {
      EXPECT_TRUE(engineWins) << "missed a win in " << shortWin << " plies, game " << game;
    }
    if (engineWins) {
      brute.nodes = 0;
      brute.exhausted = false;
      const int longWin = brute.win(toMove, kLongWin);
      if (!brute.exhausted) {
        EXPECT_GE(longWin, 0) << "a win the rules do not confirm, game " << game;
      }
      ++wins;
    }
  }
  EXPECT_GT(wins, 20) << "the positions must hold wins";
}

}  // namespace
}  // namespace zorva
