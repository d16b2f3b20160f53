#pragma once
// The transposition table as the user manages it: usage, clear, dump and load.

namespace zorva {

int cmdShowHashUsage(const char* args);
int cmdHashClear(const char* args);
int cmdHashDump(const char* args);
int cmdHashLoad(const char* args);

}  // namespace zorva
