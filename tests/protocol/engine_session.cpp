#include "protocol/engine_session.h"

#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

namespace zorva::testing {

long long nowMs() {
  using namespace std::chrono;
  return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

EngineSession::EngineSession(const std::string& binary) {
  int in[2], out[2];
  if (pipe(in) != 0 || pipe(out) != 0) return;
  pid_ = fork();
  if (pid_ == 0) {
    dup2(in[0], STDIN_FILENO);
    dup2(out[1], STDOUT_FILENO);
    close(in[1]);
    close(out[0]);
    execl(binary.c_str(), binary.c_str(), static_cast<char*>(nullptr));
    _exit(127);
  }
  close(in[0]);
  close(out[1]);
  toEngine_ = in[1];
  fromEngine_ = out[0];
}

EngineSession::~EngineSession() {
  if (toEngine_ >= 0) close(toEngine_);
  if (pid_ > 0 && waitExit(2000) == -1) {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
  if (fromEngine_ >= 0) close(fromEngine_);
}

void EngineSession::send(const std::string& line) {
  const std::string text = line + "\n";
  if (write(toEngine_, text.data(), text.size()) < 0) return;
}

std::optional<std::string> EngineSession::readLine(int timeoutMs) {
  const long long deadline = nowMs() + timeoutMs;
  for (;;) {
    const size_t end = pending_.find('\n');
    if (end != std::string::npos) {
      std::string line = pending_.substr(0, end);
      pending_.erase(0, end + 1);
      return line;
    }
    const long long left = deadline - nowMs();
    if (left <= 0) return std::nullopt;
    pollfd fd{fromEngine_, POLLIN, 0};
    if (poll(&fd, 1, int(left)) <= 0) continue;
    char buffer[4096];
    const ssize_t n = read(fromEngine_, buffer, sizeof buffer);
    if (n <= 0) return std::nullopt;
    pending_.append(buffer, size_t(n));
  }
}

std::optional<std::string> EngineSession::readAnswer(int timeoutMs) {
  const long long deadline = nowMs() + timeoutMs;
  while (std::optional<std::string> line = readLine(int(deadline - nowMs())))
    if (line->rfind("MESSAGE", 0) != 0) return line;
  return std::nullopt;
}

std::vector<std::string> EngineSession::readTurn(int timeoutMs) {
  std::vector<std::string> lines;
  while (std::optional<std::string> line = readLine(timeoutMs)) {
    lines.push_back(*line);
    if (line->rfind("MESSAGE", 0) != 0) break;
  }
  return lines;
}

int EngineSession::waitExit(int timeoutMs) {
  const long long deadline = nowMs() + timeoutMs;
  int status = 0;
  bool open = true;
  while (waitpid(pid_, &status, WNOHANG) == 0) {
    if (nowMs() > deadline) return -1;
    // Keep reading, as a manager does: an engine blocked on a full pipe never ends.
    pollfd fd{fromEngine_, POLLIN, 0};
    if (!open || poll(&fd, 1, 1) <= 0) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
      continue;
    }
    char buffer[4096];
    const ssize_t n = read(fromEngine_, buffer, sizeof buffer);
    if (n > 0) pending_.append(buffer, size_t(n));
    open = n > 0;
  }
  pid_ = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace zorva::testing
