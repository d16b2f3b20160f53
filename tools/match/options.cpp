#include "match/options.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <type_traits>

namespace zorva::referee {

namespace {

bool toInt(const std::string& text, long long lo, long long hi, long long& out) {
  if (text.empty()) return false;
  char* end = nullptr;
  errno = 0;
  long long v = std::strtoll(text.c_str(), &end, 10);
  if (errno != 0 || *end != '\0' || v < lo || v > hi) return false;
  out = v;
  return true;
}

bool toDouble(const std::string& text, double& out) {
  if (text.empty()) return false;
  char* end = nullptr;
  errno = 0;
  double v = std::strtod(text.c_str(), &end);
  if (errno != 0 || *end != '\0' || !std::isfinite(v)) return false;
  out = v;
  return true;
}

}  // namespace

std::string parseOptions(int argc, const char* const* argv, Options& out) {
  MatchConfig& c = out.config;
  int size = 15, width = 0, height = 0;
  bool haveEngine[2] = {false, false};
  for (int i = 1; i < argc; ++i) {
    std::string opt = argv[i];
    if (opt == "--help" || opt == "-h") {
      out.help = true;
      return "";
    }
    if (opt == "--verbose") {
      out.verbose = true;
      continue;
    }
    if (opt == "--stderr") {
      c.keepStderr = true;
      continue;
    }
    if (opt == "--swap2") {
      c.swap2 = true;
      continue;
    }
    if (i + 1 >= argc) return opt + " needs a value (see --help)";
    std::string value = argv[++i];
    auto number = [&](long long lo, long long hi, auto& target) -> std::string {
      long long v;
      if (!toInt(value, lo, hi, v))
        return opt + " wants a whole number from " + std::to_string(lo) + " to " + std::to_string(hi) +
               ", not \"" + value + "\"";
      target = static_cast<std::remove_reference_t<decltype(target)>>(v);
      return "";
    };
    std::string error;
    constexpr long long kIntMax = std::numeric_limits<int>::max();
    if (opt == "--engine1" || opt == "--engine2") {
      int e = opt == "--engine1" ? 0 : 1;
      if (value.empty()) return opt + " needs a command";
      c.command[e] = value;
      haveEngine[e] = true;
    } else if (opt == "--name1" || opt == "--name2") {
      if (value.empty()) return opt + " needs a name";
      c.name[opt == "--name1" ? 0 : 1] = value;
    } else if (opt == "--games") {
      error = number(1, 1000000, out.games);
    } else if (opt == "--openings") {
      out.openings = value;
    } else if (opt == "--seed") {
      long long v;
      if (!toInt(value, 0, std::numeric_limits<long long>::max(), v)) return "--seed wants a whole number";
      out.seed = uint64_t(v);
    } else if (opt == "--rule") {
      int rule = 0;
      error = number(0, 2, rule);
      c.rule = Rule(rule);
    } else if (opt == "--size") {
      error = number(1, kMaxSide, size);
    } else if (opt == "--width") {
      error = number(1, kMaxSide, width);
    } else if (opt == "--height") {
      error = number(1, kMaxSide, height);
    } else if (opt == "--turn-ms") {
      error = number(1, kIntMax / 4, c.turnMs);
    } else if (opt == "--match-ms") {
      error = number(0, kIntMax / 4, c.matchMs);
    } else if (opt == "--increment-ms") {
      error = number(0, kIntMax / 4, c.incrementMs);
    } else if (opt == "--tolerance-ms") {
      error = number(0, 60000, c.toleranceMs);
    } else if (opt == "--start-ms") {
      error = number(1, 600000, c.startMs);
    } else if (opt == "--end-ms") {
      error = number(0, 600000, c.endMs);
    } else if (opt == "--info") {
      if (value.find(' ') == std::string::npos) return "--info wants \"key value\"";
      c.extraInfo.push_back(value);
    } else if (opt == "--concurrency") {
      error = number(1, 64, out.concurrency);
    } else if (opt == "--games-out") {
      out.gamesOut = value;
    } else if (opt == "--positions-out") {
      out.positionsOut = value;
    } else if (opt == "--sprt") {
      // elo0 elo1, then alpha and beta unless the next argument is an option.
      SprtSettings t;
      const char* wants = "--sprt wants elo0 elo1 [alpha beta] with elo0 < elo1 and alpha, beta in (0, 0.5)";
      if (i + 1 >= argc || !toDouble(value, t.elo0) || !toDouble(argv[++i], t.elo1) || t.elo0 >= t.elo1)
        return wants;
      if (i + 1 < argc && std::string(argv[i + 1]).rfind("--", 0) != 0) {
        if (i + 2 >= argc || !toDouble(argv[i + 1], t.alpha) || !toDouble(argv[i + 2], t.beta)) return wants;
        i += 2;
      }
      if (t.alpha <= 0 || t.alpha >= 0.5 || t.beta <= 0 || t.beta >= 0.5) return wants;
      out.sprt = t;
    } else {
      return "unknown option " + opt + " (see --help)";
    }
    if (!error.empty()) return error;
  }
  if (!haveEngine[0] || !haveEngine[1]) return "both --engine1 and --engine2 are needed (see --help)";
  if ((width == 0) != (height == 0)) return "--width and --height go together";
  c.rectangular = width != 0;
  c.width = width ? width : size;
  c.height = height ? height : size;
  return "";
}

std::string usage() {
  return R"(zorva_match: plays games between two engines that speak the engine protocol
on standard input and output, and referees them.

  --engine1 CMD, --engine2 CMD   engine commands, run with /bin/sh -c (required)
  --name1 NAME, --name2 NAME     names in the report (engine1, engine2)
  --games N                      games to play (2); each opening is played twice
                                 with colours swapped, engine1 black first; the
                                 openings start over when the games outnumber them.
                                 With --sprt the most games to play
  --sprt ELO0 ELO1 [ALPHA BETA]  stop once the test on game pairs accepts H0
                                 (engine1 is ELO0 stronger) or H1 (ELO1 stronger);
                                 ALPHA and BETA are its error rates (0.05 0.05)
  --openings FILE                opening book, one opening a line ("h8i9": letter
                                 = x from a, number = y + 1); none: empty board
  --seed S                       shuffle the openings with seed S (file order)
  --swap2                        negotiate each opening by Swap2: the engine the
                                 plan makes black places three stones (or the
                                 book's first three are used), the other answers
                                 zvswap2step2 (swap, stay, or add two stones for
                                 the first to choose with zvswap2step3); the
                                 colours follow from the answers
  --rule 0|1|2                   freestyle, exactly five, Renju (0)
  --size N                       square board, START N (15)
  --width W --height H           rectangular board, RECTSTART W,H; x < H, y < W
  --turn-ms MS                   timeout_turn (1000)
  --match-ms MS                  timeout_match per engine and game; 0: none (0)
  --increment-ms MS              time_increment, added after each move (0)
  --tolerance-ms MS              slack on both limits (50)
  --start-ms MS                  time to answer START with OK (5000)
  --end-ms MS                    time to exit after END before the kill (1000)
  --info "KEY VALUE"             extra INFO line for both engines; repeatable
  --concurrency K                games played at once (1)
  --games-out FILE               also write the per-game lines to FILE
  --positions-out FILE           append every position of each game to FILE:
                                 "<moves> <result> <rule>", moves as in the book
                                 ("-": empty board), result for the side to move
                                 (1 win, 0 loss, 0.5 draw)
  --stderr                       let the engines' standard error through
  --verbose                      print every protocol line on standard error

Forfeits: a move later than the turn limit plus the tolerance after its
request, a match clock below minus the tolerance, an unreadable answer, a move
off the board or on a stone, a forbidden move of black under Renju, an engine
that ends or gives no OK after START. A full board is a draw.

Elo from engine1's view: score p = (W + D/2) / N, Elo = -400 log10(1/p - 1);
the 95% margin maps p +- 1.96 sqrt(var / N) through the same formula, with
var = (W (1-p)^2 + D (1/2-p)^2 + L p^2) / N. LOS = 1/2 (1 + erf((W-L) / sqrt(2 (W+L)))).

SPRT on the N complete pairs: x = engine1's points in a pair / 2, with mean m
and variance v; s0, s1 = 1 / (1 + 10^(-ELO/400)); LLR = N (s1-s0) (2m-s0-s1) / (2v),
bounds ln(BETA / (1-ALPHA)) and ln((1-BETA) / ALPHA). A line "SPRT: ..." follows
each complete pair; games in progress when a bound is crossed are abandoned
after their current move.

Exit status: 0 when the match was played, whatever its result; 2 on bad
arguments or an unreadable opening book.
)";
}

}  // namespace zorva::referee
