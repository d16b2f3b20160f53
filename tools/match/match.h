#pragma once
// The game manager: plays games between two engine commands over the line
// protocol and referees every move.
#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "match/openings.h"
#include "match/rules.h"

namespace zorva::referee {

struct MatchConfig {
  std::string command[2];                 // shell commands of engine 1 and engine 2
  std::string name[2] = {"engine1", "engine2"};
  int width = 15;
  int height = 15;
  bool rectangular = false;               // RECTSTART width,height instead of START size
  Rule rule = Rule::Freestyle;
  int turnMs = 1000;                      // timeout_turn, above 0
  int matchMs = 0;                        // timeout_match per game and engine; 0: no match clock
  int incrementMs = 0;                    // added to an engine's clock after each of its moves
  int toleranceMs = 50;                   // slack on both limits for pipes and scheduling
  int startMs = 5000;                     // for the OK after START
  int endMs = 1000;                       // for the engine to exit after END, then it is killed
  std::vector<std::string> extraInfo;     // "key value" pairs sent as INFO after the standard ones
  bool keepStderr = false;
  // Swap2: the plan's black engine (A) places three stones, or the book's
  // first three are taken; the other (B) swaps, stays, or adds a fourth and
  // a fifth stone for A to choose the colour. The colours then follow.
  bool swap2 = false;
  // Receives every protocol line sent and received, and the lines that were
  // ignored; called from the game's thread.
  std::function<void(const std::string&)> trace;
};

enum class Reason {
  Five,       // the winner made five
  BoardFull,  // draw
  OffBoard,   // the loser's move was off the board
  Occupied,   // ... on an occupied cell
  Garbage,    // ... not "x,y" at all
  Forbidden,  // black's move was forbidden under Renju
  TurnTime,   // the loser's move came after timeout_turn plus the tolerance
  MatchTime,  // the loser's match clock ran out
  Crash,      // the loser's output ended (it exited or closed its output)
  NoStart,    // the loser did not start, or did not answer START with OK
};
const char* reasonName(Reason r);

struct GameResult {
  int index = 0;                  // game number, from 0
  int black = 0;                  // which engine (0 or 1) played black
  Opening opening;                // with --swap2, the stones the engines agreed on
  std::vector<Cell> moves;        // played after the opening; a forbidden move is the last one
  int winner = -1;                // engine index, -1 for a draw
  Reason reason = Reason::BoardFull;
  std::string detail;             // what exactly happened, for the report
  int maxLatencyMs[2] = {0, 0};   // slowest answer of each engine
  int movesPlayed[2] = {0, 0};
  bool abandoned = false;         // stopped undecided; winner and reason mean nothing
};

// Plays one game from the opening; engine `black` (0 or 1) plays black, or
// under Swap2 places the first three stones and the colours follow. Once
// `stop` is set the game is abandoned after the answer being awaited, and
// both engines get END as after any game.
GameResult playGame(const MatchConfig& config, const Opening& opening, int black, int index,
                    const std::atomic<bool>* stop = nullptr);

// Which opening and colours each game gets: game 2k and 2k + 1 share an
// opening, engine 1 black in the first of the pair and white in the second.
// Openings are taken in file order, or shuffled by `seed` when it is set, and
// reused from the start when the games outnumber them.
struct GamePlan {
  int opening = 0;
  int black = 0;
};
std::vector<GamePlan> planGames(int games, int openings, const uint64_t* seed);

// Runs the planned games on up to `concurrency` threads. `onGame` is called
// once per finished game, one call at a time, in the order games finish; when
// it returns false no further game starts and the games in progress are
// abandoned. Returns the finished games in plan order.
std::vector<GameResult> runMatch(const MatchConfig& config, const std::vector<Opening>& openings,
                                 const std::vector<GamePlan>& plan, int concurrency,
                                 const std::function<bool(const GameResult&)>& onGame);

}  // namespace zorva::referee
