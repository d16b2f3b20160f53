#pragma once
// Sequential probability ratio test on game pairs. Each opening is played
// twice with colours swapped, so the pair is the unit: engine 1 scores 0, 1/2,
// 1, 3/2 or 2 points over a pair (the pentanomial counts), which takes out
// most of the openings' colour bias.
//
// The pair score x (points / 2, so 0 .. 1) is taken as normal; H0 and H1 put
// its mean at s0 and s1, the expected scores of elo0 and elo1 under the
// logistic model s = 1 / (1 + 10^(-elo / 400)). With N pairs of mean m and
// variance v the log-likelihood ratio is
//   LLR = N (s1 - s0) (2 m - s0 - s1) / (2 v),
// where v also counts one imaginary pair spread evenly over the five scores.
// H1 is accepted at LLR >= ln((1 - beta) / alpha), H0 at LLR <= ln(beta / (1 - alpha)).
#include <string>
#include <vector>

#include "match/match.h"

namespace zorva::referee {

struct SprtSettings {
  double elo0 = 0;
  double elo1 = 5;
  double alpha = 0.05;  // chance to accept H1 when H0 holds
  double beta = 0.05;   // chance to accept H0 when H1 holds
};

constexpr int kPairScores = 5;

// count[k]: pairs in which engine 1 scored k / 2 points.
struct Pentanomial {
  int count[kPairScores] = {};
  int pairs() const;
};

double expectedScore(double elo);
double sprtLlr(const Pentanomial& p, double elo0, double elo1);

enum class SprtVerdict { Inconclusive, AcceptH0, AcceptH1 };

// Follows a match game by game and judges it after every complete pair.
class Sprt {
 public:
  explicit Sprt(const SprtSettings& settings);

  // Takes a finished game in any order; true when it completed its pair
  // (games 2k and 2k + 1), which then counts.
  bool add(const GameResult& r);

  double llr() const { return sprtLlr(penta_, s_.elo0, s_.elo1); }
  double lower() const;
  double upper() const;
  SprtVerdict verdict() const;

  // "SPRT: games 24 W 10 L 8 D 6 elo 29.0 +- 80.1 LLR 0.41 [-2.94, 2.94]",
  // over the complete pairs; the margin is 95% from the pairs' variance.
  std::string progress() const;
  // The verdict with the LLR and the hypotheses.
  std::string conclusion() const;

 private:
  SprtSettings s_;
  Pentanomial penta_;
  int wins_ = 0, losses_ = 0, draws_ = 0;
  std::vector<double> firstHalf_;  // engine 1's points in the pair's finished game; -1 for none
};

}  // namespace zorva::referee
