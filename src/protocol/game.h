#pragma once
// The game position as the front end changes it: new games, moves of both
// players, blocked cells. All of it runs on the input thread while the think
// thread is idle, except playOwnMove, which the think thread calls for its move.

namespace zorva {

// A cell is on the board when 0 <= x < boardHeight and 0 <= y < boardWidth
// (x is the first protocol coordinate and the row).
bool onBoard(int x, int y);

// Starts a 20x20 game when none has been started.
void ensureGame();

// Sets the board up for boardWidth x boardHeight and greets; with
// checkSize, sizes outside 1..22 are refused and the old position stays.
void newGame(bool checkSize = true);

// Each refuses an off-board or occupied cell with its error line and
// changes nothing; playOwnMove with x = -1 is a pass.
bool playOpponentMove(int x, int y);
bool playOwnMove(int x, int y);
bool placeBlock(int x, int y);

}  // namespace zorva
