#include "match/elo.h"

#include <cmath>
#include <limits>

namespace zorva::referee {

double eloFromScore(double p) {
  constexpr double inf = std::numeric_limits<double>::infinity();
  if (p <= 0) return -inf;
  if (p >= 1) return inf;
  return -400.0 * std::log10(1.0 / p - 1.0) + 0.0;  // + 0: an even score is +0, not -0
}

EloEstimate estimateElo(int wins, int losses, int draws) {
  EloEstimate e;
  int n = wins + losses + draws;
  if (wins + losses > 0) e.los = 0.5 * (1.0 + std::erf((wins - losses) / std::sqrt(2.0 * (wins + losses))));
  if (n == 0) return e;
  double p = (wins + 0.5 * draws) / n;
  e.score = p;
  e.elo = eloFromScore(p);
  double var = (wins * (1 - p) * (1 - p) + draws * (0.5 - p) * (0.5 - p) + losses * p * p) / n;
  double se = std::sqrt(var / n);
  double lo = p - 1.96 * se, hi = p + 1.96 * se;
  if (lo <= 0 || hi >= 1)
    e.margin = std::numeric_limits<double>::infinity();
  else
    e.margin = (eloFromScore(hi) - eloFromScore(lo)) / 2;
  return e;
}

}  // namespace zorva::referee
