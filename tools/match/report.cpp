#include "match/report.h"

#include <cmath>
#include <cstdio>

#include "match/elo.h"

namespace zorva::referee {

Tally tally(const std::vector<GameResult>& results) {
  Tally t;
  for (const GameResult& r : results) {
    ++t.games;
    for (int e = 0; e < 2; ++e) {
      EngineTally& s = t.engine[e];
      bool black = r.black == e;
      if (r.winner == -1) {
        ++s.draws;
        s.blackDraws += black;
      } else if (r.winner == e) {
        ++s.wins;
        s.blackWins += black;
      } else {
        ++s.losses;
        s.blackLosses += black;
        ++s.lostBy[int(r.reason)];
      }
      s.maxLatencyMs = std::max(s.maxLatencyMs, r.maxLatencyMs[e]);
      s.moves += r.movesPlayed[e];
    }
  }
  return t;
}

namespace {

std::string format(const char* fmt, auto... args) {
  char buf[512];
  std::snprintf(buf, sizeof buf, fmt, args...);
  return buf;
}

std::string signedElo(double v) {
  if (std::isinf(v)) return v > 0 ? "+inf" : "-inf";
  return format("%+.1f", v);
}

}  // namespace

std::string formatGame(const MatchConfig& config, const GameResult& r) {
  const std::string& black = config.name[r.black];
  const std::string& white = config.name[1 - r.black];
  std::string score = r.winner == -1 ? "1/2-1/2" : r.winner == r.black ? "1-0" : "0-1";
  std::string opening = r.opening.stones.empty() ? "-" : cellsName(r.opening.stones);
  std::string moves = r.moves.empty() ? "-" : cellsName(r.moves);
  std::string line = "game " + std::to_string(r.index + 1) + ": " + black + " (black) vs " + white +
                     " (white), opening " + opening + ", moves " + moves + ", " + score + " " +
                     reasonName(r.reason);
  if (!r.detail.empty()) line += ": " + r.detail;
  return line;
}

std::string formatSummary(const MatchConfig& config, const Tally& t) {
  const EngineTally& a = t.engine[0];
  const EngineTally& b = t.engine[1];
  EloEstimate elo = estimateElo(a.wins, a.losses, a.draws);
  std::string s;
  s += format("%d games, %s vs %s (from %s's view)\n", t.games, config.name[0].c_str(), config.name[1].c_str(),
              config.name[0].c_str());
  s += format("  wins %d, losses %d, draws %d; score %.1f/%d (%.1f%%)\n", a.wins, a.losses, a.draws,
              a.wins + 0.5 * a.draws, t.games, 100 * elo.score);
  std::string margin = std::isinf(elo.margin) ? "inf" : format("%.1f", elo.margin);
  s += "  Elo difference " + signedElo(elo.elo) + " +/- " + margin + format(" (95%%), LOS %.1f%%\n", 100 * elo.los);
  s += format("  %s as black: %d-%d-%d, as white: %d-%d-%d (wins-losses-draws)\n", config.name[0].c_str(),
              a.blackWins, a.blackLosses, a.blackDraws, a.wins - a.blackWins, a.losses - a.blackLosses,
              a.draws - a.blackDraws);
  auto count = [&](const EngineTally& e, std::initializer_list<Reason> rs) {
    int n = 0;
    for (Reason r : rs) n += e.lostBy[int(r)];
    return n;
  };
  struct Row {
    const char* label;
    std::initializer_list<Reason> reasons;
  };
  const Row rows[] = {
      {"lost to five", {Reason::Five}},
      {"time forfeits (turn)", {Reason::TurnTime}},
      {"time forfeits (match clock)", {Reason::MatchTime}},
      {"illegal moves (off board)", {Reason::OffBoard}},
      {"illegal moves (occupied)", {Reason::Occupied}},
      {"illegal moves (unreadable)", {Reason::Garbage}},
      {"forbidden moves (Renju)", {Reason::Forbidden}},
      {"crashes", {Reason::Crash}},
      {"failed starts", {Reason::NoStart}},
  };
  s += format("  %-30s %10s %10s\n", "losses by reason", config.name[0].c_str(), config.name[1].c_str());
  for (const Row& row : rows)
    s += format("  %-30s %10d %10d\n", row.label, count(a, row.reasons), count(b, row.reasons));
  for (int e = 0; e < 2; ++e) {
    const EngineTally& x = t.engine[e];
    s += format("  slowest answer of %s: %d ms, %.0f%% of the %d ms turn limit (%d moves)\n",
                config.name[e].c_str(), x.maxLatencyMs, 100.0 * x.maxLatencyMs / config.turnMs, config.turnMs,
                x.moves);
  }
  return s;
}

}  // namespace zorva::referee
