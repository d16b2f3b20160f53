#include "protocol/hash_commands.h"

#include <mutex>

#include "protocol/commands.h"
#include "protocol/engine_state.h"
#include "protocol/messages.h"
#include "protocol/output.h"
#include "search/tt.h"

namespace zorva {

namespace {

constexpr int kGoOn = 0;

// The file name is the whole next line.
const char* readFileName() {
  readInputLine();
  return engine.inputLine;
}

const char* refusal(TableFile result) {
  switch (result) {
    case TableFile::kNoTable: return reply::kRefusedNoTable;
    case TableFile::kNotAHashFile: return reply::kRefusedNotAHashFile;
    case TableFile::kOtherVersion: return reply::kRefusedVersion;
    case TableFile::kOtherRule: return reply::kRefusedRule;
    case TableFile::kOtherSize: return reply::kRefusedSize;
    case TableFile::kOtherKeys: return reply::kRefusedKeys;
    case TableFile::kTruncated: return reply::kRefusedTruncated;
    case TableFile::kDamaged: return reply::kRefusedDamaged;
    case TableFile::kNoMemory: return reply::kRefusedMemory;
    case TableFile::kDone:
    case TableFile::kCannotOpen: break;
  }
  return nullptr;
}

}  // namespace

// Read-only: entries are read one word at a time, so it may run beside a search.
int cmdShowHashUsage(const char*) {
  int stones;
  {
    std::lock_guard lock(engine.boardLock);
    stones = engine.board.stoneCount();
  }
  const TableUsage usage = transpositionTable.usageAt(stones);
  sendLine(reply::kHashUsage, usage.filled, usage.current);
  return kGoOn;
}

int cmdHashClear(const char*) {
  stopForChange();
  if (transpositionTable.allocated()) transpositionTable.clearUnder(engine.settings.rule);
  return kGoOn;
}

int cmdHashDump(const char*) {
  const char* name = readFileName();
  const TableFile result = transpositionTable.dumpTo(name);
  if (result == TableFile::kNoTable)
    sendLine(reply::kHashNothingToWrite, name);
  else if (result != TableFile::kDone)
    sendLine(reply::kHashNotWritten, name);
  return kGoOn;
}

// A file that cannot be opened is passed over in silence, as the protocol
// has it; a file that is not a sound dump for this table is refused whole.
int cmdHashLoad(const char*) {
  const char* name = readFileName();
  stopForChange();
  if (const char* why = refusal(transpositionTable.loadFrom(name, engine.settings.rule)))
    sendLine(reply::kHashFileRefused, name, why);
  return kGoOn;
}

}  // namespace zorva
