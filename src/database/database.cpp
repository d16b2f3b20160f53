#include "database/database.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "database/db_file.h"

namespace fs = std::filesystem;

namespace zorva::db {

namespace {

bool recordLess(const Record& r, std::string_view key) { return keyLess(r.key(), key); }

}  // namespace

std::string Database::path() const {
  std::lock_guard lock(mutex_);
  return path_;
}

void Database::setPath(std::string path) {
  std::lock_guard lock(mutex_);
  path_ = std::move(path);
  damagedSetAside_ = false;
}

bool Database::inUse() const {
  std::lock_guard lock(mutex_);
  return loaded_;
}

bool Database::changed() const {
  std::lock_guard lock(mutex_);
  return changed_;
}

void Database::free() {
  std::lock_guard lock(mutex_);
  freeLocked();
}

void Database::freeLocked() {
  for (Bucket& bucket : buckets_) Bucket().swap(bucket);
  rebuildIndexLocked();
  loaded_ = false;
  changed_ = false;
}

// Deals sorted records out in equal runs, the remainder to the last bucket,
// so a load rebalances however unevenly inserts filled the buckets.
void Database::dealLocked(std::vector<Record> records) {
  const size_t share = records.size() / kBuckets;
  size_t next = 0;
  for (int b = 0; b < kBuckets; b++) {
    const size_t count = b == kBuckets - 1 ? records.size() - next : share;
    size_t capacity = kInitialCapacity;
    while (capacity < count) capacity *= 2;
    Bucket bucket;
    bucket.reserve(capacity);
    for (size_t i = 0; i < count; i++) bucket.push_back(std::move(records[next + i]));
    next += count;
    buckets_[b] = std::move(bucket);
  }
  loaded_ = true;
  rebuildIndexLocked();
}

void Database::rebuildIndexLocked() {
  int next = kBuckets;
  for (int b = kBuckets - 1; b >= 0; b--) {
    if (!buckets_[b].empty()) next = b;
    firstFilled_[b] = next;
  }
  indexBytes_.clear();
  for (int b = 0; b < kBuckets; b++) {
    indexOffset_[b] = static_cast<uint32_t>(indexBytes_.size());
    if (firstFilled_[b] < kBuckets) indexBytes_.append(buckets_[firstFilled_[b]].front().key());
  }
  indexOffset_[kBuckets] = static_cast<uint32_t>(indexBytes_.size());
}

FileResult Database::load() {
  std::lock_guard lock(mutex_);
  freeLocked();
  damagedSetAside_ = false;
  std::error_code ec;
  const fs::file_status status = fs::status(path_, ec);
  if (status.type() == fs::file_type::not_found) {
    dealLocked({});
    return {};
  }
  if (!ec && !fs::is_regular_file(status)) {
    dealLocked({});
    return {false, messagePrefix() + " is not a regular file; an empty database is in use"};
  }
  std::string bytes, error;
  if (ec || !readWholeFile(path_, bytes, error)) {
    if (ec) error = ec.message();
    dealLocked({});
    std::string asideError;
    const std::string aside = setAsideDamaged(path_, asideError);
    damagedSetAside_ = !aside.empty();
    return {false, messagePrefix() + " could not be read (" + error + "); an empty database is in use" +
                       (aside.empty() ? "" : "; the file was kept as " + aside)};
  }
  ParsedFile parsed = parseDatabaseFile(bytes);
  const size_t kept = parsed.records.size();
  dealLocked(std::move(parsed.records));
  if (parsed.problem.empty()) return {};
  std::string asideError;
  const std::string aside = setAsideDamaged(path_, asideError);
  damagedSetAside_ = !aside.empty();
  return {false, messagePrefix() + " is damaged (" + parsed.problem + "); kept " + std::to_string(kept) +
                     " valid records; " +
                     (aside.empty() ? "could not keep a copy of the damaged file (" + asideError + ")"
                                    : "the damaged file was kept as " + aside)};
}

FileResult Database::save() {
  std::lock_guard lock(mutex_);
  if (!loaded_) return {};
  const auto failed = [&](const std::string& why) {
    return FileResult{false, messagePrefix() + " could not be saved (" + why + "); the previous file is unchanged"};
  };
  std::error_code ec;
  const fs::file_status status = fs::status(path_, ec);
  const bool exists = fs::exists(status);
  if (exists && !fs::is_regular_file(status)) return failed("it is not a regular file");

  // The new file is written in full before the old one is touched.
  const std::string temp = path_ + ".tmp";
  std::string error;
  if (!writeDatabaseFile(temp, buckets_, error)) {
    fs::remove(temp, ec);
    return failed(error);
  }
  // The backup is a hard link (or a copy) of the old file, so the database
  // name holds a whole file at every moment; the rename below replaces it
  // atomically. After a damaged load the .bak holds the last whole file and
  // the damaged one has its own copy, so the .bak stays.
  if (exists && !damagedSetAside_) {
    const std::string backup = path_ + ".bak";
    fs::remove(backup, ec);
    fs::create_hard_link(path_, backup, ec);
    if (ec) fs::copy_file(path_, backup, fs::copy_options::overwrite_existing, ec);
  }
  fs::rename(temp, path_, ec);
  if (ec) {
    const std::string why = ec.message();
    fs::remove(temp, ec);
    return failed(why);
  }
  changed_ = false;
  return {};
}

int Database::bucketForLocked(std::string_view key) const {
  // Index entries are nondecreasing in i, and the last bucket whose entry is
  // <= key is always a non-empty one.
  int lo = 0, hi = kBuckets;  // answer in [lo - 1, hi)
  while (lo < hi) {
    const int mid = (lo + hi) / 2;
    const std::string_view least(indexBytes_.data() + indexOffset_[mid], indexOffset_[mid + 1] - indexOffset_[mid]);
    if (firstFilled_[mid] < kBuckets && !keyLess(key, least))
      lo = mid + 1;
    else
      hi = mid;
  }
  return lo - 1;
}

const Record* Database::findLocked(std::string_view key) const {
  if (!loaded_) return nullptr;
  const int b = bucketForLocked(key);
  if (b < 0) return nullptr;
  const Bucket& bucket = buckets_[b];
  auto it = std::lower_bound(bucket.begin(), bucket.end(), key, recordLess);
  return it != bucket.end() && it->key() == key ? &*it : nullptr;
}

std::optional<std::string> Database::find(std::string_view key) const {
  std::lock_guard lock(mutex_);
  const Record* r = findLocked(key);
  if (!r) return std::nullopt;
  return std::string(r->text());
}

std::optional<std::string> Database::lookup(const Position& position) const {
  KeyBuffer key;
  if (!canonicalKey(position, key)) return std::nullopt;
  return find(key.view());
}

std::optional<ResultFields> Database::probe(const Position& position) const {
  KeyBuffer key;
  if (!canonicalKey(position, key)) return std::nullopt;
  std::lock_guard lock(mutex_);
  const Record* r = findLocked(key.view());
  if (!r || r->text().size() < kResultBytes) return std::nullopt;
  return readResult(r->text());
}

InsertResult Database::insert(std::string_view key, std::string_view text) {
  if (!keyProblem(key).empty()) return InsertResult::kBadKey;
  if (text.size() > static_cast<size_t>(kMaxFieldLength)) return InsertResult::kTextTooLong;
  std::lock_guard lock(mutex_);
  if (!loaded_) return InsertResult::kNotInUse;
  // A key before every stored one goes to the front of bucket 0.
  const int b = std::max(bucketForLocked(key), 0);
  Bucket& bucket = buckets_[b];
  auto it = std::lower_bound(bucket.begin(), bucket.end(), key, recordLess);
  changed_ = true;
  if (it != bucket.end() && it->key() == key) {
    it->setText(text);
    return InsertResult::kReplaced;
  }
  if (bucket.size() == bucket.capacity()) {
    const auto at = it - bucket.begin();
    bucket.reserve(std::max<size_t>(kInitialCapacity, bucket.capacity() * 2));
    it = bucket.begin() + at;
  }
  const bool first = it == bucket.begin();
  bucket.emplace(it, key, text);
  if (first) rebuildIndexLocked();
  return InsertResult::kInserted;
}

bool Database::erase(std::string_view key) {
  std::lock_guard lock(mutex_);
  if (!loaded_) return false;
  const int b = bucketForLocked(key);
  if (b < 0) return false;
  Bucket& bucket = buckets_[b];
  auto it = std::lower_bound(bucket.begin(), bucket.end(), key, recordLess);
  if (it == bucket.end() || it->key() != key) return false;
  const bool first = it == bucket.begin();
  bucket.erase(it);
  if (first) rebuildIndexLocked();
  changed_ = true;
  return true;
}

size_t Database::eraseIf(const std::function<bool(std::string_view key)>& doomed) {
  std::lock_guard lock(mutex_);
  if (!loaded_) return 0;
  size_t erased = 0;
  for (Bucket& bucket : buckets_)
    erased += std::erase_if(bucket, [&](const Record& r) { return doomed(r.key()); });
  rebuildIndexLocked();
  if (erased > 0) changed_ = true;
  return erased;
}

size_t Database::insertMissing(std::vector<std::pair<std::string, std::string>> records, bool replace) {
  std::erase_if(records, [](const auto& r) {
    return !keyProblem(r.first).empty() || r.second.size() > static_cast<size_t>(kMaxFieldLength);
  });
  std::stable_sort(records.begin(), records.end(),
                   [](const auto& a, const auto& b) { return keyLess(a.first, b.first); });
  std::lock_guard lock(mutex_);
  if (!loaded_) return 0;
  size_t stored = 0;
  for (const Bucket& bucket : buckets_) stored += bucket.size();
  std::vector<Record> merged;
  merged.reserve(stored + records.size());

  // Merges the incoming records that sort before `bound` (all of the rest
  // when there is none) and counts what it adds.
  size_t added = 0, replaced = 0;
  auto next = records.begin();
  const auto mergeBefore = [&](std::optional<std::string_view> bound) {
    for (; next != records.end() && (!bound || keyLess(next->first, *bound)); ++next) {
      if (!merged.empty() && merged.back().key() == next->first) continue;
      merged.emplace_back(next->first, next->second);
      added++;
    }
  };
  for (Bucket& bucket : buckets_) {
    for (Record& r : bucket) {
      mergeBefore(r.key());
      const bool given = next != records.end() && next->first == r.key();
      if (given && replace) {
        merged.emplace_back(next->first, next->second);
        replaced++;
      } else {
        merged.push_back(std::move(r));
      }
      while (given && next != records.end() && next->first == merged.back().key()) ++next;
    }
    Bucket().swap(bucket);
  }
  mergeBefore(std::nullopt);
  dealLocked(std::move(merged));
  if (added + replaced > 0) changed_ = true;
  return added;
}

void Database::forEach(const std::function<void(std::string_view, std::string_view)>& visit) const {
  std::lock_guard lock(mutex_);
  if (!loaded_) return;
  for (const Bucket& bucket : buckets_)
    for (const Record& r : bucket) visit(r.key(), r.text());
}

size_t Database::size() const {
  std::lock_guard lock(mutex_);
  size_t n = 0;
  for (const Bucket& bucket : buckets_) n += bucket.size();
  return n;
}

int Database::bucketCount(int bucket) const {
  std::lock_guard lock(mutex_);
  return static_cast<int>(buckets_.at(bucket).size());
}

int Database::bucketCapacity(int bucket) const {
  std::lock_guard lock(mutex_);
  return static_cast<int>(buckets_.at(bucket).capacity());
}

std::vector<std::string> Database::checkStructure() const {
  std::lock_guard lock(mutex_);
  std::vector<std::string> problems;
  if (!loaded_) return problems;
  std::string last;
  int next = kBuckets;
  for (int b = kBuckets - 1; b >= 0; b--) {
    if (!buckets_[b].empty()) next = b;
    if (firstFilled_[b] != next)
      problems.push_back("bucket index " + std::to_string(b) + " points at bucket " +
                         std::to_string(firstFilled_[b]) + " instead of " + std::to_string(next));
    const std::string_view entry(indexBytes_.data() + indexOffset_[b], indexOffset_[b + 1] - indexOffset_[b]);
    if (next < kBuckets && entry != buckets_[next].front().key())
      problems.push_back("bucket index " + std::to_string(b) + " holds a stale first key");
  }
  size_t position = 0;
  for (int b = 0; b < kBuckets; b++) {
    const Bucket& bucket = buckets_[b];
    const size_t capacity = bucket.capacity();
    if (capacity < static_cast<size_t>(kInitialCapacity) || (capacity & (capacity - 1)) != 0)
      problems.push_back("bucket " + std::to_string(b) + " has capacity " + std::to_string(capacity));
    for (const Record& r : bucket) {
      position++;
      if (position > 1 && !keyLess(last, r.key()))
        problems.push_back("record " + std::to_string(position) + " in bucket " + std::to_string(b) +
                           (last == r.key() ? " repeats the key before it" : " is out of order"));
      last.assign(r.key());
    }
  }
  return problems;
}

}  // namespace zorva::db
