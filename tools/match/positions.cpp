#include "match/positions.h"

namespace zorva::referee {

std::string formatPositions(Rule rule, const GameResult& r) {
  if (r.reason == Reason::NoStart) return "";
  std::vector<Cell> line = r.opening.stones;
  size_t placed = r.moves.size() - (r.reason == Reason::Forbidden ? 1 : 0);
  std::string out;
  for (size_t m = 0;; ++m) {
    // Black is to move after an even number of stones.
    int mover = line.size() % 2 == 0 ? r.black : 1 - r.black;
    const char* result = r.winner == -1 ? "0.5" : r.winner == mover ? "1" : "0";
    out += (line.empty() ? "-" : cellsName(line)) + " " + result + " " + std::to_string(int(rule)) + "\n";
    if (m == placed) break;
    line.push_back(r.moves[m]);
  }
  return out;
}

}  // namespace zorva::referee
