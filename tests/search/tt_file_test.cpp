// The table's dump file: a sound dump restores the table exactly; any other
// file is refused with its reason and leaves the table as it was.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>

#include "search/tt.h"

namespace zorva {
namespace {

constexpr int kSmall = 4;  // 16 buckets per side
constexpr uint64_t kKey = 0x0123456789ABCDEFull;

std::string tempPath(const std::string& tag) { return "/tmp/zorva-ttfile-" + std::to_string(getpid()) + "-" + tag; }

std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

void writeFile(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

class TableFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(tt.resize(kSmall));
    tt.ensureRule(0);
    tt.store(kKey, 9, 5, 77, kBoundExact, 1, makeMove(7, 7), makeMove(8, 8));
    tt.store(kKey ^ 1, 9, 3, -12, kBoundLower, 2, makeMove(3, 4));
    ASSERT_EQ(tt.dumpTo(path.c_str()), TableFile::kDone);
    dump = readFile(path);
  }
  void TearDown() override { std::remove(path.c_str()); }

  // The table still holds what SetUp stored, and nothing else.
  void expectUnchanged() {
    TTEntry e;
    ASSERT_TRUE(tt.find(kKey, 1, &e));
    EXPECT_EQ(e.upper, 77);
    EXPECT_EQ(e.moves[1], makeMove(8, 8));
    ASSERT_TRUE(tt.find(kKey ^ 1, 2, &e));
    EXPECT_EQ(e.lower, -12);
    EXPECT_DOUBLE_EQ(tt.usage(), 2.0 / (16 * 4 * 2));
  }

  TranspositionTable tt;
  std::string path = tempPath("dump");
  std::string dump;
};

TEST_F(TableFileTest, DumpClearLoadRestoresTheTable) {
  EXPECT_EQ(dump.size(), 8u * (4 + 16 * 2 * 4 * 4 + 1)) << "header, entries, checksum";
  tt.clearUnder(0);
  EXPECT_EQ(tt.usage(), 0.0);
  ASSERT_EQ(tt.loadFrom(path.c_str(), 0), TableFile::kDone);
  expectUnchanged();
  // A table last filled under another rule is replaced whole and takes the rule in force.
  tt.ensureRule(1);
  ASSERT_EQ(tt.loadFrom(path.c_str(), 0), TableFile::kDone);
  EXPECT_EQ(tt.rule(), 0);
  expectUnchanged();
  EXPECT_EQ(tt.loadFrom(path.c_str(), 1), TableFile::kOtherRule) << "the file's rule must be the one in force";
}

TEST_F(TableFileTest, UnsoundFilesAreRefusedAndChangeNothing) {
  const auto patchWord = [](std::string& bytes, size_t word) { bytes[8 * word] ^= 0x40; };
  struct Case {
    const char* what;
    std::function<void(std::string&)> spoil;
    TableFile expected;
  };
  const Case cases[] = {
      {"empty file", [](std::string& b) { b.clear(); }, TableFile::kNotAHashFile},
      {"foreign file", [](std::string& b) { b = "START 15\nBEGIN\n" + b; }, TableFile::kNotAHashFile},
      {"cut in the header", [](std::string& b) { b.resize(20); }, TableFile::kTruncated},
      {"cut in the entries", [](std::string& b) { b.resize(b.size() / 2); }, TableFile::kTruncated},
      {"checksum missing", [](std::string& b) { b.resize(b.size() - 8); }, TableFile::kTruncated},
      {"other version", [&](std::string& b) { patchWord(b, 1); }, TableFile::kOtherVersion},
      {"other rule", [](std::string& b) { b[12] = 2; }, TableFile::kOtherRule},
      {"other size", [&](std::string& b) { patchWord(b, 2); }, TableFile::kOtherSize},
      {"other position keys", [&](std::string& b) { patchWord(b, 3); }, TableFile::kOtherKeys},
      {"an entry changed", [](std::string& b) { b[8 * 40 + 3] ^= 1; }, TableFile::kDamaged},
      {"checksum changed", [](std::string& b) { b.back() ^= 1; }, TableFile::kDamaged},
      {"bytes after the checksum", [](std::string& b) { b += '\0'; }, TableFile::kDamaged},
  };
  for (const Case& c : cases) {
    std::string bytes = dump;
    c.spoil(bytes);
    const std::string spoilt = tempPath("spoilt");
    writeFile(spoilt, bytes);
    EXPECT_EQ(tt.loadFrom(spoilt.c_str(), 0), c.expected) << c.what;
    expectUnchanged();
    std::remove(spoilt.c_str());
  }
  EXPECT_EQ(tt.loadFrom(tempPath("missing").c_str(), 0), TableFile::kCannotOpen);
  ASSERT_TRUE(tt.resize(kSmall + 1));
  EXPECT_EQ(tt.loadFrom(path.c_str(), 0), TableFile::kOtherSize);
}

TEST(TableFile, DumpNeedsATableAndAWritablePlace) {
  TranspositionTable tt;
  const std::string path = tempPath("none");
  EXPECT_EQ(tt.dumpTo(path.c_str()), TableFile::kNoTable);
  EXPECT_EQ(tt.loadFrom(path.c_str(), 0), TableFile::kCannotOpen);
  ASSERT_TRUE(tt.resize(kSmall));
  EXPECT_EQ(tt.dumpTo("/nonexistent-folder/dump"), TableFile::kCannotOpen);
  writeFile(path, "ZORVATT\n");
  EXPECT_EQ(tt.loadFrom(path.c_str(), 0), TableFile::kTruncated);
  std::remove(path.c_str());
}

}  // namespace
}  // namespace zorva
