#include "tune/fit.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace zorva::tune {

namespace {

// Code 0 is nothing and codes 13-15 are never worth anything; the bonus is the last unknown.
constexpr int kFree[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 16, 17, 18};
constexpr int kShapeUnknowns = int(std::size(kFree));
constexpr int kUnknowns = kShapeUnknowns + kThreatCounts + 1;
constexpr double kDamping = 1e-9;  // keeps unknowns that no sample shows at their start

double sigmoid(double x) { return 1 / (1 + std::exp(-x)); }

double crossEntropy(double p, double result) {
  constexpr double kFloor = 1e-12;
  return -(result * std::log(std::max(p, kFloor)) + (1 - result) * std::log(std::max(1 - p, kFloor)));
}

double feature(const Sample& s, int k) {
  return k < kShapeUnknowns ? s.terms[kFree[k]] : k < kUnknowns - 1 ? s.threats[k - kShapeUnknowns] : 1.0;
}

double& unknownSlot(Weights& w, int k) {
  return k < kShapeUnknowns ? w.shape[kFree[k]] : k < kUnknowns - 1 ? w.threats[k - kShapeUnknowns] : w.bonus;
}
double unknown(Weights w, int k) { return unknownSlot(w, k); }

// Solves a x = b in place by Gaussian elimination with partial pivoting.
void solve(double a[kUnknowns][kUnknowns], double* b) {
  for (int c = 0; c < kUnknowns; ++c) {
    int pivot = c;
    for (int r = c + 1; r < kUnknowns; ++r)
      if (std::fabs(a[r][c]) > std::fabs(a[pivot][c])) pivot = r;
    std::swap(a[c], a[pivot]);
    std::swap(b[c], b[pivot]);
    for (int r = c + 1; r < kUnknowns; ++r) {
      const double f = a[r][c] / a[c][c];
      for (int k = c; k < kUnknowns; ++k) a[r][k] -= f * a[c][k];
      b[r] -= f * b[c];
    }
  }
  for (int c = kUnknowns - 1; c >= 0; --c) {
    for (int k = c + 1; k < kUnknowns; ++k) b[c] -= a[c][k] * b[k];
    b[c] /= a[c][c];
  }
}

}  // namespace

double evaluation(const Weights& w, const Sample& s) {
  double e = w.bonus + s.rest;
  for (int i = 0; i < kShapeTerms; ++i) e += w.shape[i] * s.terms[i];
  for (int i = 0; i < kThreatCounts; ++i) e += w.threats[i] * s.threats[i];
  return e;
}

double logLoss(const std::vector<Sample>& samples, const Weights& w, double scale) {
  double sum = 0;
  for (const Sample& s : samples) sum += crossEntropy(sigmoid(scale * evaluation(w, s)), s.result);
  return samples.empty() ? 0 : sum / double(samples.size());
}

double fitScale(const std::vector<Sample>& samples, const Weights& w) {
  double lo = 1e-5, hi = 0.05;  // golden-section search on a log-loss that is convex in the scale
  const double g = (std::sqrt(5.0) - 1) / 2;
  for (int i = 0; i < 60; ++i) {
    const double a = hi - g * (hi - lo), b = lo + g * (hi - lo);
    if (logLoss(samples, w, a) < logLoss(samples, w, b))
      hi = b;
    else
      lo = a;
  }
  return (lo + hi) / 2;
}

Weights fitWeights(const std::vector<Sample>& samples, const Weights& start, double scale, double ridge,
                   int iterations) {
  Weights w = start;
  const double n = double(samples.size());
  for (int it = 0; it < iterations; ++it) {
    double hessian[kUnknowns][kUnknowns] = {};
    double gradient[kUnknowns] = {};
    for (const Sample& s : samples) {
      const double p = sigmoid(scale * evaluation(w, s));
      const double curvature = p * (1 - p) * scale * scale / n;
      for (int i = 0; i < kUnknowns; ++i) {
        const double fi = feature(s, i);
        if (fi == 0) continue;
        gradient[i] += (p - s.result) * scale * fi / n;
        for (int j = 0; j < kUnknowns; ++j) hessian[i][j] += curvature * fi * feature(s, j);
      }
    }
    for (int i = 0; i < kUnknowns; ++i) {
      gradient[i] += 2 * ridge * (unknown(w, i) - unknown(start, i));
      hessian[i][i] += 2 * ridge + kDamping;
    }
    solve(hessian, gradient);
    for (int i = 0; i < kUnknowns; ++i) unknownSlot(w, i) -= gradient[i];
  }
  return w;
}

double tableEvaluation(const std::vector<double>& table, const Weights& fixed, const Sample& s) {
  double e = fixed.bonus + s.rest;
  for (const auto& [index, weight] : s.entries) e += table[index] * weight;
  for (int i = 0; i < kThreatCounts; ++i) e += fixed.threats[i] * s.threats[i];
  return e;
}

double tableLogLoss(const std::vector<Sample>& samples, const std::vector<double>& table, const Weights& fixed,
                    double scale) {
  double sum = 0;
  for (const Sample& s : samples) sum += crossEntropy(sigmoid(scale * tableEvaluation(table, fixed, s)), s.result);
  return samples.empty() ? 0 : sum / double(samples.size());
}

std::vector<double> fitTable(const std::vector<Sample>& samples, const std::vector<double>& start,
                             const Weights& fixed, double scale, double ridge, int iterations) {
  constexpr double kRate = 1.0, kBeta1 = 0.9, kBeta2 = 0.999, kEpsilon = 1e-12;
  std::vector<double> table = start, gradient(start.size()), m(start.size()), v(start.size());
  const double n = double(samples.size());
  for (int it = 1; it <= iterations; ++it) {
    for (size_t i = 0; i < table.size(); ++i) gradient[i] = 2 * ridge * (table[i] - start[i]);
    for (const Sample& s : samples) {
      const double g = (sigmoid(scale * tableEvaluation(table, fixed, s)) - s.result) * scale / n;
      for (const auto& [index, weight] : s.entries) gradient[index] += g * weight;
    }
    const double c1 = 1 - std::pow(kBeta1, it), c2 = 1 - std::pow(kBeta2, it);
    for (size_t i = 0; i < table.size(); ++i) {
      if (gradient[i] == 0 && m[i] == 0) continue;  // an entry no sample shows
      m[i] = kBeta1 * m[i] + (1 - kBeta1) * gradient[i];
      v[i] = kBeta2 * v[i] + (1 - kBeta2) * gradient[i] * gradient[i];
      table[i] -= kRate * (m[i] / c1) / (std::sqrt(v[i] / c2) + kEpsilon);
    }
  }
  return table;
}

}  // namespace zorva::tune
