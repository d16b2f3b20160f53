#include "database/record.h"

#include <algorithm>
#include <bitset>
#include <cstring>

namespace zorva::db {

int compareKeys(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
  if (a.empty()) return 0;
  // memcmp compares as unsigned char, which is the key order.
  return std::memcmp(a.data(), b.data(), a.size());
}

void applySymmetry(int s, int height, int width, int& x, int& y) {
  const int ox = x, oy = y;
  const int mx = height - 1 - ox, my = width - 1 - oy;
  switch (s) {
    case 1: x = mx; break;
    case 2: y = my; break;
    case 3: x = mx; y = my; break;
    case 4: x = oy; y = ox; break;
    case 5: x = oy; y = mx; break;
    case 6: x = my; y = ox; break;
    case 7: x = my; y = mx; break;
    default: break;
  }
}

namespace {

bool validShape(int rule, int height, int width) {
  return rule >= 0 && rule < kRuleCount && height >= 1 && height <= kMaxSide && width >= 1 &&
         width <= kMaxSide;
}

void writeKey(const Position& p, int s, KeyBuffer& out) {
  out.bytes[0] = static_cast<char>(p.rule);
  out.bytes[1] = static_cast<char>(p.height);
  out.bytes[2] = static_cast<char>(p.width);
  int at = kKeyHeader;
  for (int32_t cell : p.moves) {
    int x = cellX(cell), y = cellY(cell);
    applySymmetry(s, p.height, p.width, x, y);
    out.bytes[at++] = static_cast<char>(x);
    out.bytes[at++] = static_cast<char>(y);
  }
  out.length = at;
}

// Compares the keys symmetries a and b would give, move by move; they
// usually differ within the first two moves, so no key is written.
bool imageLess(const Position& p, int a, int b) {
  for (int32_t cell : p.moves) {
    int ax = cellX(cell), ay = cellY(cell), bx = ax, by = ay;
    applySymmetry(a, p.height, p.width, ax, ay);
    applySymmetry(b, p.height, p.width, bx, by);
    if (ax != bx) return ax < bx;
    if (ay != by) return ay < by;
  }
  return false;
}

// Distinct cells, all on a board of this shape.
bool fits(std::span<const int32_t> moves, int height, int width) {
  if (moves.size() > static_cast<size_t>(height * width)) return false;
  std::bitset<32 * 32> seen;
  for (int32_t cell : moves) {
    const int x = cellX(cell), y = cellY(cell);
    if (x < 0 || x >= height || y < 0 || y >= width || seen[cell]) return false;
    seen[cell] = true;
  }
  return true;
}

// The least form of a position whose moves lie on the board.
void writeLeast(const Position& p, KeyBuffer& out) {
  // Every form's coordinates are 0..21, so comparing them as ints is the
  // unsigned byte order of the keys.
  int best = 0;
  for (int s = 1; s < kSymmetries; s++)
    if (imageLess(p, s, best)) best = s;
  writeKey(p, best, out);
}

// True when the moves lie on the board turned a quarter; `turned` then
// holds them turned back by the transpose, which is its own inverse.
bool turnBack(const Position& p, std::array<int32_t, kMaxSide * kMaxSide>& cells, Position& turned) {
  if (!fits(p.moves, p.width, p.height)) return false;
  for (size_t i = 0; i < p.moves.size(); i++) cells[i] = makeCell(cellY(p.moves[i]), cellX(p.moves[i]));
  turned = p;
  turned.moves = {cells.data(), p.moves.size()};
  return true;
}

}  // namespace

bool canonicalKey(const Position& p, KeyBuffer& out) {
  if (!validShape(p.rule, p.height, p.width)) return false;
  if (fits(p.moves, p.height, p.width)) {
    writeLeast(p, out);
    return true;
  }
  std::array<int32_t, kMaxSide * kMaxSide> cells;
  Position turned;
  if (!turnBack(p, cells, turned)) return false;
  writeLeast(turned, out);
  return true;
}

std::string keyProblem(std::string_view key) {
  const int length = static_cast<int>(key.size());
  if (length < kKeyHeader || length > kMaxKeyLength || (length - kKeyHeader) % 2 != 0)
    return "key length " + std::to_string(length);
  const int rule = keyRule(key), height = keyHeight(key), width = keyWidth(key);
  if (rule >= kRuleCount) return "rule byte " + std::to_string(rule);
  if (!validShape(rule, height, width))
    return "board size " + std::to_string(height) + "x" + std::to_string(width);
  // The moves lie on the board, or all on the board turned a quarter.
  const int side = std::max(height, width), count = keyMoveCount(key);
  std::bitset<32 * 32> seen;
  std::array<int32_t, kMaxSide * kMaxSide> moves;
  for (int i = 0; i < count; i++) {
    const int x = keyX(key, i), y = keyY(key, i);
    if (x < 0 || x >= side || y < 0 || y >= side) return "move " + std::to_string(i + 1) + " off the board";
    if (seen[makeCell(x, y)]) return "move " + std::to_string(i + 1) + " repeats a cell";
    seen[makeCell(x, y)] = true;
    moves[i] = makeCell(x, y);
  }
  const std::span<const int32_t> cells(moves.data(), static_cast<size_t>(count));
  if (!fits(cells, height, width) && !fits(cells, width, height)) return "moves off the board";
  return {};
}

bool isCanonical(std::string_view key) {
  std::array<int32_t, kMaxSide * kMaxSide> moves, cells;
  const int n = keyMoveCount(key);
  for (int i = 0; i < n; i++) moves[i] = makeCell(keyX(key, i), keyY(key, i));
  const Position p{keyRule(key), keyHeight(key), keyWidth(key), {moves.data(), static_cast<size_t>(n)}};
  // A key whose moves fit the board both ways may be the least form of either reading.
  KeyBuffer least;
  Position turned;
  if (canonicalKey(p, least) && least.view() == key) return true;
  if (!validShape(p.rule, p.height, p.width) || !turnBack(p, cells, turned)) return false;
  writeLeast(turned, least);
  return least.view() == key;
}

namespace {

int readInt16(std::string_view text, int at) {
  const auto lo = static_cast<uint8_t>(text[at]);
  const auto hi = static_cast<uint8_t>(text[at + 1]);
  return static_cast<int16_t>(static_cast<uint16_t>(lo | (hi << 8)));
}

void appendInt16(std::string& out, int value) {
  const auto bits = static_cast<uint16_t>(static_cast<int16_t>(value));
  out.push_back(static_cast<char>(bits & 0xff));
  out.push_back(static_cast<char>(bits >> 8));
}

}  // namespace

ResultFields readResult(std::string_view text) {
  if (text.size() < kResultBytes) return {};
  return {static_cast<int8_t>(text[0]), readInt16(text, 1), readInt16(text, 3)};
}

std::string_view messageOf(std::string_view text) {
  return text.size() <= kResultBytes ? std::string_view{} : text.substr(kResultBytes);
}

std::string makeText(const ResultFields& fields, std::string_view message) {
  std::string text;
  text.reserve(kResultBytes + message.size());
  text.push_back(static_cast<char>(static_cast<int8_t>(fields.t)));
  appendInt16(text, fields.v);
  appendInt16(text, fields.d);
  text.append(message);
  return text;
}

int readCount(std::string_view text) {
  if (text.size() <= kResultBytes) return -1;
  const char c = text[kResultBytes];
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'Z') return c - 'A' + 10;
  return -1;
}

Record::Record(std::string_view key, std::string_view text)
    : bytes_(new char[key.size() + text.size()]),
      keyLength_(static_cast<int16_t>(key.size())),
      textLength_(static_cast<int16_t>(text.size())) {
  if (!key.empty()) std::memcpy(bytes_.get(), key.data(), key.size());
  if (!text.empty()) std::memcpy(bytes_.get() + key.size(), text.data(), text.size());
}

void Record::setText(std::string_view text) {
  *this = Record(key(), text);
}

}  // namespace zorva::db
