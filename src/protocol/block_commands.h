#pragma once
// Cells and positions the engine must not choose, and cells declared
// forbidden for black: zvblock*, zvblockpath* and zvforbid.

namespace zorva {

int cmdBlock(const char* args);
int cmdBlockUndo(const char* args);
int cmdBlockReset(const char* args);
int cmdBlockPath(const char* args);
int cmdBlockPathUndo(const char* args);
int cmdBlockPathReset(const char* args);
int cmdForbidAdd(const char* args);
int cmdForbidDel(const char* args);

}  // namespace zorva
