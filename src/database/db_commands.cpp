#include "database/db_commands.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <variant>

#include "database/db_text.h"

namespace zorva::db {

namespace {

std::string_view trim(std::string_view text) {
  const auto blank = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
  while (!text.empty() && blank(text.front())) text.remove_prefix(1);
  while (!text.empty() && blank(text.back())) text.remove_suffix(1);
  return text;
}

// A stored message may hold any byte; a line break inside it would end the
// reply early.
std::string printable(std::string_view message) {
  std::string out(message);
  for (char& c : out)
    if (c == '\n' || c == '\r') c = ' ';
  return out;
}

std::string oneLine(const ResultFields& f) {
  return "MESSAGE DATABASE ONE " + std::to_string(f.t) + " " + std::to_string(f.v) + " " +
         std::to_string(f.d);
}

std::string oneLine(const ResultFields& f, std::string_view message) {
  return oneLine(f) + " " + printable(message);
}

void addMessage(Lines& lines, const FileResult& result) {
  if (result.message) lines.push_back(*result.message);
}

// Reads up to `count` integers the way "%d %d ..." does: stops at the first
// word that does not start with a number, leaving the rest at their
// defaults. Out-of-range numbers saturate.
void readInts(std::string_view text, std::span<int> values) {
  std::string copy(text);
  const char* at = copy.c_str();
  for (int& value : values) {
    char* end = nullptr;
    const long parsed = std::strtol(at, &end, 10);
    if (end == at) return;
    value = static_cast<int>(std::clamp<long>(parsed, INT32_MIN, INT32_MAX));
    at = end;
  }
}

// Edits reach the file at once: it is small and the save atomic, and a
// manager that kills the engine or closes its input must not take the
// user's edits with it.
void saveEdits(Database& db, Lines& lines) {
  if (db.changed()) addMessage(lines, db.save());
}

// Stores the new fields and message for the position; returns the fields
// as stored, or an error line.
std::variant<ResultFields, std::string> storeEdit(Database& db, std::string_view key,
                                                  const ResultFields& fields, std::string_view message) {
  if (message.size() > static_cast<size_t>(kMaxMessageLength))
    return "MESSAGE Database message too long: " + std::to_string(message.size()) + " bytes, at most " +
           std::to_string(kMaxMessageLength) + " fit";
  const std::string text = makeText(fields, message);
  db.insert(key, text);
  return readResult(text);
}

// An export limit: a whole word of digits with an optional sign. A
// negative one is no limit; one beyond the int range saturates.
bool parseLimit(std::string_view text, int& value) {
  const bool negative = !text.empty() && text.front() == '-';
  if (!text.empty() && (text.front() == '-' || text.front() == '+')) text.remove_prefix(1);
  if (text.empty() || !std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; }))
    return false;
  int64_t magnitude = 0;
  for (char c : text) magnitude = std::min<int64_t>(magnitude * 10 + (c - '0'), INT32_MAX);
  value = negative ? -1 : static_cast<int>(magnitude);
  return true;
}

// The fields as the record text holds them: t a signed byte, v and d int16.
ResultFields clampFields(const ResultFields& f) {
  return {std::clamp(f.t, int(INT8_MIN), int(INT8_MAX)), std::clamp(f.v, int(INT16_MIN), int(INT16_MAX)),
          std::clamp(f.d, int(INT16_MIN), int(INT16_MAX))};
}

}  // namespace

Lines openDatabase(Database& db) {
  Lines lines;
  addMessage(lines, db.load());
  return lines;
}

Lines closeDatabase(Database& db) {
  Lines lines;
  const FileResult saved = db.save();
  addMessage(lines, saved);
  if (saved.ok) db.free();
  return lines;
}

Lines setDatabase(Database& db, std::string_view name, bool useDatabase) {
  const std::string newPath(trim(name));
  if (newPath == db.path()) return {};
  Lines lines;
  // Records the old file could not take go to the new one, so that a wrong
  // name never keeps the user from a right one, nor loses what was edited.
  std::vector<std::pair<std::string, std::string>> unsaved;
  const std::string oldPath = db.path();
  if (db.inUse()) {
    const FileResult saved = db.save();
    addMessage(lines, saved);
    if (!saved.ok) db.forEach([&](std::string_view key, std::string_view text) { unsaved.emplace_back(key, text); });
    db.free();
  }
  db.setPath(newPath);
  if (!useDatabase && unsaved.empty()) return lines;
  addMessage(lines, db.load());
  if (unsaved.empty()) return lines;
  db.insertMissing(std::move(unsaved), true);
  const FileResult saved = db.save();
  addMessage(lines, saved);
  lines.push_back("MESSAGE Database " + newPath + " took the records that " + oldPath + " could not keep" +
                  (saved.ok ? "" : "; they stay in memory"));
  if (saved.ok && !useDatabase) db.free();
  return lines;
}

Lines queryOne(const Database& db, const Position& position) {
  const std::optional<std::string> text = db.lookup(position);
  if (!text) return {oneLine(ResultFields{})};
  return {oneLine(readResult(*text), messageOf(*text))};
}

Lines queryAll(const Database& db, const Position& position,
               const std::function<bool(int32_t cell)>& occupied) {
  Lines lines{"MESSAGE DATABASE REFRESH"};
  if (db.inUse()) {
    std::vector<int32_t> moves(position.moves.begin(), position.moves.end());
    moves.push_back(0);
    Position next = position;
    next.moves = moves;
    for (int x = 0; x < position.height; x++)
      for (int y = 0; y < position.width; y++) {
        if (occupied && occupied(makeCell(x, y))) continue;
        moves.back() = makeCell(x, y);
        const std::optional<std::string> text = db.lookup(next);
        if (!text) continue;
        const ResultFields f = readResult(*text);
        lines.push_back("MESSAGE DATABASE " + std::to_string(x) + " " + std::to_string(y) + " " +
                        std::to_string(f.t) + " " + std::to_string(f.v) + " " + std::to_string(f.d));
      }
  }
  lines.push_back("MESSAGE DATABASE DONE");
  return lines;
}

// A position with a move off the board (or a cell played twice) has no
// key: its edits answer as usual and are stored nowhere, since no lookup
// could ever find them.
Lines editTvd(Database& db, std::string_view args, const Position& position) {
  std::array<int, 4> numbers{0, kUnset, 0, 0};
  readInts(args, numbers);
  const auto [mask, t, v, d] = numbers;
  if (!db.inUse() || position.moves.empty()) return {};
  KeyBuffer key;
  const bool storable = canonicalKey(position, key);
  const std::optional<std::string> old = storable ? db.find(key.view()) : std::nullopt;
  ResultFields fields = old ? readResult(*old) : ResultFields{};
  if (mask & 1) fields.t = t;
  if (mask & 2) fields.v = v;
  if (mask & 4) fields.d = d;
  fields = clampFields(fields);
  if (!storable) return {oneLine(fields)};
  const auto stored = storeEdit(db, key.view(), fields, old ? messageOf(*old) : std::string_view{});
  if (const auto* error = std::get_if<std::string>(&stored)) return {*error};
  Lines lines{oneLine(std::get<ResultFields>(stored))};
  saveEdits(db, lines);
  return lines;
}

Lines editRawMsg(Database& db, std::string_view message, const Position& position) {
  if (!db.inUse() || position.moves.empty()) return {};
  const std::string_view rest = trim(message);
  const std::string_view word = rest.substr(0, rest.find_first_of(" \t\r\n"));
  KeyBuffer key;
  if (!canonicalKey(position, key)) return {oneLine(ResultFields{}, word)};
  const std::optional<std::string> old = db.find(key.view());
  const auto stored = storeEdit(db, key.view(), old ? readResult(*old) : ResultFields{}, word);
  if (const auto* error = std::get_if<std::string>(&stored)) return {*error};
  Lines lines{oneLine(std::get<ResultFields>(stored), word)};
  saveEdits(db, lines);
  return lines;
}

Lines deleteOne(Database& db, const Position& position) {
  KeyBuffer key;
  Lines lines;
  if (canonicalKey(position, key) && db.erase(key.view())) saveEdits(db, lines);
  return lines;
}

Lines deleteAll(Database& db, const Position& position,
                const std::function<void(const std::string&)>& sendNow) {
  if (!db.inUse()) return {};
  Lines lines;
  const std::string working = "MESSAGE Working ...";
  if (sendNow)
    sendNow(working);
  else
    lines.push_back(working);
  KeyBuffer key;
  if (!canonicalKey(position, key)) {
    lines.push_back("MESSAGE Done");
    return lines;
  }

  // A record extends the position when its leading moves are one of the
  // position's symmetric images; the canonical key's header is shared.
  const std::string_view header = key.view().substr(0, kKeyHeader);
  const size_t prefixLength = key.view().size() - kKeyHeader;
  std::vector<std::string> images;
  for (int s = 0; s < kSymmetries; s++) {
    std::string image;
    for (int32_t cell : position.moves) {
      int x = cellX(cell), y = cellY(cell);
      applySymmetry(s, position.height, position.width, x, y);
      image += static_cast<char>(x);
      image += static_cast<char>(y);
    }
    images.push_back(std::move(image));
  }
  db.eraseIf([&](std::string_view stored) {
    if (stored.size() < key.view().size() || stored.substr(0, kKeyHeader) != header) return false;
    const std::string_view lead = stored.substr(kKeyHeader, prefixLength);
    return std::any_of(images.begin(), images.end(), [&](const std::string& image) { return lead == image; });
  });
  saveEdits(db, lines);
  lines.push_back("MESSAGE Done");
  return lines;
}

Lines dbToTxt(const Database& db, std::string_view params, int rule, int height, int width) {
  if (!db.inUse()) return {};
  std::string_view name = trim(params);
  int maxMoves = -1;
  if (const size_t space = name.find_last_of(" \t");
      space != std::string_view::npos && parseLimit(name.substr(space + 1), maxMoves))
    name = trim(name.substr(0, space));
  if (name.empty()) return {"MESSAGE Database export needs a file name"};
  const TextResult result = exportProven(db, std::string(name), rule, height, width, maxMoves);
  if (!result.ok)
    return {"MESSAGE Database export to " + std::string(name) + " failed (" + result.error + ")"};
  return {};
}

Lines txtToDb(Database& db, std::string_view fileName, int rule, int height, int width) {
  if (!db.inUse()) return {};
  const std::string name(trim(fileName));
  const TextResult result = importText(db, name, rule, height, width);
  if (!result.ok) return {"MESSAGE Database import from " + name + " failed (" + result.error + ")"};
  Lines lines;
  if (result.skipped > 0)
    lines.push_back("MESSAGE Database import from " + name + " skipped " + std::to_string(result.skipped) +
                    " lines that are not positions on this board, the first at line " +
                    std::to_string(result.firstSkippedLine));
  saveEdits(db, lines);
  return lines;
}

Lines dbCheck(const Database& db) {
  if (!db.inUse()) return {};
  std::vector<std::string> problems = db.checkStructure();
  size_t records = 0;
  db.forEach([&](std::string_view key, std::string_view text) {
    records++;
    const std::string where = "record " + std::to_string(records);
    if (const std::string bad = keyProblem(key); !bad.empty()) {
      problems.push_back(where + ": bad key (" + bad + ")");
      return;
    }
    std::string moves = keyMoveCount(key) ? ":" : " (empty board)";
    moves += formatMoveLine(key);
    if (!isCanonical(key)) problems.push_back(where + moves + ": not in canonical form, lookups miss it");
    if (!text.empty() && text.size() < static_cast<size_t>(kResultBytes))
      problems.push_back(where + moves + ": text of " + std::to_string(text.size()) +
                         " bytes has no result fields");
    const int t = readResult(text).t;
    if (t != kUnset && t != kWon && t != kLost)
      problems.push_back(where + moves + ": unknown result label " + std::to_string(t));
  });
  Lines lines{"MESSAGE Database check: " + std::to_string(records) + " records, " +
              std::to_string(problems.size()) + " problems"};
  for (size_t i = 0; i < problems.size() && i < static_cast<size_t>(kCheckLinesShown); i++)
    lines.push_back("MESSAGE Database check: " + problems[i]);
  if (problems.size() > static_cast<size_t>(kCheckLinesShown))
    lines.push_back("MESSAGE Database check: and " + std::to_string(problems.size() - kCheckLinesShown) +
                    " more");
  return lines;
}

}  // namespace zorva::db
