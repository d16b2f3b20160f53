#pragma once
// Shared helpers of the database tests: a scratch folder and file access.

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "database/record.h"

namespace zorva::db::testing {

// A fresh folder under the system's temporary directory, removed at the end.
class TempDir {
 public:
  TempDir() {
    std::random_device seed;
    path_ = std::filesystem::temp_directory_path() / ("zorva-db-test-" + std::to_string(seed()));
    std::filesystem::create_directories(path_);
  }
  ~TempDir() {
    std::error_code ec;
    std::filesystem::remove_all(path_, ec);
  }
  std::string file(const std::string& name) const { return (path_ / name).string(); }
  std::string dir() const { return path_.string(); }
  std::vector<std::string> names() const {
    std::vector<std::string> out;
    for (const auto& entry : std::filesystem::directory_iterator(path_))
      out.push_back(entry.path().filename().string());
    return out;
  }

 private:
  std::filesystem::path path_;
};

inline std::string readBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

inline void writeBytes(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

inline std::string keyOf(int rule, int height, int width, std::vector<int32_t> moves) {
  KeyBuffer key;
  return canonicalKey({rule, height, width, moves}, key) ? std::string(key.view()) : std::string();
}

}  // namespace zorva::db::testing
