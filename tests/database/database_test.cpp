#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <random>
#include <thread>

#include "database/database.h"
#include "db_test_support.h"

namespace zorva::db {
namespace {

using testing::keyOf;
using testing::readBytes;
using testing::TempDir;
using testing::writeBytes;

struct KeyOrder {
  bool operator()(const std::string& a, const std::string& b) const { return keyLess(a, b); }
};
using Model = std::map<std::string, std::string, KeyOrder>;

std::string randomKey(std::mt19937& rng) {
  const int height = 1 + rng() % 22, width = rng() % 3 ? height : 1 + rng() % 22;
  std::vector<int32_t> moves;
  const int stones = std::min<int>(rng() % 30, height * width);
  while (static_cast<int>(moves.size()) < stones) {
    const int32_t cell = makeCell(rng() % height, rng() % width);
    if (std::find(moves.begin(), moves.end(), cell) == moves.end()) moves.push_back(cell);
  }
  return keyOf(rng() % 3, height, width, moves);
}

std::string randomText(std::mt19937& rng) {
  std::string text(rng() % 4 == 0 ? rng() % 5 : 5 + rng() % 40, '\0');
  for (char& c : text) c = static_cast<char>(rng());
  return text;
}

Model contents(const Database& db) {
  Model out;
  db.forEach([&](std::string_view k, std::string_view t) { out.emplace(k, t); });
  return out;
}

Model fill(Database& db, int count, unsigned seed) {
  std::mt19937 rng(seed);
  Model model;
  while (static_cast<int>(model.size()) < count) {
    const std::string key = randomKey(rng), text = randomText(rng);
    EXPECT_NE(db.insert(key, text), InsertResult::kBadKey);
    model[key] = text;
  }
  return model;
}

// int32 count, then int16 length + bytes for key and text of each record.
using RecordList = std::vector<std::pair<std::string, std::string>>;
std::string fileImage(const RecordList& records, int32_t count) {
  std::string out;
  const auto int16 = [&](int v) { out += static_cast<char>(v & 0xff), out += static_cast<char>(v >> 8 & 0xff); };
  for (int i = 0; i < 4; i++) out += static_cast<char>(static_cast<uint32_t>(count) >> (8 * i) & 0xff);
  for (const auto& [key, text] : records) int16(key.size()), out += key, int16(text.size()), out += text;
  return out;
}

TEST(DatabaseFile, MissingFileIsAnEmptyDatabaseAndSavesAsFourZeroBytes) {
  TempDir dir;
  Database db(dir.file("zorva.db"));
  const FileResult loaded = db.load();
  EXPECT_TRUE(loaded.ok);
  EXPECT_FALSE(loaded.message);
  EXPECT_TRUE(db.inUse());
  EXPECT_EQ(db.bucketCapacity(0), Database::kInitialCapacity);
  EXPECT_FALSE(db.save().message);
  EXPECT_EQ(readBytes(dir.file("zorva.db")), std::string(4, '\0'));
  db.free();
  EXPECT_FALSE(db.inUse());
  EXPECT_EQ(db.insert(keyOf(0, 15, 15, {}), "x"), InsertResult::kNotInUse);
}

TEST(DatabaseFile, RandomRecordsSurviveSaveAndLoad) {
  TempDir dir;
  Database db(dir.file("zorva.db"));
  db.load();
  const Model model = fill(db, 10000, 1);
  ASSERT_EQ(contents(db), model);
  ASSERT_TRUE(db.save().ok);
  Database again(dir.file("zorva.db"));
  EXPECT_FALSE(again.load().message);
  EXPECT_EQ(contents(again), model);
  EXPECT_TRUE(again.checkStructure().empty());
  for (const auto& [key, text] : model) ASSERT_EQ(again.find(key), text);
}

TEST(DatabaseFile, LoadDealsRecordsEvenlyOverTheBuckets) {
  TempDir dir;
  Database db(dir.file("zorva.db"));
  db.load();
  fill(db, 2050, 2);
  EXPECT_EQ(db.bucketCount(0), 2050);  // inserts pile up until the next load
  EXPECT_EQ(db.bucketCapacity(0), 4096);
  db.save();
  db.load();
  for (int b = 0; b < 1023; b++) ASSERT_EQ(db.bucketCount(b), 2) << b;
  EXPECT_EQ(db.bucketCount(1023), 4);
  EXPECT_EQ(db.bucketCapacity(1023), 1024);
}

TEST(DatabaseStore, EditsKeepEveryRecordFindableAcrossEmptiedBuckets) {
  TempDir dir;
  Database db(dir.file("zorva.db"));
  db.load();
  Model model = fill(db, 3000, 3);
  db.save();
  db.load();  // three records a bucket, so erasing empties buckets quickly
  std::mt19937 rng(4);
  for (int step = 0; step < 6000; step++) {
    if (rng() % 3 && !model.empty()) {
      auto it = std::next(model.begin(), rng() % model.size());
      ASSERT_TRUE(db.erase(it->first));
      model.erase(it);
    } else {
      const std::string key = randomKey(rng);
      const bool fresh = !model.count(key);
      const std::string text(1 + step % 7, 't');
      ASSERT_EQ(db.insert(key, text), fresh ? InsertResult::kInserted : InsertResult::kReplaced);
      model.insert_or_assign(key, text);
    }
  }
  EXPECT_TRUE(db.checkStructure().empty());
  EXPECT_EQ(contents(db), model);
  for (const auto& [key, text] : model) ASSERT_EQ(db.find(key), text);
  EXPECT_FALSE(db.erase(keyOf(0, 3, 3, {makeCell(2, 2), makeCell(1, 1), makeCell(0, 1)})));
}

TEST(DatabaseStore, RefusesWhatTheFileCannotHold) {
  Database db;
  db.load();  // empty path: a missing file
  const std::string key = keyOf(0, 15, 15, {makeCell(7, 7)});
  EXPECT_EQ(db.insert(key, std::string(32768, 'm')), InsertResult::kTextTooLong);
  EXPECT_EQ(db.insert(key, std::string(32767, 'm')), InsertResult::kInserted);
  EXPECT_EQ(db.insert(std::string("\x00\x0f\x0f\x07", 4), ""), InsertResult::kBadKey);
  EXPECT_EQ(db.size(), 1u);
}

struct DamagedCase {
  const char* name;
  std::string bytes;
  size_t kept;
  const char* problem;
};

std::vector<DamagedCase> damagedCases() {
  RecordList r;  // 5-byte keys and 5-byte texts: 14 bytes a record
  for (int i = 0; i < 3; i++) r.emplace_back(keyOf(0, 15, 15, {makeCell(7, i)}), "text" + std::to_string(i));
  const std::string whole = fileImage(r, 3);
  std::string negativeKey = whole, hugeText = whole;
  negativeKey[4 + 14] = '\xfe', negativeKey[4 + 14 + 1] = '\xff';
  hugeText[4 + 28 + 7 + 1] = '\x7f';
  return {
      {"empty", "", 0, "the file is empty"},
      {"short count", std::string(3, '\0'), 0, "record count is cut short"},
      {"truncated", whole.substr(0, whole.size() - 3), 2, "record 3 is cut short"},
      {"negative count", fileImage(r, -5), 3, "record count is -5"},
      {"count beyond the file", fileImage(r, 1000000), 3, "says 1000000 but the file holds 3"},
      {"count too small", fileImage(r, 1), 3, "says 1 but the file holds 3"},
      {"negative key length", negativeKey, 1, "record 2 has key length -2"},
      {"text longer than the file", hugeText, 2, "record 3 is cut short"},
      {"out of order", fileImage({r[1], r[0], r[2]}, 3), 3, "record 2 is out of order"},
      {"duplicated", fileImage({r[0], {r[0].first, "later"}, r[1], r[2]}, 4), 3, "record 2 repeats a key"},
      {"bad key", fileImage({{std::string("\x05\x0f\x0f", 3), ""}}, 1), 0, "bad key (rule byte 5)"},
  };
}

TEST(DatabaseFile, DamagedFilesLoadWhatIsValidAndAreKeptAside) {
  for (const DamagedCase& c : damagedCases()) {
    SCOPED_TRACE(c.name);
    TempDir dir;
    const std::string path = dir.file("zorva.db");
    writeBytes(path, c.bytes);
    writeBytes(path + ".bak", "last whole file");
    Database db(path);
    const FileResult loaded = db.load();
    EXPECT_FALSE(loaded.ok);
    ASSERT_TRUE(loaded.message);
    EXPECT_NE(loaded.message->find("MESSAGE Database " + path + " is damaged"), std::string::npos);
    EXPECT_NE(loaded.message->find(c.problem), std::string::npos) << *loaded.message;
    EXPECT_NE(loaded.message->find("kept " + std::to_string(c.kept) + " valid"), std::string::npos);
    EXPECT_EQ(db.size(), c.kept);
    EXPECT_TRUE(db.checkStructure().empty());
    if (c.kept) {
      EXPECT_EQ(db.find(keyOf(0, 15, 15, {makeCell(7, 0)})), "text0");
    }

    ASSERT_TRUE(db.save().ok);
    std::string aside;
    for (const std::string& name : dir.names())
      if (name.rfind("zorva.db.damaged-", 0) == 0) aside = dir.file(name);
    ASSERT_NE(aside, "");
    EXPECT_EQ(readBytes(aside), c.bytes);
    EXPECT_EQ(readBytes(path + ".bak"), "last whole file");
    Database reread(path);
    EXPECT_FALSE(reread.load().message);
    EXPECT_EQ(reread.size(), c.kept);
  }
}

TEST(DatabaseFile, RandomBytesNeverCrashAndLoadOnlySortedValidRecords) {
  std::mt19937 rng(5);
  TempDir dir;
  for (int trial = 0; trial < 200; trial++) {
    std::string bytes(rng() % 300, '\0');
    for (char& c : bytes) c = static_cast<char>(rng() % 4 ? rng() % 24 : rng());
    writeBytes(dir.file("r.db"), bytes);
    Database db(dir.file("r.db"));
    db.load();
    EXPECT_TRUE(db.checkStructure().empty());
    db.forEach([](std::string_view key, std::string_view) { EXPECT_EQ(keyProblem(key), ""); });
  }
}

TEST(DatabaseFile, SaveKeepsThePreviousFileAsBackup) {
  TempDir dir;
  const std::string path = dir.file("zorva.db");
  Database db(path);
  db.load();
  db.insert(keyOf(0, 15, 15, {makeCell(7, 7)}), "first");
  db.save();
  const std::string first = readBytes(path);
  db.insert(keyOf(0, 15, 15, {makeCell(7, 8)}), "second");
  EXPECT_TRUE(db.save().ok);
  EXPECT_EQ(readBytes(path + ".bak"), first);
  EXPECT_NE(readBytes(path), first);
  EXPECT_FALSE(std::filesystem::exists(path + ".tmp"));
}

TEST(DatabaseFile, FailedSavesLeaveThePreviousDataAndSayWhy) {
  TempDir dir;
  const std::string path = dir.file("zorva.db");
  Database db(path);
  db.load();
  db.insert(keyOf(0, 15, 15, {makeCell(7, 7)}), "kept");
  db.save();
  db.save();
  const std::string file = readBytes(path), backup = readBytes(path + ".bak");
  db.insert(keyOf(0, 15, 15, {makeCell(7, 8)}), "new");
  std::filesystem::create_directory(path + ".tmp");  // the new file cannot be written
  FileResult saved = db.save();
  EXPECT_FALSE(saved.ok);
  ASSERT_TRUE(saved.message);
  EXPECT_EQ(saved.message->rfind("MESSAGE Database " + path + " could not be saved (", 0), 0u) << *saved.message;
  EXPECT_EQ(readBytes(path), file);
  EXPECT_EQ(readBytes(path + ".bak"), backup);

  writeBytes(dir.file("plain"), "a file, not a folder");
  for (const std::string& bad : {dir.file("missing/zorva.db"), dir.file("plain/zorva.db"), dir.file("")}) {
    db.setPath(bad);
    saved = db.save();
    EXPECT_FALSE(saved.ok) << bad;
    EXPECT_TRUE(saved.message);
  }
  EXPECT_EQ(db.size(), 2u);  // memory still holds everything
}

TEST(DatabaseFile, PathThatIsAFolderGivesAnEmptyDatabase) {
  TempDir dir;
  Database db(dir.file(""));
  const FileResult loaded = db.load();
  ASSERT_TRUE(loaded.message);
  EXPECT_NE(loaded.message->find("is not a regular file"), std::string::npos);
  EXPECT_TRUE(db.inUse());
}

TEST(DatabaseConcurrency, SearchThreadsLookUpWhileTheInputThreadEdits) {
  TempDir dir;
  Database db(dir.file("zorva.db"));
  db.load();
  std::vector<std::vector<int32_t>> games;
  for (int i = 0; i < 64; i++) games.push_back({makeCell(7, 7), makeCell(i % 15, i / 15), makeCell(14, 14)});
  std::atomic<bool> stop{false};
  std::atomic<long> found{0};
  std::vector<std::thread> searchers;
  for (int t = 0; t < 3; t++)
    searchers.emplace_back([&, t] {
      for (long n = t; !stop.load(std::memory_order_relaxed); n++) {
        const Position p{1, 15, 15, games[n % games.size()]};
        const auto fields = db.probe(p);
        const auto text = db.lookup(p);
        if (fields) {
          EXPECT_EQ(fields->v, 1234);
        }
        if (text) {
          EXPECT_EQ(readResult(*text).v, 1234);
          found++;
        }
      }
    });
  // Enough rounds that the searchers run alongside every kind of edit.
  for (int round = 0; round < 400 || found.load() == 0; round++) {
    for (const auto& g : games) db.insert(keyOf(1, 15, 15, g), makeText({kWon, 1234, round}, "m"));
    if (round % 50 == 0) db.save(), db.load();
    for (size_t i = round % 2; i < games.size(); i += 2) db.erase(keyOf(1, 15, 15, games[i]));
  }
  stop = true;
  for (auto& s : searchers) s.join();
  EXPECT_GT(found.load(), 0);
}

}  // namespace
}  // namespace zorva::db
