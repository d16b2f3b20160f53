#pragma once
// Logistic regression of game results on the evaluation: the win chance of
// the side to move is sigmoid(scale * evaluation).
#include <vector>

#include "tune/samples.h"

namespace zorva::tune {

// The fitted quantities: the shape weights, the weights of the threat
// point counts and the side-to-move bonus.
struct Weights {
  std::array<double, kShapeTerms> shape{};
  std::array<double, kThreatCounts> threats{};
  double bonus = 0;
};

double evaluation(const Weights& w, const Sample& s);
// Mean cross-entropy of the results against the predicted chances.
double logLoss(const std::vector<Sample>& samples, const Weights& w, double scale);
// The scale that fits the samples best with the weights held.
double fitScale(const std::vector<Sample>& samples, const Weights& w);
// Newton's method on the weights that may move (the codes that can occur and
// the combination terms), pulled toward `start` by `ridge` per squared unit.
Weights fitWeights(const std::vector<Sample>& samples, const Weights& start, double scale, double ridge,
                   int iterations);

// The whole learning table fitted entry by entry (Adam on the mean
// log-loss), pulled toward `start` by `ridge` per squared unit; the bonus
// and the other terms stay as `fixed` has them.
std::vector<double> fitTable(const std::vector<Sample>& samples, const std::vector<double>& start,
                             const Weights& fixed, double scale, double ridge, int iterations);
double tableEvaluation(const std::vector<double>& table, const Weights& fixed, const Sample& s);
double tableLogLoss(const std::vector<Sample>& samples, const std::vector<double>& table, const Weights& fixed,
                    double scale);

}  // namespace zorva::tune
