#pragma once
// The opening database as the front end drives it: opening and closing it,
// and the commands that query and edit it.

namespace zorva {

// Start-up: the database file beside the program, loaded when the setting is on.
void openDatabaseAtStart(const char* programFolder);
// INFO usedatabase: loads or saves and frees as the new value says.
void applyUseDatabase(int value);
// END: a loaded database is written back and freed.
void closeDatabaseAtEnd();

int cmdSetDatabase(const char* args);
int cmdQueryDatabaseOne(const char* args);
int cmdQueryDatabaseAll(const char* args);
int cmdEditTvdDatabase(const char* args);
int cmdEditRawMsgDatabase(const char* args);
int cmdDeleteDatabaseOne(const char* args);
int cmdDeleteDatabaseAll(const char* args);
int cmdDbToTxt(const char* args);
int cmdTxtToDb(const char* args);
int cmdDbCheck(const char* args);
// Accepted and ignored: zvsavedatabase, zvloaddatabase, zvdeletedatabaseiso.
int cmdIgnored(const char* args);

}  // namespace zorva
