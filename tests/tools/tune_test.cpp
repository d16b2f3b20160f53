// The evaluation tuner: it must find weights that are really there, and read
// only the positions that the evaluation decides.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <random>

#include "tune/fit.h"
#include "tune/samples.h"

namespace zorva::tune {
namespace {

TEST(Tuner, RecoversTheWeightsThatMadeTheResults) {
  Weights truth;
  for (int i = 1; i <= 12; ++i) truth.shape[i] = 5.0 * i;
  truth.shape[kFourPlusThreatTerm] = 80;
  truth.shape[kDoubleThreeTerm] = 40;
  truth.shape[kThreatBesideTwoTerm] = 10;
  truth.bonus = 30;
  constexpr double kScale = 1.0 / 200;
  std::mt19937 random(7);
  std::normal_distribution<float> term(0, 3);
  std::vector<Sample> samples(40000);
  for (Sample& s : samples) {
    for (int i = 0; i < kShapeTerms; ++i) s.terms[i] = term(random);
    s.rest = term(random) * 10;
    const double p = 1 / (1 + std::exp(-kScale * evaluation(truth, s)));
    s.result = std::bernoulli_distribution(p)(random) ? 1.0f : 0.0f;
  }
  const Weights start{};
  const Weights fitted = fitWeights(samples, start, kScale, 0, 12);
  for (int i = 1; i <= 12; ++i) EXPECT_NEAR(fitted.shape[i], truth.shape[i], 4) << "term " << i;
  EXPECT_NEAR(fitted.shape[kFourPlusThreatTerm], 80, 4);
  EXPECT_NEAR(fitted.bonus, 30, 6);
  EXPECT_EQ(fitted.shape[13], 0);  // codes that never score stay out of the fit
  EXPECT_LT(logLoss(samples, fitted, kScale), logLoss(samples, start, kScale));
  EXPECT_NEAR(fitScale(samples, fitted), kScale, kScale / 10);
}

TEST(Tuner, ReadsOnlyPositionsTheEvaluationDecides) {
  const std::string path = testing::TempDir() + "tune_positions.txt";
  std::ofstream(path) << "- 1 0\n"
                         "h8i9 0.5 1\n"
                         "h8a1h9a2h10a3h11 1 0\n"       // black to move has a four to play: settled
                         "h8a1h9a2h10a3h11a4h12 0 0\n"  // the finished game
                         "h8 1 7\n"                     // no such rule
                         "h8 1\n";
  SampleStats stats;
  const std::vector<Sample> samples = readSamples(path, stats);
  std::remove(path.c_str());
  EXPECT_EQ(stats.lines, 6);
  EXPECT_EQ(stats.unusable, 3);
  EXPECT_EQ(stats.decided, 1);
  ASSERT_EQ(samples.size(), 2u);
  EXPECT_EQ(samples[0].result, 1.0f);
  EXPECT_EQ(samples[1].result, 0.5f);
  for (float t : samples[0].terms) EXPECT_EQ(t, 0.0f);  // the empty board has no shapes
  EXPECT_GT(samples[1].terms[2] + samples[1].terms[3] + samples[1].terms[4], 0.0f);
}

}  // namespace
}  // namespace zorva::tune
