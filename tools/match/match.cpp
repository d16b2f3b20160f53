#include "match/match.h"

#include <algorithm>
#include <cstdio>
#include <atomic>
#include <cctype>
#include <mutex>
#include <random>
#include <thread>

#include "match/engine_process.h"

namespace zorva::referee {

const char* reasonName(Reason r) {
  switch (r) {
    case Reason::Five: return "five in a row";
    case Reason::BoardFull: return "board full";
    case Reason::OffBoard: return "move off the board";
    case Reason::Occupied: return "move on an occupied cell";
    case Reason::Garbage: return "unreadable answer";
    case Reason::Forbidden: return "forbidden move";
    case Reason::TurnTime: return "turn time exceeded";
    case Reason::MatchTime: return "match time exceeded";
    case Reason::Crash: return "engine crashed";
    case Reason::NoStart: return "engine failed to start";
  }
  return "?";
}

namespace {

using std::chrono::milliseconds;

bool startsWithNoCase(const std::string& s, const char* prefix) {
  for (size_t i = 0; prefix[i]; ++i)
    if (i >= s.size() || std::toupper(static_cast<unsigned char>(s[i])) != prefix[i]) return false;
  return true;
}

// Lines an engine may print at any time that are never an answer.
bool informational(const std::string& line) {
  if (line.find_first_not_of(" \t") == std::string::npos) return true;
  for (const char* p : {"MESSAGE", "DEBUG", "ERROR", "UNKNOWN"})
    if (startsWithNoCase(line, p)) return true;
  return false;
}

// "x,y" with optional blanks around the numbers and nothing else.
bool parseMove(const std::string& line, int& x, int& y) {
  size_t i = 0;
  auto blanks = [&] {
    while (i < line.size() && (line[i] == ' ' || line[i] == '\t')) ++i;
  };
  auto number = [&](int& v) {
    blanks();
    bool negative = i < line.size() && line[i] == '-';
    if (negative) ++i;
    size_t first = i;
    long long n = 0;
    while (i < line.size() && std::isdigit(static_cast<unsigned char>(line[i])) && i - first < 9)
      n = n * 10 + (line[i++] - '0');
    if (i == first) return false;
    v = int(negative ? -n : n);
    blanks();
    return true;
  };
  if (!number(x) || i >= line.size() || line[i] != ',') return false;
  ++i;
  return number(y) && i == line.size();
}

int elapsedMs(Clock::time_point since) {
  return int(std::chrono::duration_cast<milliseconds>(Clock::now() - since).count());
}

class Game {
 public:
  Game(const MatchConfig& config, const Opening& opening, int black, int index, const std::atomic<bool>* stop)
      : cfg_(config), stop_(stop), board_(config.width, config.height) {
    result_.index = index;
    result_.black = black;
    result_.opening = opening;
    for (const Cell& c : opening.stones) board_.set(c.x, c.y, board_.toMove());
    for (int e = 0; e < 2; ++e) clock_[e] = cfg_.matchMs;
  }

  GameResult play() {
    if (startEngines() && (!cfg_.swap2 || negotiateSwap2())) {
      while (!over_ && !stopped()) move();
    }
    result_.abandoned = !over_;
    stopEngines();
    return result_;
  }

 private:
  bool stopped() const { return stop_ && stop_->load(); }

  void trace(int e, const char* dir, const std::string& line) {
    if (cfg_.trace)
      cfg_.trace("game " + std::to_string(result_.index + 1) + " " + cfg_.name[e] + " " + dir + " " + line);
  }

  bool send(int e, const std::string& line) {
    trace(e, "<", line);
    return engine_[e].send(line);
  }

  void decide(int winner, Reason reason, std::string detail) {
    result_.winner = winner;
    result_.reason = reason;
    result_.detail = std::move(detail);
    over_ = true;
  }

  void lose(int e, Reason reason, std::string detail) { decide(1 - e, reason, std::move(detail)); }

  // The engine's output ended: it exited, or closed its output and is killed.
  void crashed(int e) {
    std::string how = engine_[e].finish(Clock::now() + milliseconds(500));
    lose(e, Reason::Crash, cfg_.name[e] + " ended (" + how + ")");
  }

  // Both engines are started and greeted at once so that slow start-ups
  // overlap; an engine that cannot even start loses, and so does one that
  // gives no OK, unless both fail.
  bool startEngines() {
    std::string failure[2];
    for (int e = 0; e < 2; ++e) {
      std::string error;
      if (!engine_[e].start(cfg_.command[e], cfg_.keepStderr, error)) {
        failure[e] = error;
        continue;
      }
      std::string start = cfg_.rectangular
                              ? "RECTSTART " + std::to_string(cfg_.width) + "," + std::to_string(cfg_.height)
                              : "START " + std::to_string(cfg_.width);
      if (!send(e, start)) failure[e] = "does not read its input";
    }
    auto deadline = Clock::now() + milliseconds(cfg_.startMs);
    for (int e = 0; e < 2; ++e) {
      while (failure[e].empty()) {
        std::string line;
        auto got = engine_[e].readLine(line, deadline);
        if (got == EngineProcess::Read::Timeout) {
          failure[e] = "no OK within " + std::to_string(cfg_.startMs) + " ms of START";
          unresponsive_[e] = true;
        } else if (got == EngineProcess::Read::Closed) {
          failure[e] = "ended before OK (" + engine_[e].finish(Clock::now() + milliseconds(500)) + ")";
        } else {
          trace(e, ">", line);
          if (startsWithNoCase(line, "OK")) break;
          if (startsWithNoCase(line, "ERROR")) failure[e] = "refused START: " + line;
        }
      }
    }
    if (!failure[0].empty() && !failure[1].empty()) {
      decide(-1, Reason::NoStart, cfg_.name[0] + " " + failure[0] + "; " + cfg_.name[1] + " " + failure[1]);
      return false;
    }
    for (int e = 0; e < 2; ++e) {
      if (!failure[e].empty()) {
        lose(e, Reason::NoStart, cfg_.name[e] + " " + failure[e]);
        return false;
      }
    }
    for (int e = 0; e < 2; ++e) {
      std::vector<std::string> info = {"INFO timeout_turn " + std::to_string(cfg_.turnMs)};
      if (cfg_.matchMs > 0) {
        info.push_back("INFO timeout_match " + std::to_string(cfg_.matchMs));
        info.push_back("INFO time_increment " + std::to_string(cfg_.incrementMs));
      }
      info.push_back("INFO rule " + std::to_string(int(cfg_.rule)));
      for (const std::string& kv : cfg_.extraInfo) info.push_back("INFO " + kv);
      for (const std::string& line : info) {
        if (!send(e, line)) {
          crashed(e);
          return false;
        }
      }
    }
    return true;
  }

  // The Swap2 steps' decisions are not charged to the clocks; a decision may
  // take a budget for the swap and one for the stones it adds.
  static constexpr int kSwap2Stones = 3;
  static constexpr int kSwap2Budgets = 2;

  // Sends the requests and reads until a "MESSAGE SWAP2 " line comes; its
  // words after that prefix. False when the game ended on the way.
  bool askSwap2(int e, std::vector<std::string> lines, int budgets, std::string& words) {
    drain(e);
    if (cfg_.matchMs > 0) lines.insert(lines.begin(), "INFO time_left " + std::to_string(std::max(clock_[e], 0)));
    for (const std::string& line : lines) {
      if (!send(e, line)) {
        crashed(e);
        return false;
      }
    }
    return readSwap2(e, budgets, words);
  }

  bool readSwap2(int e, int budgets, std::string& words) {
    const int limit = budgets * cfg_.turnMs;
    const auto asked = Clock::now(), deadline = asked + milliseconds(limit + cfg_.toleranceMs);
    const std::string prefix = "MESSAGE SWAP2 ";
    for (std::string line;;) {
      auto got = engine_[e].readLine(line, deadline);
      result_.maxLatencyMs[e] = std::max(result_.maxLatencyMs[e], elapsedMs(asked));
      if (got == EngineProcess::Read::Timeout) {
        unresponsive_[e] = true;
        lose(e, Reason::TurnTime, cfg_.name[e] + " gave no Swap2 answer within " + std::to_string(limit) + " ms");
        return false;
      }
      if (got == EngineProcess::Read::Closed) {
        crashed(e);
        return false;
      }
      trace(e, ">", line);
      if (line.rfind(prefix, 0) == 0) {
        words = line.substr(prefix.size());
        return true;
      }
    }
  }

  // "MOVE<n> x y": the stone placed on the board; false, and the engine
  // loses, when the answer is another or the cell is not free.
  bool placeSwap2Stone(int e, const std::string& words, int n) {
    int k = 0, x = 0, y = 0;
    char tail = 0;
    if (std::sscanf(words.c_str(), "MOVE%d %d %d%c", &k, &x, &y, &tail) != 3 || k != n) {
      lose(e, Reason::Garbage, cfg_.name[e] + " answered \"MESSAGE SWAP2 " + words.substr(0, 80) + "\"");
      return false;
    }
    const std::string placed = cfg_.name[e] + " placed " + std::to_string(x) + "," + std::to_string(y);
    if (!board_.inside(x, y)) {
      lose(e, Reason::OffBoard, placed);
      return false;
    }
    if (board_.at(x, y) != kEmpty) {
      lose(e, Reason::Occupied, placed + " (" + cellName({x, y}) + ")");
      return false;
    }
    board_.set(x, y, board_.toMove());
    result_.opening.stones.push_back({x, y});
    return true;
  }

  // The stones so far as zvboard lines, then the step's command.
  std::vector<std::string> swap2Position(const char* step) {
    std::vector<std::string> lines = {"zvboard"};
    const Stone own = board_.toMove();
    Stone s = kBlack;
    for (const Cell& c : result_.opening.stones) {
      lines.push_back(std::to_string(c.x) + "," + std::to_string(c.y) + "," + (s == own ? "1" : "2"));
      s = other(s);
    }
    lines.push_back("DONE");
    lines.push_back(step);
    return lines;
  }

  // A's three stones: the book's, or its own.
  bool swap2Opening(int a) {
    std::vector<Cell> book = result_.opening.stones;
    board_ = Board(cfg_.width, cfg_.height);
    result_.opening.stones.clear();
    if (book.size() >= size_t(kSwap2Stones)) {
      for (int i = 0; i < kSwap2Stones; ++i) {
        board_.set(book[size_t(i)].x, book[size_t(i)].y, board_.toMove());
        result_.opening.stones.push_back(book[size_t(i)]);
      }
      return true;
    }
    std::string words;
    for (int n = 1; n <= kSwap2Stones; ++n) {
      const bool asked = n == 1 ? askSwap2(a, {"zvswap2step1"}, 1, words) : readSwap2(a, 1, words);
      if (!asked || !placeSwap2Stone(a, words, n)) return false;
    }
    return true;
  }

  // Runs the Swap2 steps and sets the colours; both engines then start over
  // on an empty board and get the agreed stones with their first request.
  bool negotiateSwap2() {
    const int a = result_.black, b = 1 - a;
    std::string words;
    if (!swap2Opening(a) || !askSwap2(b, swap2Position("zvswap2step2"), kSwap2Budgets, words)) return false;
    if (words == "SWAP1 YES" || words == "SWAP1 NO") {
      result_.black = words == "SWAP1 YES" ? b : a;
    } else {
      if (!placeSwap2Stone(b, words, 4) || !readSwap2(b, kSwap2Budgets, words) || !placeSwap2Stone(b, words, 5))
        return false;
      if (!askSwap2(a, swap2Position("zvswap2step3"), 1, words)) return false;
      if (words != "SWAP2 YES" && words != "SWAP2 NO") {
        lose(a, Reason::Garbage, cfg_.name[a] + " answered \"MESSAGE SWAP2 " + words.substr(0, 80) + "\"");
        return false;
      }
      result_.black = words == "SWAP2 YES" ? a : b;
    }
    return restart(a) && restart(b);
  }

  // RESTART and its OK, so that the game's first request finds an empty board.
  bool restart(int e) {
    drain(e);
    if (!send(e, "RESTART")) {
      crashed(e);
      return false;
    }
    const auto deadline = Clock::now() + milliseconds(cfg_.startMs);
    for (std::string line;;) {
      auto got = engine_[e].readLine(line, deadline);
      if (got == EngineProcess::Read::Timeout) {
        unresponsive_[e] = true;
        lose(e, Reason::NoStart, cfg_.name[e] + " gave no OK within " + std::to_string(cfg_.startMs) + " ms of RESTART");
        return false;
      }
      if (got == EngineProcess::Read::Closed) {
        crashed(e);
        return false;
      }
      trace(e, ">", line);
      if (startsWithNoCase(line, "OK")) return true;
    }
  }

  // Lines that arrived while the engine was not asked anything; reading them
  // now keeps a stray line from being taken as the answer to the next turn.
  void drain(int e) {
    std::string line;
    while (engine_[e].readLine(line, Clock::now()) == EngineProcess::Read::Line) trace(e, "> (ignored)", line);
  }

  // The commands that ask engine e for a move: the whole position with BOARD
  // (or BEGIN on an empty board) the first time, then the opponent's last move.
  std::vector<std::string> request(int e) {
    if (primed_[e]) {
      const Cell& last = result_.moves.back();
      return {"TURN " + std::to_string(last.x) + "," + std::to_string(last.y)};
    }
    primed_[e] = true;
    if (board_.stones() == 0) return {"BEGIN"};
    std::vector<std::string> lines = {"BOARD"};
    Stone own = board_.toMove();
    int n = 0;
    auto add = [&](const Cell& c) {
      Stone s = n++ % 2 == 0 ? kBlack : kWhite;
      lines.push_back(std::to_string(c.x) + "," + std::to_string(c.y) + "," + (s == own ? "1" : "2"));
    };
    for (const Cell& c : result_.opening.stones) add(c);
    for (const Cell& c : result_.moves) add(c);
    lines.push_back("DONE");
    return lines;
  }

  void move() {
    if (board_.full()) {
      decide(-1, Reason::BoardFull, "");
      return;
    }
    Stone side = board_.toMove();
    int e = side == kBlack ? result_.black : 1 - result_.black;
    std::string answer;
    if (ask(e, answer)) referee(e, side, answer);
  }

  // Sends engine e its request and waits for the answer, charging the time
  // to its clocks. False when the game ended on the way.
  bool ask(int e, std::string& answer) {
    bool clock = cfg_.matchMs > 0;
    drain(e);
    std::vector<std::string> lines;
    if (clock) lines.push_back("INFO time_left " + std::to_string(std::max(clock_[e], 0)));
    for (std::string& line : request(e)) lines.push_back(std::move(line));
    for (const std::string& line : lines) {
      if (!send(e, line)) {
        crashed(e);
        return false;
      }
    }

    // The move is due by the turn limit or by what is left on the match
    // clock, whichever comes first.
    auto asked = Clock::now();
    bool clockBound = clock && clock_[e] < cfg_.turnMs;
    int limit = clockBound ? std::max(clock_[e], 0) : cfg_.turnMs;
    auto deadline = asked + milliseconds(limit + cfg_.toleranceMs);
    for (;;) {
      auto got = engine_[e].readLine(answer, deadline);
      if (got == EngineProcess::Read::Timeout) {
        result_.maxLatencyMs[e] = std::max(result_.maxLatencyMs[e], elapsedMs(asked));
        unresponsive_[e] = true;
        lose(e, clockBound ? Reason::MatchTime : Reason::TurnTime,
             cfg_.name[e] + " gave no move within " + std::to_string(limit) + " ms");
        return false;
      }
      if (got == EngineProcess::Read::Closed) {
        crashed(e);
        return false;
      }
      trace(e, ">", answer);
      if (!informational(answer)) break;
    }

    int spent = elapsedMs(asked);
    result_.maxLatencyMs[e] = std::max(result_.maxLatencyMs[e], spent);
    if (spent > cfg_.turnMs + cfg_.toleranceMs) {
      lose(e, Reason::TurnTime, cfg_.name[e] + " took " + std::to_string(spent) + " ms");
      return false;
    }
    if (clock) {
      clock_[e] -= spent;
      if (clock_[e] < -cfg_.toleranceMs) {
        lose(e, Reason::MatchTime, cfg_.name[e] + " overran its match clock by " + std::to_string(-clock_[e]) + " ms");
        return false;
      }
      clock_[e] += cfg_.incrementMs;
    }
    return true;
  }

  void referee(int e, Stone side, const std::string& answer) {
    int x, y;
    if (!parseMove(answer, x, y)) {
      lose(e, Reason::Garbage, cfg_.name[e] + " answered \"" + answer.substr(0, 80) + "\"");
      return;
    }
    std::string played = cfg_.name[e] + " played " + std::to_string(x) + "," + std::to_string(y);
    if (!board_.inside(x, y)) {
      lose(e, Reason::OffBoard, played);
      return;
    }
    if (board_.at(x, y) != kEmpty) {
      lose(e, Reason::Occupied, played + " (" + cellName({x, y}) + ")");
      return;
    }
    ++result_.movesPlayed[e];
    result_.moves.push_back({x, y});
    // A five decides before the forbidden test: under Renju black's exact
    // five wins even where it also makes a double or an overline.
    if (makesFive(board_, x, y, side, cfg_.rule)) {
      board_.set(x, y, side);
      decide(e, Reason::Five, cfg_.name[e] + " made five with " + cellName({x, y}));
      return;
    }
    if (cfg_.rule == Rule::Renju && side == kBlack) {
      Forbidden why = forbiddenKind(board_, x, y);
      if (why != Forbidden::None) {
        lose(e, Reason::Forbidden, cfg_.name[e] + " played " + cellName({x, y}) + ", a " + forbiddenName(why));
        return;
      }
    }
    board_.set(x, y, side);
  }

  // END to both, a grace period to exit, then the kill; an engine that has
  // already let a deadline pass gets no grace.
  void stopEngines() {
    for (int e = 0; e < 2; ++e)
      if (engine_[e].running() && !unresponsive_[e]) send(e, "END");
    auto deadline = Clock::now() + milliseconds(cfg_.endMs);
    for (int e = 0; e < 2; ++e)
      if (engine_[e].running()) engine_[e].finish(unresponsive_[e] ? Clock::now() : deadline);
  }

  const MatchConfig& cfg_;
  const std::atomic<bool>* stop_;
  Board board_;
  GameResult result_;
  EngineProcess engine_[2];
  bool primed_[2] = {false, false};
  bool unresponsive_[2] = {false, false};
  int clock_[2];
  bool over_ = false;
};

}  // namespace

GameResult playGame(const MatchConfig& config, const Opening& opening, int black, int index,
                    const std::atomic<bool>* stop) {
  return Game(config, opening, black, index, stop).play();
}

std::vector<GamePlan> planGames(int games, int openings, const uint64_t* seed) {
  std::vector<int> order(size_t(std::max(openings, 1)));
  for (size_t i = 0; i < order.size(); ++i) order[i] = int(i);
  if (seed) {
    // Fisher-Yates on a generator whose output the standard fixes, so that a
    // seed means the same order on every platform.
    std::mt19937_64 rng(*seed);
    for (size_t i = order.size(); i > 1; --i) std::swap(order[i - 1], order[rng() % i]);
  }
  std::vector<GamePlan> plan;
  for (int g = 0; g < games; ++g) plan.push_back({order[size_t(g / 2) % order.size()], g % 2});
  return plan;
}

std::vector<GameResult> runMatch(const MatchConfig& config, const std::vector<Opening>& openings,
                                 const std::vector<GamePlan>& plan, int concurrency,
                                 const std::function<bool(const GameResult&)>& onGame) {
  std::vector<GameResult> results;
  std::atomic<size_t> next{0};
  std::atomic<bool> stop{false};
  std::mutex reportLock;
  const Opening empty;
  auto worker = [&] {
    for (size_t g; !stop && (g = next++) < plan.size();) {
      const Opening& o = openings.empty() ? empty : openings[size_t(plan[g].opening)];
      GameResult r = playGame(config, o, plan[g].black, int(g), &stop);
      if (r.abandoned) continue;
      std::lock_guard<std::mutex> lock(reportLock);
      results.push_back(std::move(r));
      if (onGame && !onGame(results.back())) stop = true;
    }
  };
  int threads = std::clamp(concurrency, 1, std::max(1, int(plan.size())));
  std::vector<std::thread> pool;
  for (int t = 1; t < threads; ++t) pool.emplace_back(worker);
  worker();
  for (std::thread& t : pool) t.join();
  std::sort(results.begin(), results.end(),
            [](const GameResult& a, const GameResult& b) { return a.index < b.index; });
  return results;
}

}  // namespace zorva::referee
