#pragma once
// An engine run as a child process: "/bin/sh -c COMMAND" with its standard
// input and output on pipes. Reading never blocks past a deadline and the
// whole process group is killed when the object goes, so a hung or runaway
// engine can never hold up the match.
#include <sys/types.h>

#include <chrono>
#include <string>

namespace zorva::referee {

using Clock = std::chrono::steady_clock;

class EngineProcess {
 public:
  EngineProcess() = default;
  ~EngineProcess();
  EngineProcess(const EngineProcess&) = delete;
  EngineProcess& operator=(const EngineProcess&) = delete;

  // Starts the command in its own process group. Standard error goes to the
  // tool's own when `keepStderr`, else to /dev/null. False, with the reason in
  // `error`, when the shell could not be started.
  bool start(const std::string& command, bool keepStderr, std::string& error);

  // Writes one line and a line feed. False when the engine no longer reads
  // (its input is closed, or it has not taken a full pipe within a second).
  bool send(const std::string& line);

  enum class Read { Line, Timeout, Closed };
  // Next line of output without its line end ("\n" or "\r\n"); waits until
  // the deadline at most. Closed once the output ended and every line is read.
  Read readLine(std::string& line, Clock::time_point deadline);

  // Waits until the deadline for the process to exit, then kills its group.
  // Returns a description of how it ended ("exit 0", "signal 9", ...).
  std::string finish(Clock::time_point deadline);

  bool running() const { return pid_ > 0; }

 private:
  bool takeLine(std::string& line);
  void closeFds();

  pid_t pid_ = -1;
  int in_ = -1;   // engine's standard input, our write end
  int out_ = -1;  // engine's standard output, our read end
  bool eof_ = false;
  std::string buffer_;
};

}  // namespace zorva::referee
