#pragma once
// The opening database: a persistent map from canonical position keys to
// short texts (record.h), kept as one sorted sequence split into 1024
// buckets.
//
// Invariants, all guarded by the one mutex:
// - buckets 0..1023 concatenated are strictly increasing in key order;
// - while in use every bucket's capacity is 1024 * 2^k and >= its count;
// - firstFilled_[i] is the first non-empty bucket at or after i (1024 when
//   none), and index entry i is a copy of that bucket's first key: the
//   least key that can be at or after bucket i. The entries are packed in
//   one string so the first binary search stays in cache; they are rebuilt
//   whenever a bucket's first record changes.
//
// Every public operation takes the lock for its whole duration; keys are
// built before it is taken. Search threads look up while the input thread
// edits, loads or saves. (A reader-writer lock would let probes overlap,
// but the platform's favours readers, and busy search threads then starve
// the input thread's edits.)
//
// Errors are values: load and save return a FileResult whose message, when
// present, is one full "MESSAGE ..." line for the front end to send.

#include <array>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "database/record.h"

namespace zorva::db {

struct FileResult {
  bool ok = true;
  std::optional<std::string> message;
};

enum class InsertResult { kInserted, kReplaced, kNotInUse, kBadKey, kTextTooLong };

class Database {
 public:
  static constexpr int kBuckets = 1024;
  static constexpr int kInitialCapacity = 1024;

  Database() = default;
  explicit Database(std::string path) : path_(std::move(path)) {}
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  std::string path() const;
  void setPath(std::string path);

  // Replaces the contents with the file's. A missing file gives an empty
  // database in use, silently. A damaged file gives what could be
  // recovered, one message, and a copy of the file set aside; the next save
  // then leaves the ".bak" alone, since it holds the last whole file.
  FileResult load();
  // Writes "<path>.tmp", keeps the previous file as "<path>.bak", then
  // renames the new file over the old. If writing fails nothing else is
  // touched. Does nothing while not in use.
  FileResult save();
  void free();
  bool inUse() const;
  // Edited since the last load or save.
  bool changed() const;

  std::optional<std::string> lookup(const Position& position) const;
  std::optional<std::string> find(std::string_view key) const;
  // The search's probe: the result fields of a record with more than four
  // bytes of text. Does not allocate.
  std::optional<ResultFields> probe(const Position& position) const;

  // Inserts, or replaces the text of an equal key. The key must be
  // canonical (canonicalKey).
  InsertResult insert(std::string_view key, std::string_view text);
  bool erase(std::string_view key);
  size_t eraseIf(const std::function<bool(std::string_view key)>& doomed);
  // Adds every record whose key is not stored yet (with `replace`, also
  // puts the given text in place of a stored one) and deals the whole
  // sequence evenly over the buckets, as a load does. Keys must be
  // canonical; records that cannot be stored are skipped. Returns the
  // number of keys added.
  size_t insertMissing(std::vector<std::pair<std::string, std::string>> records, bool replace = false);
  // Visits every record in key order under the lock.
  void forEach(const std::function<void(std::string_view key, std::string_view text)>& visit) const;

  size_t size() const;
  int bucketCount(int bucket) const;
  int bucketCapacity(int bucket) const;
  // Checks the invariants above; one text per problem found.
  std::vector<std::string> checkStructure() const;

 private:
  using Bucket = std::vector<Record>;

  void freeLocked();
  void dealLocked(std::vector<Record> records);
  void rebuildIndexLocked();
  // Last bucket whose least possible key is <= key, or -1.
  int bucketForLocked(std::string_view key) const;
  const Record* findLocked(std::string_view key) const;
  std::string messagePrefix() const { return "MESSAGE Database " + path_; }

  mutable std::mutex mutex_;
  std::string path_;
  bool loaded_ = false;
  // Set when load found the file damaged and kept a copy of it: the ".bak"
  // then holds the last whole file and stays as it is until the next load.
  bool damagedSetAside_ = false;
  bool changed_ = false;
  std::array<Bucket, kBuckets> buckets_;
  std::array<int, kBuckets> firstFilled_{};
  std::string indexBytes_;
  std::array<uint32_t, kBuckets + 1> indexOffset_{};
};

}  // namespace zorva::db
