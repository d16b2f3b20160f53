// A stand-in engine for the referee's tests. It speaks just enough of the
// protocol to be driven through a game and misbehaves on cue:
//
//   --moves "x,y x,y ..."  its own moves in order; afterwards, or without the
//                          option, the first free cell in row order
//   --at N:ACTION          what to do instead at its own move N (from 1):
//                          sleep=MS (then move), crash, garbage, occupied,
//                          offboard, hang
//   --delay-ms MS          sleep before every move
//   --start ok|hang|error|crash   how to answer START (ok)
//   --end exit|hang        hang: ignore END and the end of input
//   --chatter 1            informational lines before each move
//   --log FILE             append every line received to FILE
//   --swap2 S1/S2/S3       Swap2 answers: S1 the three stones of step 1
//                          ("x,y x,y x,y"); S2 "swap", "stay" or the fourth
//                          and fifth stones ("x,y x,y"); S3 "swap" or "stay"
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

void sleepMs(int ms) { std::this_thread::sleep_for(std::chrono::milliseconds(ms)); }

[[noreturn]] void hangForever() {
  for (;;) sleepMs(1000);
}

struct Fake {
  std::vector<std::pair<int, int>> script;
  std::map<int, std::string> actions;
  int delayMs = 0;
  std::string start = "ok", end = "exit";
  bool chatter = false;
  std::ofstream log;
  std::string swap2[3] = {"3,3 5,2 7,2", "stay", "stay"};

  int width = 0, height = 0;
  std::vector<int> cells;  // 0 empty, else occupied
  int ownMoves = 0;

  bool inside(int x, int y) const { return x >= 0 && y >= 0 && x < height && y < width; }
  void occupy(int x, int y) {
    if (inside(x, y)) cells[size_t(x * width + y)] = 1;
  }
  void newBoard(int w, int h) {
    width = w;
    height = h;
    cells.assign(size_t(w * h), 0);
  }

  void reply(int x, int y) {
    occupy(x, y);
    std::cout << x << "," << y << std::endl;
  }

  void move() {
    ++ownMoves;
    if (delayMs) sleepMs(delayMs);
    if (chatter) std::cout << "MESSAGE thinking hard\nDEBUG depth 1\n\nERROR nothing wrong" << std::endl;
    std::string action = actions.count(ownMoves) ? actions[ownMoves] : "";
    if (action.rfind("sleep=", 0) == 0) sleepMs(std::atoi(action.c_str() + 6));
    if (action == "crash") std::_Exit(3);
    if (action == "hang") hangForever();
    if (action == "garbage") {
      std::cout << "banana" << std::endl;
      return;
    }
    if (action == "offboard") {
      std::cout << height << ",0" << std::endl;
      return;
    }
    if (action == "occupied") {
      for (int i = 0; i < width * height; ++i)
        if (cells[size_t(i)]) {
          std::cout << i / width << "," << i % width << std::endl;
          return;
        }
    }
    if (size_t(ownMoves) <= script.size()) {
      auto [x, y] = script[size_t(ownMoves - 1)];
      reply(x, y);
      return;
    }
    for (int i = 0; i < width * height; ++i)
      if (!cells[size_t(i)]) {
        reply(i / width, i % width);
        return;
      }
    std::cout << "MESSAGE no free cell" << std::endl;
  }

  // "x,y x,y ..." as "MESSAGE SWAP2 MOVE<n> x y" lines, numbered from `first`.
  void swap2Stones(const std::string& cells, int first) {
    std::istringstream in(cells);
    std::string m;
    int x, y;
    while (in >> m)
      if (std::sscanf(m.c_str(), "%d,%d", &x, &y) == 2)
        std::cout << "MESSAGE SWAP2 MOVE" << first++ << " " << x << " " << y << std::endl;
  }

  void swap2Answer(int step) {
    if (step < 1 || step > 3) return;
    const std::string& a = swap2[step - 1];
    if (step == 1)
      swap2Stones(a, 1);
    else if (a == "swap" || a == "stay")
      std::cout << "MESSAGE SWAP2 SWAP" << step - 1 << " " << (a == "swap" ? "YES" : "NO") << std::endl;
    else
      swap2Stones(a, 4);
  }

  // Returns false at END.
  bool handle(const std::string& line) {
    if (log.is_open()) log << line << std::endl;
    int a = 0, b = 0;
    if (line.rfind("START ", 0) == 0 || line.rfind("RECTSTART ", 0) == 0) {
      if (start == "hang") hangForever();
      if (start == "crash") std::_Exit(4);
      if (start == "error") {
        std::cout << "ERROR size of the board" << std::endl;
        return true;
      }
      if (line[0] == 'S') {
        a = std::atoi(line.c_str() + 6);
        newBoard(a, a);
      } else if (std::sscanf(line.c_str() + 10, "%d,%d", &a, &b) == 2) {
        newBoard(a, b);
      }
      std::cout << "OK" << std::endl;
    } else if (line == "RESTART") {
      newBoard(width, height);
      std::cout << "OK" << std::endl;
    } else if (line.rfind("zvswap2step", 0) == 0) {
      swap2Answer(std::atoi(line.c_str() + 11));
    } else if (line == "BEGIN") {
      move();
    } else if (line.rfind("TURN ", 0) == 0 && std::sscanf(line.c_str() + 5, "%d,%d", &a, &b) == 2) {
      occupy(a, b);
      move();
    } else if (line == "BOARD") {
      std::string entry;
      while (std::getline(std::cin, entry)) {
        if (log.is_open()) log << entry << std::endl;
        int c = 0;
        if (std::sscanf(entry.c_str(), "%d,%d,%d", &a, &b, &c) != 3) break;
        occupy(a, b);
      }
      move();
    } else if (line == "END") {
      return false;
    }
    return true;
  }
};

}  // namespace

int main(int argc, char** argv) {
  Fake f;
  for (int i = 1; i + 1 < argc; i += 2) {
    std::string opt = argv[i], value = argv[i + 1];
    if (opt == "--moves") {
      std::istringstream in(value);
      std::string m;
      int x, y;
      while (in >> m)
        if (std::sscanf(m.c_str(), "%d,%d", &x, &y) == 2) f.script.push_back({x, y});
    } else if (opt == "--at") {
      f.actions[std::atoi(value.c_str())] = value.substr(value.find(':') + 1);
    } else if (opt == "--delay-ms") {
      f.delayMs = std::atoi(value.c_str());
    } else if (opt == "--start") {
      f.start = value;
    } else if (opt == "--end") {
      f.end = value;
    } else if (opt == "--chatter") {
      f.chatter = value == "1";
    } else if (opt == "--log") {
      f.log.open(value, std::ios::app);
    } else if (opt == "--swap2") {
      std::istringstream in(value);
      for (std::string& answer : f.swap2) std::getline(in, answer, '/');
    }
  }
  std::string line;
  while (std::getline(std::cin, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (!f.handle(line)) break;
  }
  if (f.end == "hang") hangForever();
  return 0;
}
