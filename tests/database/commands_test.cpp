#include <gtest/gtest.h>

#include "database/db_commands.h"
#include "db_test_support.h"

namespace zorva::db {
namespace {

using testing::keyOf;
using testing::readBytes;
using testing::TempDir;
using testing::writeBytes;

using Moves = std::vector<int32_t>;

Position at(const Moves& moves, int rule = 1, int height = 15, int width = 15) {
  return {rule, height, width, moves};
}

class DatabaseCommands : public ::testing::Test {
 protected:
  void SetUp() override { db.setPath(dir.file("zorva.db")); db.load(); }
  TempDir dir;
  Database db;
  const Moves opening{makeCell(7, 7), makeCell(7, 8)};
};

TEST_F(DatabaseCommands, EverythingIsQuietOrNotFoundWhileOff) {
  db.free();
  const Moves moves{makeCell(7, 7)};
  EXPECT_EQ(queryOne(db, at(moves)), Lines{"MESSAGE DATABASE ONE -1 0 0"});
  EXPECT_EQ(queryAll(db, at(moves), {}), (Lines{"MESSAGE DATABASE REFRESH", "MESSAGE DATABASE DONE"}));
  EXPECT_EQ(editTvd(db, "7 119 5 5", at(moves)), Lines{});
  EXPECT_EQ(editRawMsg(db, "note", at(moves)), Lines{});
  EXPECT_EQ(deleteAll(db, at(moves)), Lines{});
  EXPECT_EQ(dbToTxt(db, dir.file("out.txt"), 1, 15, 15), Lines{});
  EXPECT_EQ(dbCheck(db), Lines{});
  EXPECT_FALSE(std::filesystem::exists(dir.file("out.txt")));
}

TEST_F(DatabaseCommands, EditsSetFieldsByMaskAndKeepTheMessage) {
  EXPECT_EQ(editTvd(db, "2 5 300 9", at(opening)), Lines{"MESSAGE DATABASE ONE -1 300 0"});
  EXPECT_EQ(queryOne(db, at(opening)), Lines{"MESSAGE DATABASE ONE -1 300 0 "});
  EXPECT_EQ(editRawMsg(db, "  3 strong reply \r", at(opening)), Lines{"MESSAGE DATABASE ONE -1 300 0 3"})
      << "the message is one word";
  EXPECT_EQ(editTvd(db, "5 119 0 -12 junk", at(opening)),
            Lines{"MESSAGE DATABASE ONE 119 300 -12"});
  EXPECT_EQ(editTvd(db, "", at(opening)), Lines{"MESSAGE DATABASE ONE 119 300 -12"});
  // Looked up from a mirror image, the same record answers.
  EXPECT_EQ(queryOne(db, at({makeCell(7, 7), makeCell(7, 6)})),
            Lines{"MESSAGE DATABASE ONE 119 300 -12 3"});
  EXPECT_EQ(db.probe(at(opening)), (ResultFields{kWon, 300, -12}));

  EXPECT_EQ(editTvd(db, "7 1 1 1", at({})), Lines{});
  // Off the board: answered as usual, stored nowhere (no lookup finds it).
  EXPECT_EQ(editTvd(db, "7 1 1 1", at({makeCell(7, 15)})), Lines{"MESSAGE DATABASE ONE 1 1 1"});
  EXPECT_EQ(editRawMsg(db, "lost", at({makeCell(7, 15)})), Lines{"MESSAGE DATABASE ONE -1 0 0 lost"});
  EXPECT_EQ(editRawMsg(db, std::string(kMaxMessageLength + 1, 'x'), at(opening))[0].rfind(
                "MESSAGE Database message too long", 0), 0u);
  EXPECT_EQ(db.size(), 1u);
  deleteOne(db, at({makeCell(7, 7), makeCell(7, 6)}));
  EXPECT_EQ(db.size(), 0u);
}

TEST_F(DatabaseCommands, QueryAllListsRepliesOnEmptyCells) {
  db.insert(keyOf(1, 15, 15, {makeCell(7, 7), makeCell(7, 8), makeCell(8, 9)}), makeText({kLost, 4, 6}, ""));
  db.insert(keyOf(1, 15, 15, {makeCell(7, 7), makeCell(7, 8), makeCell(6, 8)}), "");
  db.insert(keyOf(1, 15, 15, {makeCell(7, 7), makeCell(7, 8), makeCell(0, 0)}), makeText({}, "x"));
  // The opening is its own mirror image across row 7, so each reply also
  // answers in its mirrored cell; (0,0) is taken on the board, (14,0) free.
  const auto occupied = [](int32_t cell) { return cell == makeCell(0, 0); };
  EXPECT_EQ(queryAll(db, at(opening), occupied),
            (Lines{"MESSAGE DATABASE REFRESH", "MESSAGE DATABASE 6 8 -1 0 0", "MESSAGE DATABASE 6 9 108 4 6",
                   "MESSAGE DATABASE 8 8 -1 0 0", "MESSAGE DATABASE 8 9 108 4 6", "MESSAGE DATABASE 14 0 -1 0 0",
                   "MESSAGE DATABASE DONE"}));
}

TEST_F(DatabaseCommands, DeleteAllRemovesThePositionAndItsContinuations) {
  const std::string mirroredChild = keyOf(1, 15, 15, {makeCell(7, 7), makeCell(7, 6), makeCell(9, 5)});
  const std::vector<std::string> doomed{keyOf(1, 15, 15, opening), mirroredChild,
                                        keyOf(1, 15, 15, {makeCell(7, 7), makeCell(7, 8), makeCell(8, 8)})};
  const std::vector<std::string> kept{keyOf(1, 15, 15, {makeCell(7, 8), makeCell(7, 7), makeCell(8, 8)}),
                                      keyOf(1, 15, 15, {makeCell(7, 7)}), keyOf(2, 15, 15, opening),
                                      keyOf(1, 16, 16, opening)};
  for (const auto& key : doomed) db.insert(key, "d");
  for (const auto& key : kept) db.insert(key, "k");

  std::vector<std::string> sent;
  EXPECT_EQ(deleteAll(db, at(opening), [&](const std::string& line) { sent.push_back(line); }),
            Lines{"MESSAGE Done"});
  EXPECT_EQ(sent, Lines{"MESSAGE Working ..."});
  for (const auto& key : doomed) EXPECT_FALSE(db.find(key));
  for (const auto& key : kept) EXPECT_TRUE(db.find(key));
  EXPECT_EQ(deleteAll(db, at(opening)), (Lines{"MESSAGE Working ...", "MESSAGE Done"}));
  // No moves: every record of the rule and board goes; the backup keeps them.
  EXPECT_EQ(deleteAll(db, at({})), (Lines{"MESSAGE Working ...", "MESSAGE Done"}));
  EXPECT_EQ(db.size(), 2u);
  Database backup(dir.file("zorva.db.bak"));
  backup.load();
  EXPECT_EQ(backup.size(), 4u);
}

TEST_F(DatabaseCommands, SetDatabaseSavesTheOldFileAndLoadsTheNewOne) {
  db.insert(keyOf(1, 15, 15, opening), "old");
  const std::string padded = std::string(1, ' ').append(dir.file("zorva.db")).append("\r");
  EXPECT_EQ(setDatabase(db, padded, true), Lines{});
  EXPECT_FALSE(std::filesystem::exists(dir.file("zorva.db")));  // the same name: not even a save

  EXPECT_EQ(setDatabase(db, dir.file("other.db"), true), Lines{});
  EXPECT_TRUE(std::filesystem::exists(dir.file("zorva.db")));
  EXPECT_TRUE(db.inUse());
  EXPECT_EQ(db.size(), 0u);
  EXPECT_EQ(setDatabase(db, dir.file("zorva.db"), false), Lines{});
  EXPECT_FALSE(db.inUse());
  EXPECT_TRUE(openDatabase(db).empty());
  EXPECT_EQ(db.find(keyOf(1, 15, 15, opening)), "old");

  // A wrong name (a missing folder, a directory) never traps the session:
  // edits made there, which could not be saved, go with the switch to a
  // good name and reach its file.
  for (const std::string& wrong : {dir.file("missing/zorva.db"), dir.dir()}) {
    EXPECT_EQ(setDatabase(db, wrong, true).size(), wrong == dir.dir() ? 1u : 0u) << wrong;
    const Lines edit = editTvd(db, "2 0 42 0", at({makeCell(3, 3)}));
    ASSERT_EQ(edit.size(), 2u) << wrong;
    EXPECT_NE(edit[1].find("could not be saved"), std::string::npos) << edit[1];
    const std::string good = dir.file("good.db");
    const Lines lines = setDatabase(db, good, true);
    EXPECT_EQ(lines.back(), "MESSAGE Database " + good + " took the records that " + wrong + " could not keep");
    Database saved(good);
    saved.load();
    EXPECT_EQ(saved.lookup(at({makeCell(3, 3)})), makeText({kUnset, 42, 0}, ""));
    std::filesystem::remove(good);
  }
}

TEST_F(DatabaseCommands, EditsReachTheFileAtOnceWithinTheFieldRanges) {
  EXPECT_EQ(editTvd(db, "7 1000 100000 -99999999999", at(opening)),
            Lines{"MESSAGE DATABASE ONE 127 32767 -32768"});
  Database onDisk(dir.file("zorva.db"));
  onDisk.load();
  EXPECT_EQ(onDisk.lookup(at(opening)), makeText({127, 32767, -32768}, ""));
  editRawMsg(db, "note", at(opening));
  deleteOne(db, at({makeCell(1, 1)}));  // nothing to delete: no save, the backup stays
  onDisk.load();
  EXPECT_EQ(onDisk.lookup(at(opening)), makeText({127, 32767, -32768}, "note"));
  Database backup(dir.file("zorva.db.bak"));
  backup.load();
  EXPECT_EQ(backup.lookup(at(opening)), makeText({127, 32767, -32768}, ""));
  // A limit beyond the int range saturates; the file name is the rest.
  EXPECT_EQ(dbToTxt(db, dir.file("out.txt") + " 99999999999999", 1, 15, 15), Lines{});
  EXPECT_TRUE(std::filesystem::exists(dir.file("out.txt")));
}

TEST_F(DatabaseCommands, ExportWritesProvenLinesThatImportReads) {
  db.insert(keyOf(1, 15, 15, {}), makeText({kWon, 0, 0}, ""));
  db.insert(keyOf(1, 15, 15, {makeCell(0, 0)}), makeText({kLost, 1, 2}, "m"));
  db.insert(keyOf(1, 15, 15, {makeCell(0, 0), makeCell(1, 2), makeCell(3, 1)}), makeText({kWon, 0, 0}, ""));
  db.insert(keyOf(1, 15, 15, {makeCell(0, 1)}), makeText({}, "unproven"));
  db.insert(keyOf(0, 15, 15, {makeCell(0, 2)}), makeText({kWon, 0, 0}, "other rule"));
  const std::string out = dir.file("proven lines.txt");
  EXPECT_EQ(dbToTxt(db, out + " 1", 1, 15, 15), Lines{});
  EXPECT_EQ(readBytes(out), "\n 0,0\n");
  EXPECT_EQ(dbToTxt(db, out, 1, 15, 15), Lines{});
  EXPECT_EQ(readBytes(out), "\n 0,0\n 0,0 1,2 3,1\n");
  EXPECT_EQ(dbToTxt(db, dir.file("no/such/dir") + " -1", 1, 15, 15).size(), 1u);

  Database fresh(dir.file("fresh.db"));
  fresh.load();
  fresh.insert(keyOf(1, 15, 15, {makeCell(0, 0)}), "mine");
  writeBytes(out, readBytes(out) + " 7,7 x\n 15,0\n 1,1\n");
  const Lines lines = txtToDb(fresh, out, 1, 15, 15);
  EXPECT_EQ(lines, Lines{"MESSAGE Database import from " + out +
                         " skipped 2 lines that are not positions on this board, the first at line 4"});
  EXPECT_EQ(fresh.size(), 4u);
  EXPECT_EQ(fresh.find(keyOf(1, 15, 15, {makeCell(0, 0)})), "mine");
  EXPECT_EQ(fresh.find(keyOf(1, 15, 15, {makeCell(0, 0), makeCell(1, 2), makeCell(3, 1)})), makeText({}, ""));
  EXPECT_EQ(txtToDb(fresh, dir.file("absent.txt"), 1, 15, 15).size(), 1u);
}

TEST_F(DatabaseCommands, CheckReportsRecordsThatLookupsCannotServe) {
  db.insert(keyOf(1, 15, 15, opening), makeText({kWon, 0, 0}, ""));
  EXPECT_EQ(dbCheck(db), Lines{"MESSAGE Database check: 1 records, 0 problems"});

  // A file written with another orientation rule, and odd texts.
  std::string file("\x11\0\0\0", 4);
  const auto add = [&](std::string key, std::string text) {
    file += static_cast<char>(key.size()), file += '\0', file += key;
    file += static_cast<char>(text.size()), file += '\0', file += text;
  };
  add(std::string("\x01\x0f\x0f", 3), "abc");
  for (int i = 0; i < 15; i++) add(std::string("\x01\x0f\x0f\x0e", 4) + static_cast<char>(i), "ab");
  add(std::string("\x01\x0f\x0f\x0e\x0e\x00\x00", 7), makeText({'?', 0, 0}, ""));
  writeBytes(dir.file("odd.db"), file);
  Database odd(dir.file("odd.db"));
  EXPECT_FALSE(odd.load().message);
  const Lines lines = dbCheck(odd);
  ASSERT_EQ(lines.size(), 2u + kCheckLinesShown);
  EXPECT_EQ(lines[0], "MESSAGE Database check: 17 records, 33 problems");
  EXPECT_EQ(lines[1], "MESSAGE Database check: record 1 (empty board): text of 3 bytes has no result fields");
  EXPECT_EQ(lines[2], "MESSAGE Database check: record 2: 14,0: not in canonical form, lookups miss it");
  EXPECT_EQ(lines[3], "MESSAGE Database check: record 2: 14,0: text of 2 bytes has no result fields");
  EXPECT_EQ(lines.back(), "MESSAGE Database check: and 13 more");
}

}  // namespace
}  // namespace zorva::db
