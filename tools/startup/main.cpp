// zorva_startup: how long an engine takes to answer START, timed as a
// tournament manager times it (from the process's start to "OK"), and how
// fast its first search runs against a second one on a warm table.
//
//   zorva_startup [--engine CMD] [--runs N] [--pause-ms MS] [--hash N]
//                 [--size N] [--turn-ms MS]
//
// Each run waits --pause-ms first, so that the machine has been idle as it
// is between a manager's games. With --hash, "INFO hash_size N" goes before
// START. With --turn-ms above 0 the engine then answers the same middle-game
// position twice, the second time after its table was emptied in place, and
// both searches' speeds (nodes per millisecond, from its summary line) are
// shown, and their mean ratio at the end. Exit status 0 when every run
// answered, 1 otherwise, 2 on bad arguments.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "match/engine_process.h"

using namespace zorva::referee;
using std::chrono::milliseconds;

namespace {

struct Options {
  std::string engine = "./build/zorva";
  int runs = 5;
  int pauseMs = 3000;
  int hash = -1;
  int size = 15;
  int turnMs = 1000;
};

constexpr int kAnswerLimitMs = 10000;
// A quiet middle-game start: both sides have a two, nothing is forced.
constexpr const char* kPosition[] = {"7,7,1", "7,8,2", "8,8,1", "6,9,2"};

bool parse(int argc, char** argv, Options& o) {
  for (int i = 1; i < argc; ++i) {
    const std::string flag = argv[i];
    if (i + 1 >= argc) return false;
    const char* value = argv[++i];
    if (flag == "--engine")
      o.engine = value;
    else if (flag == "--runs")
      o.runs = std::atoi(value);
    else if (flag == "--pause-ms")
      o.pauseMs = std::atoi(value);
    else if (flag == "--hash")
      o.hash = std::atoi(value);
    else if (flag == "--size")
      o.size = std::atoi(value);
    else if (flag == "--turn-ms")
      o.turnMs = std::atoi(value);
    else
      return false;
  }
  return o.runs > 0 && o.pauseMs >= 0 && o.size > 0;
}

// Reads lines until one equals `want` (or, with `want` empty, until a line
// that is not a MESSAGE); the last summary line's speed goes to `speed`.
bool await(EngineProcess& engine, const std::string& want, long* speed = nullptr) {
  const auto deadline = Clock::now() + milliseconds(kAnswerLimitMs);
  std::string line;
  while (engine.readLine(line, deadline) == EngineProcess::Read::Line) {
    long depth, reach, ms, nps;
    if (speed && std::sscanf(line.c_str(), "MESSAGE %ld | %ld | %ldms | %ld", &depth, &reach, &ms, &nps) == 4)
      *speed = nps;
    if (want.empty() ? line.rfind("MESSAGE", 0) != 0 : line == want) return true;
  }
  return false;
}

// The position's search; its speed in nodes per millisecond, or -1.
long searchSpeed(EngineProcess& engine) {
  engine.send("BOARD");
  for (const char* stone : kPosition) engine.send(stone);
  engine.send("DONE");
  long speed = -1;
  return await(engine, "", &speed) ? speed : -1;
}

struct Timing {
  long okMs = -1;
  double speedShare = -1;  // first search's speed over the second's
};

Timing run(const Options& o, int index) {
  std::this_thread::sleep_for(milliseconds(o.pauseMs));
  EngineProcess engine;
  std::string error;
  const auto started = Clock::now();
  Timing timing;
  if (!engine.start(o.engine, false, error)) {
    std::fprintf(stderr, "zorva_startup: %s\n", error.c_str());
    return timing;
  }
  if (o.hash >= 0) engine.send("INFO hash_size " + std::to_string(o.hash));
  engine.send("START " + std::to_string(o.size));
  const bool ok = await(engine, "OK");
  const long okMs = long(std::chrono::duration_cast<milliseconds>(Clock::now() - started).count());
  std::printf("run %d: OK after %ld ms", index, okMs);
  if (ok) timing.okMs = okMs;
  if (ok && o.turnMs > 0) {
    engine.send("INFO timeout_turn " + std::to_string(o.turnMs));
    const long first = searchSpeed(engine);
    engine.send("zvhashclear");
    engine.send("RESTART");
    const long second = await(engine, "OK") ? searchSpeed(engine) : -1;
    std::printf(", first search %ld nodes/ms, second %ld nodes/ms", first, second);
    if (first < 0 || second <= 0) timing.okMs = -1;
    if (second > 0) timing.speedShare = double(first) / double(second);
  }
  std::printf("%s\n", ok ? "" : " (no OK)");
  engine.send("END");
  engine.finish(Clock::now() + milliseconds(2000));
  return timing;
}

}  // namespace

int main(int argc, char** argv) {
  Options o;
  if (!parse(argc, argv, o)) {
    std::fprintf(stderr,
                 "usage: zorva_startup [--engine CMD] [--runs N] [--pause-ms MS] [--hash N] [--size N] "
                 "[--turn-ms MS]\n");
    return 2;
  }
  std::vector<long> okMs;
  double shares = 0;
  for (int i = 1; i <= o.runs; ++i) {
    const Timing t = run(o, i);
    std::fflush(stdout);
    if (t.okMs < 0) return 1;
    okMs.push_back(t.okMs);
    shares += t.speedShare;
  }
  std::sort(okMs.begin(), okMs.end());
  std::printf("OK after %ld ms (median), %ld ms at most", okMs[okMs.size() / 2], okMs.back());
  if (o.turnMs > 0) std::printf("; first search at %.0f%% of the second's speed (mean)", 100 * shares / o.runs);
  std::printf("\n");
  return 0;
}
