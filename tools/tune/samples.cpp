#include "tune/samples.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <sstream>

#include "board/board.h"
#include "board/eval.h"
#include "match/openings.h"
#include "search/movegen.h"
#include "search/searcher.h"
#include "search/vcf.h"
#include "search/driver.h"

namespace zorva::tune {

namespace {

constexpr int kSide = 15;

bool setUp(Board& b, const referee::Opening& game, int rule) {
  b.reset(kSide, kSide, rule);
  for (const referee::Cell& c : game.stones) {
    const Move m = makeMove(c.x, c.y);
    if (b.at(m) != EMPTY) return false;
    b.placeStone(m, b.sideToMove());
  }
  return true;
}

// The search answers these without the evaluation: a five or an open four
// to play, a five to block, a win by continuous fours.
bool settledBySearch(Searcher& s, Colour side) {
  Board& b = s.board;
  if (!b.threat(side, kFiveClass).empty() || !b.threat(opponent(side), kFiveClass).empty()) return true;
  if (hasPlayableOpenFour(b, side)) return true;
  return vcfPlies(s, side, nullptr) >= 0;
}

// Sorts the entries and adds up those of one index.
void mergeEntries(std::vector<std::pair<uint16_t, float>>& entries) {
  std::sort(entries.begin(), entries.end());
  size_t kept = 0;
  for (size_t i = 0; i < entries.size(); ++i) {
    if (kept > 0 && entries[kept - 1].first == entries[i].first)
      entries[kept - 1].second += entries[i].second;
    else
      entries[kept++] = entries[i];
  }
  entries.resize(kept);
}

Sample describe(Board& b, Colour side, Move* scratch) {
  Sample out;
  for (int row = 0; row < b.height; ++row)
    for (int col = 0; col < b.width; ++col) {
      const CellInfo& cell = b.info[makeMove(row, col)];
      for (Colour c : {BLACK, WHITE}) {
        const float weight = float(cell.roomSum[colourIndex(c)]) / 32 * (c == side ? 1 : -1);
        const ShapeTerms t = shapeTerms(cell.patternWord[colourIndex(c)] & 0xFFFF);
        for (int i = 0; i < kShapeTerms; ++i) out.terms[i] += weight * float(t[i]);
        if (weight != 0) out.entries.push_back({uint16_t(sortedIndex(cell.patternWord[colourIndex(c)] & 0xFFFF)), weight});
      }
    }
  mergeEntries(out.entries);
  int k = 0;
  for (Colour c : {side, opponent(side)})
    for (ThreatClass t : {kFourClass, kThreeClass}) out.threats[k++] = float(b.threat(c, t).count());
  out.rest = float(evaluate(b, side, scratch) - (b.total(side) - b.total(opponent(side))) - kSideToMove - threatPointScore(b, side));
  return out;
}

}  // namespace

std::vector<Sample> readSamples(const std::string& path, SampleStats& stats, const Labels& labels) {
  std::vector<Sample> samples;
  std::ifstream in(path);
  // Threat searches with the engine's default limits, outside any think.
  ThinkState think;
  SearchContext ctx;
  ctx.think = &think;
  bindSearchers(ctx);
  Searcher& s = searcher(0);
  std::string line;
  while (std::getline(in, line)) {
    ++stats.lines;
    std::istringstream fields(line);
    std::string moves;
    float result;
    int rule;
    referee::Opening game;
    std::string error;
    if (!(fields >> moves >> result >> rule) || rule < 0 || rule > 2 ||
        !referee::parseOpening(moves == "-" ? "" : moves, kSide, kSide, game, error) ||
        !setUp(s.board, game, rule)) {
      ++stats.unusable;
      continue;
    }
    const Colour side = s.board.sideToMove();
    if (settledBySearch(s, side)) {
      ++stats.decided;
      continue;
    }
    Sample sample = describe(s.board, side, s.scratch[0]);
    sample.result = result;
    if (float value; fields >> value) {
      const double chance = 1 / (1 + std::exp(-value / labels.searchScale));
      sample.result = float((1 - labels.searchShare) * result + labels.searchShare * chance);
    }
    samples.push_back(sample);
  }
  return samples;
}

}  // namespace zorva::tune
