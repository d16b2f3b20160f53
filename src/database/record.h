#pragma once
// Position keys and record texts of the opening database.
//
// Key layout (bytes):
//
//   [rule] [height] [width] [x0] [y0] [x1] [y1] ...
//
// one signed byte per coordinate, moves in the order they were played, so a
// key of n stones is 3 + 2n bytes. x is the protocol's first coordinate and
// runs over [0, height), y over [0, width). A move arrives as a cell key
// x * 32 + y.
//
// Canonical form: the position is stored under the least of its eight
// symmetric keys (identity, the three rotations, the four reflections),
// on rectangles too, so that every build stores a position under the same
// key. On a rectangle the transposing forms lie on the board turned a
// quarter (x over [0, width), y over [0, height)), so a stored key holds
// its moves in either orientation, and a position and its transposed
// counterpart share a record. Every lookup, insert and delete goes through
// the same canonicalKey().
//
// Key order: a shorter key is less; equal lengths compare as unsigned bytes.
//
// Record text: byte 0 the result label t (signed: 'w' won, 'l' lost, -1
// unset), bytes 1-2 value v, bytes 3-4 depth d (both int16 little-endian),
// then a free message whose first character doubles as a count digit. A text
// shorter than five bytes has no fields; readers see -1, 0, 0.

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace zorva::db {

constexpr int kMaxSide = 22;
constexpr int kRuleCount = 3;
constexpr int kKeyHeader = 3;
constexpr int kMaxKeyLength = kKeyHeader + 2 * kMaxSide * kMaxSide;
// Key and text lengths are int16 in the file.
constexpr int kMaxFieldLength = INT16_MAX;
constexpr int kResultBytes = 5;
constexpr int kMaxMessageLength = kMaxFieldLength - kResultBytes;

constexpr int kWon = 'w';
constexpr int kLost = 'l';
constexpr int kUnset = -1;

inline int cellX(int32_t cell) { return cell >> 5; }
inline int cellY(int32_t cell) { return cell & 31; }
inline int32_t makeCell(int x, int y) { return x * 32 + y; }

struct Position {
  int rule = 0;
  int height = 15;
  int width = 15;
  std::span<const int32_t> moves;
};

// Fixed-size so the search can build keys without allocating.
struct KeyBuffer {
  std::array<char, kMaxKeyLength> bytes;  // only the first `length` are set
  int length = 0;
  std::string_view view() const { return {bytes.data(), static_cast<size_t>(length)}; }
};

int compareKeys(std::string_view a, std::string_view b);
inline bool keyLess(std::string_view a, std::string_view b) { return compareKeys(a, b) < 0; }

constexpr int kSymmetries = 8;
// Maps (x, y) of the height x width board by symmetry s in [0, 8); 4..7
// transpose, onto the board turned a quarter.
void applySymmetry(int s, int height, int width, int& x, int& y);

// Builds the canonical key. The moves may lie on the board or all on the
// board turned a quarter (the orientation of a transposed stored key).
// Returns false when the position has no key: a rule outside 0..2, a side
// outside 1..22, a move off the board or a cell played twice. Such
// positions are never stored and never found.
bool canonicalKey(const Position& position, KeyBuffer& out);

// Reading keys. They assume a well-formed key (see keyProblem).
inline int keyRule(std::string_view key) { return static_cast<uint8_t>(key[0]); }
inline int keyHeight(std::string_view key) { return static_cast<uint8_t>(key[1]); }
inline int keyWidth(std::string_view key) { return static_cast<uint8_t>(key[2]); }
inline int keyMoveCount(std::string_view key) { return (static_cast<int>(key.size()) - kKeyHeader) / 2; }
inline int keyX(std::string_view key, int i) { return static_cast<int8_t>(key[kKeyHeader + 2 * i]); }
inline int keyY(std::string_view key, int i) { return static_cast<int8_t>(key[kKeyHeader + 2 * i + 1]); }

// Empty when the key is well formed, else what is wrong with it.
std::string keyProblem(std::string_view key);
// True when no symmetric image of the key is less (key must be well formed).
bool isCanonical(std::string_view key);

struct ResultFields {
  int t = kUnset;
  int v = 0;
  int d = 0;
  bool operator==(const ResultFields&) const = default;
};

ResultFields readResult(std::string_view text);
std::string_view messageOf(std::string_view text);
// Narrows t to a signed byte and v, d to int16, as the text stores them.
std::string makeText(const ResultFields& fields, std::string_view message);
// The message's first character as a count digit ("0".."9", then "A"
// upward); -1 when the text has no such character.
int readCount(std::string_view text);

// One stored record: key and text in a single allocation, 16 bytes in the
// bucket array. Both lengths fit int16 (the file's length fields); callers
// check that before constructing.
class Record {
 public:
  Record() = default;
  Record(std::string_view key, std::string_view text);
  std::string_view key() const { return {bytes_.get(), static_cast<size_t>(keyLength_)}; }
  std::string_view text() const {
    return {bytes_.get() + keyLength_, static_cast<size_t>(textLength_)};
  }
  void setText(std::string_view text);

 private:
  std::unique_ptr<char[]> bytes_;
  int16_t keyLength_ = 0;
  int16_t textLength_ = 0;
};

}  // namespace zorva::db
