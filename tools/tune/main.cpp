// The evaluation tuner: fits the shape weights of the cell values and the
// side-to-move bonus to the results of self-play games by logistic
// regression, and prints them as the built-in table reads them.
//
//   zorva_tune [--ridge R] [--iterations N] [--shapes-only] [--table N] [--search-share S] [--learning-out FILE] POSITIONS...
//
// POSITIONS are files written by the match tool's --positions-out, each
// line perhaps followed by a deeper search's value of the position; with
// --search-share S that share of the label is the search's win chance, the
// rest the game's result (a result alone is a noisy label). One
// position in ten (by blocks of lines, so that a game's positions stay
// together) is held out to check that the fit generalises.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "board/eval.h"
#include "board/values.h"
#include "tune/fit.h"
#include "tune/samples.h"

namespace {

using namespace zorva;
using namespace zorva::tune;

constexpr int kHoldOutBlock = 500;  // samples per block; every tenth block is held out

struct Options {
  double ridge = 1e-6;
  int iterations = 20;
  bool threatCounts = true;
  int tableIterations = 0;  // above 0: then fit the whole learning table
  Labels labels;
  std::string learningOut;
  std::vector<std::string> inputs;
};

bool parse(int argc, char** argv, Options& o) {
  for (int i = 1; i < argc; ++i) {
    const bool hasValue = i + 1 < argc;
    if (!std::strcmp(argv[i], "--ridge") && hasValue)
      o.ridge = std::atof(argv[++i]);
    else if (!std::strcmp(argv[i], "--iterations") && hasValue)
      o.iterations = std::atoi(argv[++i]);
    else if (!std::strcmp(argv[i], "--table") && hasValue)
      o.tableIterations = std::atoi(argv[++i]);
    else if (!std::strcmp(argv[i], "--search-share") && hasValue)
      o.labels.searchShare = std::atof(argv[++i]);
    else if (!std::strcmp(argv[i], "--shapes-only"))
      o.threatCounts = false;
    else if (!std::strcmp(argv[i], "--learning-out") && hasValue)
      o.learningOut = argv[++i];
    else if (argv[i][0] == '-')
      return false;
    else
      o.inputs.push_back(argv[i]);
  }
  return !o.inputs.empty();
}

// Calls visit(index, word) for each non-increasing quadruple of codes, in the learning file's order.
template <class Visit>
void forEachEntry(Visit visit) {
  for (int a = 0; a < 16; ++a)
    for (int b = 0; b <= a; ++b)
      for (int c = 0; c <= b; ++c)
        for (int d = 0; d <= c; ++d) visit(learningIndex(a, b, c, d), uint32_t(a | b << 4 | c << 8 | d << 12));
}

// The learning table that the shape weights give.
std::vector<double> tableOf(const Weights& w) {
  int weights[kShapeTerms];
  for (int i = 0; i < kShapeTerms; ++i) weights[i] = int(std::lround(w.shape[i]));
  std::vector<double> table(kLearningEntries);
  forEachEntry([&](int index, uint32_t word) { table[index] = shapeValue(word, weights); });
  return table;
}

bool writeLearning(const std::string& path, const std::vector<double>& table) {
  std::ofstream out(path);
  forEachEntry([&](int index, uint32_t word) { out << std::lround(table[index]) << ((word >> 12) == (word >> 8 & 15) ? "\n" : " "); });
  return bool(out);
}

// The entries the table fit moved furthest from the shape weights' values.
void printLargestChanges(const std::vector<double>& from, const std::vector<double>& to) {
  std::vector<int> order;
  forEachEntry([&](int index, uint32_t) { order.push_back(index); });
  std::sort(order.begin(), order.end(),
            [&](int x, int y) { return std::fabs(to[x] - from[x]) > std::fabs(to[y] - from[y]); });
  for (size_t i = 0; i < 20 && i < order.size(); ++i) {
    const int k = order[i];
    std::printf("  codes %2d %2d %2d %2d: %5.0f -> %5.0f\n", k >> 12, k >> 8 & 15, k >> 4 & 15, k & 15, from[k], to[k]);
  }
}

// The code weights made non-negative and non-decreasing in the code's
// strength (pooling adjacent violators), as the cell values must be.
void makeMonotone(Weights& w) {
  constexpr int kFirst = 1, kLast = 12;
  double value[kLast + 1];
  int size[kLast + 1], blocks = 0;
  for (int c = kFirst; c <= kLast; ++c) {
    value[blocks] = std::max(0.0, w.shape[c]);
    size[blocks++] = 1;
    while (blocks > 1 && value[blocks - 2] > value[blocks - 1]) {
      const int n = size[blocks - 2] + size[blocks - 1];
      value[blocks - 2] = (value[blocks - 2] * size[blocks - 2] + value[blocks - 1] * size[blocks - 1]) / n;
      size[blocks - 2] = n;
      --blocks;
    }
  }
  int c = kFirst;
  for (int b = 0; b < blocks; ++b)
    for (int k = 0; k < size[b]; ++k) w.shape[c++] = value[b];
}

void printWeights(const char* title, const Weights& w) {
  std::printf("%s {", title);
  for (int i = 0; i < kShapeTerms; ++i) std::printf("%s%ld", i ? ", " : "", std::lround(w.shape[i]));
  std::printf("}  threat points (own four, own three, their four, their three) {");
  for (int i = 0; i < kThreatCounts; ++i) std::printf("%s%ld", i ? ", " : "", std::lround(w.threats[i]));
  std::printf("}  side-to-move bonus %ld\n", std::lround(w.bonus));
}

}  // namespace

int main(int argc, char** argv) {
  Options o;
  if (!parse(argc, argv, o)) {
    std::fprintf(stderr, "usage: zorva_tune [--ridge R] [--iterations N] [--shapes-only] [--table N] [--search-share S] [--learning-out FILE] POSITIONS...\n");
    return 2;
  }
  initValueTables();
  std::vector<Sample> train, test;
  for (const std::string& path : o.inputs) {
    SampleStats stats;
    const std::vector<Sample> samples = readSamples(path, stats, o.labels);
    if (stats.lines == 0) {
      std::fprintf(stderr, "zorva_tune: nothing read from %s\n", path.c_str());
      return 1;
    }
    std::printf("%s: %d lines, %d unreadable or finished, %d settled by the search, %zu used\n", path.c_str(), stats.lines,
                stats.unusable, stats.decided, samples.size());
    for (size_t i = 0; i < samples.size(); ++i) {
      Sample s = samples[i];
      if (!o.threatCounts) s.threats = {};
      (i / kHoldOutBlock % 10 == 9 ? test : train).push_back(s);
    }
  }
  Weights start;
  for (int i = 0; i < kShapeTerms; ++i) start.shape[i] = kEvalWeights[i];
  start.bonus = kSideToMove;
  for (int i = 0; i < kThreatCounts; ++i) start.threats[i] = kThreatPointWeights[i];
  const double scale = fitScale(train, start);
  Weights fitted = fitWeights(train, start, scale, o.ridge, o.iterations);
  makeMonotone(fitted);
  std::printf("scale %.6f (1 / %.1f)\n", scale, 1 / scale);
  std::printf("log-loss  train %.5f -> %.5f   held out %.5f -> %.5f\n", logLoss(train, start, scale),
              logLoss(train, fitted, scale), logLoss(test, start, scale), logLoss(test, fitted, scale));
  printWeights("built-in", start);
  printWeights("fitted  ", fitted);
  std::vector<double> table = tableOf(fitted);
  if (o.tableIterations > 0) {
    const std::vector<double> shaped = table;
    table = fitTable(train, shaped, fitted, scale, o.ridge, o.tableIterations);
    std::printf("table log-loss  train %.5f -> %.5f   held out %.5f -> %.5f\n",
                tableLogLoss(train, shaped, fitted, scale), tableLogLoss(train, table, fitted, scale),
                tableLogLoss(test, shaped, fitted, scale), tableLogLoss(test, table, fitted, scale));
    printLargestChanges(shaped, table);
  }
  if (!o.learningOut.empty() && !writeLearning(o.learningOut, table)) {
    std::fprintf(stderr, "zorva_tune: cannot write %s\n", o.learningOut.c_str());
    return 1;
  }
  return 0;
}
