#include "protocol/analysis_commands.h"

#include <cstdint>

#include "protocol/jobs.h"
#include "protocol/commands.h"
#include "protocol/engine_state.h"
#include "protocol/messages.h"
#include "protocol/output.h"
#include "protocol/scan.h"
#include "protocol/think_thread.h"

namespace zorva {

namespace {

constexpr int kGoOn = 0;

// The mode is set before the preamble, which waits for the running job;
// the new one starts only with startThinking.
int startJob(int mode) {
  engine.thinkMode = mode;
  preamble();
  startThinking();
  return kGoOn;
}

int32_t numberOr(const char* args, int32_t absent) {
  int32_t value;
  return scanInts(args, "%d", &value) == 1 ? value : absent;
}

int startBalance(int mode, const char* args) {
  engine.balanceParam = numberOr(args, 0);
  return startJob(mode);
}

}  // namespace

int cmdBalanceOne(const char* args) { return startBalance(kModeBalanceOne, args); }

int cmdBalanceTwo(const char* args) { return startBalance(kModeBalanceTwo, args); }

int cmdNBest(const char* args) {
  const int32_t count = numberOr(args, 1);
  if (count < 1) {
    sendLine(reply::kErrorNBestCount);
    return kGoOn;
  }
  engine.nbestCount = count;
  return startJob(kModeNBest);
}

int cmdSearchDefend(const char*) { return startJob(kModeSearchDefend); }

int cmdSwap2Step2(const char*) { return startJob(kModeSwap2First); }

int cmdSwap2Step3(const char*) { return startJob(kModeSwap2Second); }

}  // namespace zorva
