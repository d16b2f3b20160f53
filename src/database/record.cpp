#include "database/record.h"

#include <bitset>
#include <cstring>

namespace zorva::db {

int compareKeys(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
  if (a.empty()) return 0;
  // memcmp compares as unsigned char, which is the key order.
  return std::memcmp(a.data(), b.data(), a.size());
}

int symmetryCount(int height, int width) { return height == width ? 8 : 4; }

void applySymmetry(int s, int height, int width, int& x, int& y) {
  // Symmetries 0-3 keep the axes and exist on every board; 4-7 transpose
  // and are only used on square boards, where height == width.
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

}  // namespace

bool canonicalKey(const Position& p, KeyBuffer& out) {
  if (!validShape(p.rule, p.height, p.width)) return false;
  if (p.moves.size() > static_cast<size_t>(p.height * p.width)) return false;
  std::bitset<32 * 32> seen;
  for (int32_t cell : p.moves) {
    const int x = cellX(cell), y = cellY(cell);
    if (x < 0 || x >= p.height || y >= p.width || seen[cell]) return false;
    seen[cell] = true;
  }
  // On the board every coordinate is 0..21, so comparing them as ints is
  // the unsigned byte order of the keys.
  int best = 0;
  for (int s = 1; s < symmetryCount(p.height, p.width); s++)
    if (imageLess(p, s, best)) best = s;
  writeKey(p, best, out);
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
  std::bitset<32 * 32> seen;
  for (int i = 0; i < keyMoveCount(key); i++) {
    const int x = keyX(key, i), y = keyY(key, i);
    if (x < 0 || x >= height || y < 0 || y >= width)
      return "move " + std::to_string(i + 1) + " off the board";
    if (seen[makeCell(x, y)]) return "move " + std::to_string(i + 1) + " repeats a cell";
    seen[makeCell(x, y)] = true;
  }
  return {};
}

bool isCanonical(std::string_view key) {
  std::array<int32_t, kMaxSide * kMaxSide> moves;
  const int n = keyMoveCount(key);
  for (int i = 0; i < n; i++) moves[i] = makeCell(keyX(key, i), keyY(key, i));
  const Position p{keyRule(key), keyHeight(key), keyWidth(key), {moves.data(), static_cast<size_t>(n)}};
  KeyBuffer least;
  return canonicalKey(p, least) && least.view() == key;
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
