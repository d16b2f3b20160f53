#pragma once
// The Soosorv steps after the opening: the fourth stone and the swap answer
// from the opening database, then the fifth-move offers and the choice among
// them, which think on the think thread.

namespace zorva {

// zvsoosorvstep3, then the stones so far as "x,y" lines up to DONE.
int cmdSoosorvStep3(const char* args);
// zvsoosorvstep4 N, then the stones: whether to swap for N fifth-move offers.
int cmdSoosorvStep4(const char* args);
// zvsoosorvstep5 N, then the four stones: they become the game position and
// N fifth moves are offered on it.
int cmdSoosorvStep5(const char* args);
// zvsoosorvstep6, then the offered cells: one of them is chosen on the game
// position of four stones.
int cmdSoosorvStep6(const char* args);

}  // namespace zorva
