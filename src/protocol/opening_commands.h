#pragma once
// The opening-rule steps that need no search: the fixed openings of Swap2
// and Soosorv, and the check and swap answer of a Soosorv opening.

namespace zorva {

// zvswap2step1: one of the fixed three-stone openings, drawn at random.
int cmdSwap2Step1(const char* args);
// zvsoosorvstep1: the fixed first three stones around the centre.
int cmdSoosorvStep1(const char* args);
// zvsoosorvstep2, then "x,y" lines up to DONE: the three stones to judge.
int cmdSoosorvStep2(const char* args);

}  // namespace zorva
