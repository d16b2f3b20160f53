#pragma once
// The commands that start an analysis job on the think thread; each job
// prints its own lines.

namespace zorva {

// zvbalanceone and zvbalancetwo [offset]: the offset is 0 when absent.
int cmdBalanceOne(const char* args);
int cmdBalanceTwo(const char* args);
// zvnbest [count]: one move when absent.
int cmdNBest(const char* args);
// zvsearchdefend.
int cmdSearchDefend(const char* args);
// zvswap2step2 and zvswap2step3: the swap decisions after three and five stones.
int cmdSwap2Step2(const char* args);
int cmdSwap2Step3(const char* args);

}  // namespace zorva
