#include "database/db_file.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <memory>
#include <system_error>

#if defined(_WIN32)
#include <io.h>
#else
#include <unistd.h>
#endif

namespace fs = std::filesystem;

namespace zorva::db {

namespace {

// Reads little-endian fields from the file image, never past its end.
class Reader {
 public:
  explicit Reader(std::string_view bytes) : bytes_(bytes) {}
  size_t left() const { return bytes_.size() - at_; }
  bool done() const { return at_ == bytes_.size(); }
  int readInt16() {
    const auto lo = static_cast<uint8_t>(bytes_[at_]), hi = static_cast<uint8_t>(bytes_[at_ + 1]);
    at_ += 2;
    return static_cast<int16_t>(static_cast<uint16_t>(lo | (hi << 8)));
  }
  int64_t readInt32() {
    uint32_t v = 0;
    for (int i = 0; i < 4; i++) v |= static_cast<uint32_t>(static_cast<uint8_t>(bytes_[at_ + i])) << (8 * i);
    at_ += 4;
    return static_cast<int32_t>(v);
  }
  std::string_view take(size_t n) {
    const std::string_view part = bytes_.substr(at_, n);
    at_ += n;
    return part;
  }

 private:
  std::string_view bytes_;
  size_t at_ = 0;
};

// Reads one length-prefixed field, or names why it cannot.
bool readField(Reader& in, std::string_view& field, const char* what, int index, std::string& problem) {
  const std::string where = "record " + std::to_string(index);
  if (in.left() < 2) {
    problem = where + " is cut short";
    return false;
  }
  const int length = in.readInt16();
  if (length < 0) {
    problem = where + " has " + what + " length " + std::to_string(length);
    return false;
  }
  if (in.left() < static_cast<size_t>(length)) {
    problem = where + " is cut short";
    return false;
  }
  field = in.take(static_cast<size_t>(length));
  return true;
}

void note(std::string& problem, std::string text) {
  if (problem.empty()) problem = std::move(text);
}

// Restores key order after out-of-order records; of equal keys the one that
// came first in the file stays.
void sortAndDeduplicate(std::vector<Record>& records) {
  std::stable_sort(records.begin(), records.end(),
                   [](const Record& a, const Record& b) { return keyLess(a.key(), b.key()); });
  auto last = std::unique(records.begin(), records.end(),
                          [](const Record& a, const Record& b) { return a.key() == b.key(); });
  records.erase(last, records.end());
}

}  // namespace

ParsedFile parseDatabaseFile(std::string_view bytes) {
  ParsedFile out;
  if (bytes.empty()) {
    out.problem = "the file is empty";
    return out;
  }
  if (bytes.size() < 4) {
    out.problem = "the record count is cut short";
    return out;
  }
  Reader in(bytes);
  const int64_t declared = in.readInt32();
  if (declared < 0) note(out.problem, "the record count is " + std::to_string(declared));
  // Each record takes at least four bytes, which bounds a sane reservation.
  out.records.reserve(std::min<size_t>(static_cast<size_t>(std::max<int64_t>(declared, 0)), in.left() / 4));

  int64_t framed = 0;
  bool ordered = true;
  while (!in.done()) {
    const int index = static_cast<int>(framed + 1);
    std::string_view key, text;
    if (!readField(in, key, "key", index, out.problem)) break;
    if (!readField(in, text, "text", index, out.problem)) break;
    framed++;
    if (const std::string bad = keyProblem(key); !bad.empty()) {
      note(out.problem, "record " + std::to_string(index) + " has a bad key (" + bad + ")");
      continue;
    }
    if (!out.records.empty() && !keyLess(out.records.back().key(), key)) {
      note(out.problem, "record " + std::to_string(index) +
                            (out.records.back().key() == key ? " repeats a key" : " is out of order"));
      ordered = false;
    }
    out.records.emplace_back(key, text);
  }
  if (!ordered) sortAndDeduplicate(out.records);
  if (declared >= 0 && declared != framed)
    note(out.problem, "the record count says " + std::to_string(declared) + " but the file holds " +
                          std::to_string(framed));
  return out;
}

bool readWholeFile(const std::string& path, std::string& bytes, std::string& error) {
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), &std::fclose);
  if (!file) {
    error = std::strerror(errno);
    return false;
  }
  bytes.clear();
  char chunk[1 << 16];
  size_t got;
  while ((got = std::fread(chunk, 1, sizeof chunk, file.get())) > 0) bytes.append(chunk, got);
  if (std::ferror(file.get())) {
    error = std::strerror(errno);
    return false;
  }
  return true;
}

namespace {

// Buffers the output so a million small records are a few large writes.
class Writer {
 public:
  explicit Writer(std::FILE* file) : file_(file) { buffer_.reserve(kChunk + 64 * 1024); }
  void int16(int v) {
    buffer_.push_back(static_cast<char>(v & 0xff));
    buffer_.push_back(static_cast<char>((v >> 8) & 0xff));
  }
  void int32(uint32_t v) {
    for (int i = 0; i < 4; i++) buffer_.push_back(static_cast<char>((v >> (8 * i)) & 0xff));
  }
  void field(std::string_view bytes) {
    int16(static_cast<int>(bytes.size()));
    buffer_.append(bytes);
    if (buffer_.size() >= kChunk) flush();
  }
  bool flush() {
    if (!buffer_.empty() && std::fwrite(buffer_.data(), 1, buffer_.size(), file_) != buffer_.size())
      ok_ = false;
    buffer_.clear();
    return ok_;
  }

 private:
  static constexpr size_t kChunk = 1 << 20;
  std::FILE* file_;
  std::string buffer_;
  bool ok_ = true;
};

bool syncToDisk(std::FILE* file) {
#if defined(_WIN32)
  return _commit(_fileno(file)) == 0;
#else
  return fsync(fileno(file)) == 0;
#endif
}

}  // namespace

bool writeDatabaseFile(const std::string& path, std::span<const std::vector<Record>> buckets,
                       std::string& error) {
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (!file) {
    error = std::strerror(errno);
    return false;
  }
  size_t total = 0;
  for (const auto& bucket : buckets) total += bucket.size();
  Writer out(file);
  out.int32(static_cast<uint32_t>(total));
  for (const auto& bucket : buckets)
    for (const Record& r : bucket) {
      out.field(r.key());
      out.field(r.text());
    }
  bool ok = out.flush() && std::fflush(file) == 0 && syncToDisk(file);
  if (!ok) error = std::strerror(errno);
  if (std::fclose(file) != 0 && ok) {
    error = std::strerror(errno);
    ok = false;
  }
  return ok;
}

namespace {

std::string timeStamp() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
#if defined(_WIN32)
  localtime_s(&local, &now);
#else
  localtime_r(&now, &local);
#endif
  char text[32];
  std::strftime(text, sizeof text, "%Y%m%d-%H%M%S", &local);
  return text;
}

}  // namespace

std::string setAsideDamaged(const std::string& path, std::string& error) {
  const std::string base = path + ".damaged-" + timeStamp();
  std::string aside = base;
  std::error_code ec;
  for (int n = 2; fs::exists(aside, ec); n++) {
    if (n > 1000) {
      error = "no free name beside it";
      return {};
    }
    aside = base + "-" + std::to_string(n);
  }
  if (fs::copy_file(path, aside, ec)) return aside;
  fs::remove(aside, ec);
  fs::rename(path, aside, ec);
  if (!ec) return aside;
  error = ec.message();
  return {};
}

}  // namespace zorva::db
