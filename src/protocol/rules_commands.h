#pragma once
// Inspection of the rules' view of the position: zvboard sets a position up
// without a search, zvshowforbid and zvprintfeature print what the pattern
// codes and the forbidden-point test say about it.

namespace zorva {

int cmdSetUpBoard(const char* args);
int cmdShowForbid(const char* args);
int cmdPrintFeature(const char* args);

}  // namespace zorva
