// The dump file of the transposition table. Layout, all little-endian
// 64-bit words:
//   word 0  magic "ZORVATT\n"
//   word 1  format version (low 32 bits), rule the entries were made under (high 32 bits, signed)
//   word 2  buckets per side
//   word 3  print of the position keys (the keys are drawn anew at each start)
//   then    both tables word by word (side 1 then side 2, four words an entry)
//   last    checksum of every word before it
#include <algorithm>
#include <atomic>
#include <bit>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <string>

#include "board/zobrist.h"
#include "search/tt.h"

namespace zorva {

namespace {

static_assert(std::endian::native == std::endian::little, "the dump file is written as the memory holds it");

constexpr char kMagic[] = "ZORVATT\n";
constexpr uint32_t kFormatVersion = 1;
constexpr int kHeaderWords = 4;
constexpr uint64_t kChunkWords = 1 << 16;  // words copied per write while a search may run
constexpr uint64_t kChecksumStart = 14695981039346656037ull;
constexpr uint64_t kChecksumFactor = 1099511628211ull;

uint64_t magicWord() {
  uint64_t word;
  std::memcpy(&word, kMagic, sizeof word);
  return word;
}

// FNV-1a over whole words: cheap enough for gigabytes, and any changed,
// lost or swapped word changes it.
uint64_t fold(uint64_t sum, const uint64_t* words, uint64_t count) {
  for (uint64_t i = 0; i < count; ++i) sum = (sum ^ words[i]) * kChecksumFactor;
  return sum;
}

// A dump is only worth loading under the same position keys.
uint64_t keyPrint() { return fold(kChecksumStart, &zobristKeys[0][0], sizeof zobristKeys / sizeof(uint64_t)); }

uint64_t relaxedLoad(const uint64_t* word) {
  return std::atomic_ref<uint64_t>(*const_cast<uint64_t*>(word)).load(std::memory_order_relaxed);
}

struct File {
  std::FILE* f;
  explicit File(std::FILE* file) : f(file) {}
  ~File() {
    if (f) std::fclose(f);
  }
  File(const File&) = delete;
  File& operator=(const File&) = delete;
};

bool readWords(std::FILE* f, uint64_t* words, uint64_t count) {
  return std::fread(words, sizeof(uint64_t), count, f) == count;
}

}  // namespace

TableFile TranspositionTable::dumpTo(const char* path) const {
  std::lock_guard lock(layout_);
  if (!words_) return TableFile::kNoTable;
  const std::string temporary = std::string(path) + ".tmp";
  std::FILE* f = std::fopen(temporary.c_str(), "wb");
  if (!f) return TableFile::kCannotOpen;
  const uint64_t header[kHeaderWords] = {magicWord(), kFormatVersion | uint64_t(uint32_t(rule_)) << 32, buckets_,
                                         keyPrint()};
  bool written = std::fwrite(header, sizeof(uint64_t), kHeaderWords, f) == kHeaderWords;
  uint64_t sum = fold(kChecksumStart, header, kHeaderWords);
  // Each word is read once, so the checksum matches what was written even
  // while search threads keep storing.
  static uint64_t chunk[kChunkWords];
  for (uint64_t from = 0; written && from < wordCount(); from += kChunkWords) {
    const uint64_t count = std::min(kChunkWords, wordCount() - from);
    for (uint64_t i = 0; i < count; ++i) chunk[i] = relaxedLoad(words_ + from + i);
    sum = fold(sum, chunk, count);
    written = std::fwrite(chunk, sizeof(uint64_t), count, f) == count;
  }
  written = written && std::fwrite(&sum, sizeof sum, 1, f) == 1;
  written = std::fclose(f) == 0 && written;
  if (!written || std::rename(temporary.c_str(), path) != 0) {
    std::remove(temporary.c_str());
    return TableFile::kCannotOpen;
  }
  return TableFile::kDone;
}

TableFile TranspositionTable::loadFrom(const char* path, int rule) {
  std::lock_guard lock(layout_);
  File file(std::fopen(path, "rb"));
  if (!file.f) return TableFile::kCannotOpen;
  if (!words_) return TableFile::kNoTable;
  uint64_t header[kHeaderWords] = {};
  const size_t headerRead = std::fread(header, sizeof(uint64_t), kHeaderWords, file.f);
  if (headerRead == 0 || header[0] != magicWord()) return TableFile::kNotAHashFile;
  if (headerRead < kHeaderWords) return TableFile::kTruncated;
  if (uint32_t(header[1]) != kFormatVersion) return TableFile::kOtherVersion;
  if (int32_t(uint32_t(header[1] >> 32)) != rule) return TableFile::kOtherRule;
  if (header[2] != buckets_) return TableFile::kOtherSize;
  if (header[3] != keyPrint()) return TableFile::kOtherKeys;

  const uint64_t bytes = wordCount() * sizeof(uint64_t);
  uint64_t* fresh = mapZeroed(bytes);
  if (!fresh) return TableFile::kNoMemory;
  uint64_t storedSum = 0;
  TableFile result = TableFile::kDone;
  if (!readWords(file.f, fresh, wordCount()) || !readWords(file.f, &storedSum, 1))
    result = TableFile::kTruncated;
  else if (fold(fold(kChecksumStart, header, kHeaderWords), fresh, wordCount()) != storedSum ||
           std::fgetc(file.f) != EOF)
    result = TableFile::kDamaged;
  if (result != TableFile::kDone) {
    unmap(fresh, bytes);
    return result;
  }
  install(fresh, sizeSetting_, Fill::kNow);  // its pages are in place: the file was read into them
  rule_ = rule;
  written_.store(true, std::memory_order_relaxed);
  return TableFile::kDone;
}

}  // namespace zorva
