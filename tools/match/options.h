#pragma once
// The command line of the match tool.
#include <cstdint>
#include <optional>
#include <string>

#include "match/match.h"
#include "match/sprt.h"

namespace zorva::referee {

struct Options {
  MatchConfig config;
  int games = 2;
  std::string openings;          // book file; empty: every game starts on an empty board
  std::optional<uint64_t> seed;  // shuffles the openings
  int concurrency = 1;
  std::string gamesOut;          // file for the per-game lines
  std::string positionsOut;      // file the games' positions are appended to
  std::optional<SprtSettings> sprt;  // stop early on its verdict; games is then the most
  bool verbose = false;
  bool help = false;
};

// Fills `out` from the arguments (argv[0] is the program). Returns an empty
// string on success, else what is wrong.
std::string parseOptions(int argc, const char* const* argv, Options& out);

std::string usage();

}  // namespace zorva::referee
