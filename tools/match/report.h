#pragma once
// Totals of a match and the text the tool prints.
#include <string>
#include <vector>

#include "match/match.h"

namespace zorva::referee {

constexpr int kReasons = int(Reason::NoStart) + 1;

struct EngineTally {
  int wins = 0, losses = 0, draws = 0;
  int blackWins = 0, blackLosses = 0, blackDraws = 0;
  int lostBy[kReasons] = {};  // losses by their reason
  int maxLatencyMs = 0;
  int moves = 0;
};

struct Tally {
  int games = 0;
  EngineTally engine[2];
};

Tally tally(const std::vector<GameResult>& results);

// One line per game: number, colours, opening and moves in book notation,
// result from black's side and the reason.
std::string formatGame(const MatchConfig& config, const GameResult& result);

// The closing report: W/L/D and score from engine 1's view, the Elo estimate,
// colours, failures and the slowest answers.
std::string formatSummary(const MatchConfig& config, const Tally& t);

}  // namespace zorva::referee
