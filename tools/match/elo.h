#pragma once
// Elo difference from a win/loss/draw count, from the first player's view.
//
// score p = (W + D/2) / N and Elo = -400 * log10(1/p - 1). The 95% margin comes
// from the standard error of the mean game score, se = sqrt(var / N) with
// var = (W (1-p)^2 + D (1/2-p)^2 + L p^2) / N: the interval p +- 1.96 se is
// mapped through the same formula and half its width is the margin. LOS, the
// likelihood that the first player is the stronger, is
// 1/2 (1 + erf((W - L) / sqrt(2 (W + L)))), draws left out.
namespace zorva::referee {

struct EloEstimate {
  double score = 0.5;   // p, 0..1
  double elo = 0;       // +-infinity at a score of 1 or 0
  double margin = 0;    // 95% half-width; infinity when the interval reaches 0 or 1
  double los = 0.5;     // 0..1
};

double eloFromScore(double p);
EloEstimate estimateElo(int wins, int losses, int draws);

}  // namespace zorva::referee
