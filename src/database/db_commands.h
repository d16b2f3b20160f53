#pragma once
// The logic of the database commands. The front end parses the command
// line and the "x,y" body lines up to DONE, builds the move list (cell keys
// x * 32 + y, from the empty board) and calls these; each returns the reply
// lines, complete but without line feeds, for it to send in order.
//
// Every command is silent while the database is not in use, except the two
// queries, which answer "not found".

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "database/database.h"

namespace zorva::db {

using Lines = std::vector<std::string>;

// Start-up and INFO usedatabase 1: loads the file at db.path().
Lines openDatabase(Database& db);
// END and INFO usedatabase 0: saves and frees. When the save fails the
// records stay in memory (and unused by the search, which also checks the
// setting), so a later save can still keep them.
Lines closeDatabase(Database& db);

// zvsetdatabase. The same name does nothing. Otherwise a loaded database is
// saved and freed, the name taken, and the new file loaded when
// useDatabase is on. If the old database cannot be saved, its records are
// added to the new file (in place of the file's own for the same
// positions) and saved there, so no edit is lost to a wrong name.
Lines setDatabase(Database& db, std::string_view name, bool useDatabase);

// zvquerydatabaseone: "MESSAGE DATABASE ONE t v d message", or
// "MESSAGE DATABASE ONE -1 0 0" when off or not found.
Lines queryOne(const Database& db, const Position& position);
// zvquerydatabaseall: every empty cell (occupied(cell) false on the current
// board), x outer over [0, height), y inner over [0, width), whose
// extension of the position has a record.
Lines queryAll(const Database& db, const Position& position,
               const std::function<bool(int32_t cell)>& occupied);

// Every command that changes the database saves it at once; a failed save
// adds its message to the reply.
//
// zvedittvddatabase. `args` is the text after the command word:
// "mask t v d", missing numbers default to 0, -1, 0, 0. Mask bit 0 sets t,
// bit 1 v, bit 2 d; the message is kept. Values beyond a field's range
// (t a signed byte, v and d int16) are stored as its nearest limit.
Lines editTvd(Database& db, std::string_view args, const Position& position);
// zveditrawmsgdatabase. The message is the first word of the rest of the
// command line (a front end writes one word, as "%s" reads it).
Lines editRawMsg(Database& db, std::string_view message, const Position& position);

// zvdeletedatabaseone: removes the record of the position, if any.
Lines deleteOne(Database& db, const Position& position);
// zvdeletedatabaseall: removes the position and every record that extends
// it, meaning a record of the same rule and board whose first moves are
// the given moves in the given order under one of the board's symmetries.
// The same stones reached in another order are kept. No moves remove every
// record of the rule and board (the ".bak" keeps the file before). When `sendNow` is
// given, "MESSAGE Working ..." goes through it before the work starts
// instead of being returned.
Lines deleteAll(Database& db, const Position& position,
                const std::function<void(const std::string&)>& sendNow = {});

// zvdbtotxt. `params`: "<file name> [<max moves>]"; the last word is the
// limit when it is an integer (saturating) and a name precedes it; a
// negative limit or none exports every length. Writes the proven records of the rule and board.
Lines dbToTxt(const Database& db, std::string_view params, int rule, int height, int width);
// zvtxttodb. `fileName`: the whole line. New positions get t -1, v 0, d 0
// and an empty message; stored ones are untouched.
Lines txtToDb(Database& db, std::string_view fileName, int rule, int height, int width);

// zvdbcheck: "MESSAGE Database check: N records, K problems", then one line
// per problem, at most kCheckLinesShown of them.
constexpr int kCheckLinesShown = 20;
Lines dbCheck(const Database& db);

}  // namespace zorva::db
