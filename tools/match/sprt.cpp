#include "match/sprt.h"

#include <cmath>
#include <cstdio>
#include <limits>

#include "match/elo.h"

namespace zorva::referee {

namespace {

constexpr double kNoGame = -1;
// The variance takes one imaginary pair spread evenly over the five scores,
// so that a short run of equal pairs cannot have zero variance and end the
// test at once; its weight fades as pairs come in.
constexpr double kPriorPairs = 1;

double pairScore(int k) { return k / double(kPairScores - 1); }

double points(const GameResult& r) { return r.winner == -1 ? 0.5 : r.winner == 0 ? 1 : 0; }

// Mean and variance of the pair score; `prior` imaginary pairs spread evenly
// over the five scores join the variance (not the mean).
void moments(const Pentanomial& p, double prior, double& mean, double& var) {
  int n = p.pairs();
  mean = var = 0;
  if (n == 0) return;
  for (int k = 0; k < kPairScores; ++k) mean += p.count[k] * pairScore(k);
  mean /= n;
  for (int k = 0; k < kPairScores; ++k) {
    double d = pairScore(k) - mean;
    var += (p.count[k] + prior / kPairScores) * d * d;
  }
  var /= n + prior;
}

std::string format(const char* fmt, auto... args) {
  char buf[256];
  std::snprintf(buf, sizeof buf, fmt, args...);
  return buf;
}

}  // namespace

int Pentanomial::pairs() const {
  int n = 0;
  for (int c : count) n += c;
  return n;
}

double expectedScore(double elo) { return 1 / (1 + std::pow(10.0, -elo / 400)); }

double sprtLlr(const Pentanomial& p, double elo0, double elo1) {
  int n = p.pairs();
  if (n == 0) return 0;
  double mean, var;
  moments(p, kPriorPairs, mean, var);
  double s0 = expectedScore(elo0), s1 = expectedScore(elo1);
  return n * (s1 - s0) * (2 * mean - s0 - s1) / (2 * var);
}

Sprt::Sprt(const SprtSettings& settings) : s_(settings) {}

bool Sprt::add(const GameResult& r) {
  size_t pair = size_t(r.index / 2);
  if (firstHalf_.size() <= pair) firstHalf_.resize(pair + 1, kNoGame);
  if (firstHalf_[pair] == kNoGame) {
    firstHalf_[pair] = points(r);
    return false;
  }
  double first = firstHalf_[pair], second = points(r);
  ++penta_.count[int(std::lround(2 * (first + second)))];
  for (double p : {first, second}) {
    wins_ += p == 1;
    losses_ += p == 0;
    draws_ += p == 0.5;
  }
  return true;
}

double Sprt::lower() const { return std::log(s_.beta / (1 - s_.alpha)); }
double Sprt::upper() const { return std::log((1 - s_.beta) / s_.alpha); }

SprtVerdict Sprt::verdict() const {
  double v = llr();
  if (v >= upper()) return SprtVerdict::AcceptH1;
  if (v <= lower()) return SprtVerdict::AcceptH0;
  return SprtVerdict::Inconclusive;
}

std::string Sprt::progress() const {
  int n = penta_.pairs();
  double mean, var;
  moments(penta_, 0, mean, var);
  double se = n ? std::sqrt(var / n) : 0;
  double lo = mean - 1.96 * se, hi = mean + 1.96 * se;
  double margin = lo <= 0 || hi >= 1 ? std::numeric_limits<double>::infinity()
                                     : (eloFromScore(hi) - eloFromScore(lo)) / 2;
  return format("SPRT: games %d W %d L %d D %d elo %+.1f +- %.1f LLR %.2f [%.2f, %.2f]", 2 * n, wins_, losses_,
                draws_, eloFromScore(mean), margin, llr(), lower(), upper());
}

std::string Sprt::conclusion() const {
  const char* verdicts[] = {"inconclusive", "H0 accepted", "H1 accepted"};
  return format("SPRT: %s, LLR %.2f [%.2f, %.2f] after %d games (%d pairs); H0 elo %g, H1 elo %g, alpha %g, beta %g",
                verdicts[int(verdict())], llr(), lower(), upper(), 2 * penta_.pairs(), penta_.pairs(), s_.elo0,
                s_.elo1, s_.alpha, s_.beta);
}

}  // namespace zorva::referee
