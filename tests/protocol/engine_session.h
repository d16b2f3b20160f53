#pragma once
// A live engine process for tests that talk to it over time, as a manager
// does: send a line, wait for an answer with a deadline.
#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace zorva::testing {

// Sanitizers slow the engine several times over; time limits are for the real build.
#ifdef ZORVA_SANITIZED
constexpr int kSlack = 10;
#else
constexpr int kSlack = 1;
#endif

class EngineSession {
 public:
  explicit EngineSession(const std::string& binary = ZORVA_BINARY);
  ~EngineSession();
  EngineSession(const EngineSession&) = delete;
  EngineSession& operator=(const EngineSession&) = delete;

  void send(const std::string& line);
  // The next output line, or nothing when none arrives within `timeoutMs`.
  std::optional<std::string> readLine(int timeoutMs);
  // The next line that is not a MESSAGE line.
  std::optional<std::string> readAnswer(int timeoutMs);
  // A turn's lines up to and with its answer (each line within `timeoutMs`
  // of the last); ends early, without the answer, when the engine falls silent.
  std::vector<std::string> readTurn(int timeoutMs);
  // Waits up to `timeoutMs` for the process to end, reading what it still
  // writes (kept for readLine); its exit status, or -1.
  int waitExit(int timeoutMs);

 private:
  pid_t pid_ = -1;
  int toEngine_ = -1;
  int fromEngine_ = -1;
  std::string pending_;
};

// Milliseconds of a steady clock.
long long nowMs();

}  // namespace zorva::testing
