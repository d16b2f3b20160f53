#pragma once
// The hand-over between the input thread and the one think thread.

namespace zorva {

// Starts the think thread; it sleeps until startThinking.
void startThinkThread();

// Asks a running job to stop and returns once the think thread is idle.
void stopThinking();

// Wakes the think thread on the job in engine.thinkMode; does not wait.
void startThinking();

// Waits until the think thread is idle without asking it to stop.
void waitUntilIdle();

// INFO hash_size and rule: the table is made or cleared at once while the
// think thread is idle, so that no turn's clock pays for it; a running think
// leaves it to the next turn's set-up.
void prepareTableWhileIdle();

// Ends the think thread: mode -1, stop, wake, join.
void shutdownThinkThread();

}  // namespace zorva
