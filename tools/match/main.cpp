// zorva_match: plays and referees games between two engine commands.
#include <cstdio>
#include <fstream>
#include <iostream>
#include <mutex>
#include <optional>

#include "match/match.h"
#include "match/options.h"
#include "match/positions.h"
#include "match/report.h"

using namespace zorva::referee;

int main(int argc, char** argv) {
  Options options;
  std::string error = parseOptions(argc, argv, options);
  if (options.help) {
    std::cout << usage();
    return 0;
  }
  if (!error.empty()) {
    std::cerr << "zorva_match: " << error << "\n";
    return 2;
  }
  MatchConfig& config = options.config;

  std::vector<Opening> openings;
  if (!options.openings.empty() && !loadOpenings(options.openings, config.width, config.height, openings, error)) {
    std::cerr << "zorva_match: " << error << "\n";
    return 2;
  }
  std::ofstream gamesOut, positionsOut;
  auto open = [](std::ofstream& f, const std::string& path, std::ios::openmode mode) {
    if (!path.empty()) f.open(path, mode);
    if (path.empty() || f) return true;
    std::cerr << "zorva_match: cannot write " << path << "\n";
    return false;
  };
  // Positions accumulate over runs, so that several matches feed one file.
  if (!open(gamesOut, options.gamesOut, std::ios::out) || !open(positionsOut, options.positionsOut, std::ios::app))
    return 2;

  std::mutex traceLock;
  if (options.verbose) {
    config.trace = [&](const std::string& line) {
      std::lock_guard<std::mutex> lock(traceLock);
      std::cerr << line << "\n";
    };
  }

  const uint64_t* seed = options.seed ? &*options.seed : nullptr;
  auto plan = planGames(options.games, int(openings.size()), seed);
  const char* ruleNames[] = {"freestyle", "exactly five", "Renju"};
  std::cout << "engine1 (" << config.name[0] << "): " << config.command[0] << "\n"
            << "engine2 (" << config.name[1] << "): " << config.command[1] << "\n"
            << (options.sprt ? "at most " : "") << options.games << " games, rule " << int(config.rule) << " ("
            << ruleNames[int(config.rule)] << "), board " << config.width << "x" << config.height << ", turn " << config.turnMs << " ms, match "
            << (config.matchMs ? std::to_string(config.matchMs) + " ms" : std::string("unlimited"))
            << ", increment " << config.incrementMs << " ms, tolerance " << config.toleranceMs << " ms"
            << (config.swap2 ? ", Swap2 openings" : "") << "\n"
            << std::flush;
  std::optional<Sprt> sprt;
  if (options.sprt) sprt.emplace(*options.sprt);
  auto results = runMatch(config, openings, plan, options.concurrency, [&](const GameResult& r) {
    std::string line = formatGame(config, r);
    std::cout << line << std::endl;
    if (gamesOut) gamesOut << line << "\n" << std::flush;
    if (positionsOut) positionsOut << formatPositions(config.rule, r) << std::flush;
    if (!sprt || !sprt->add(r)) return true;
    std::cout << sprt->progress() << std::endl;
    return sprt->verdict() == SprtVerdict::Inconclusive;
  });
  std::cout << formatSummary(config, tally(results));
  if (sprt) std::cout << sprt->conclusion() << "\n";
  std::cout << std::flush;
  return 0;
}
