#include "match/engine_process.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <mutex>
#include <thread>

extern char** environ;

namespace zorva::referee {

namespace {

// A write to an engine that has died must fail with EPIPE, not end the tool.
void ignoreSigpipe() {
  static std::once_flag once;
  std::call_once(once, [] { std::signal(SIGPIPE, SIG_IGN); });
}

int millisUntil(Clock::time_point deadline) {
  auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
  return left < 0 ? 0 : int(left);
}

std::string describeStatus(int status) {
  if (WIFEXITED(status)) return "exit " + std::to_string(WEXITSTATUS(status));
  if (WIFSIGNALED(status)) return "signal " + std::to_string(WTERMSIG(status));
  return "status " + std::to_string(status);
}

}  // namespace

EngineProcess::~EngineProcess() {
  if (running()) finish(Clock::now());
  closeFds();
}

void EngineProcess::closeFds() {
  if (in_ >= 0) close(in_);
  if (out_ >= 0) close(out_);
  in_ = out_ = -1;
}

bool EngineProcess::start(const std::string& command, bool keepStderr, std::string& error) {
  ignoreSigpipe();
  // Close-on-exec keeps these pipes out of the engines that other games start
  // at the same time; the dup2 of the spawn clears the flag on 0 and 1.
  int toChild[2], fromChild[2];
  if (pipe2(toChild, O_CLOEXEC) != 0) {
    error = std::string("pipe: ") + std::strerror(errno);
    return false;
  }
  if (pipe2(fromChild, O_CLOEXEC) != 0) {
    error = std::string("pipe: ") + std::strerror(errno);
    close(toChild[0]);
    close(toChild[1]);
    return false;
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, toChild[0], 0);
  posix_spawn_file_actions_adddup2(&actions, fromChild[1], 1);
  if (!keepStderr) posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);

  // Its own process group, so that one kill also reaches whatever the shell
  // started; SIGPIPE back to its default, which exec would otherwise keep
  // ignored.
  posix_spawnattr_t attr;
  posix_spawnattr_init(&attr);
  posix_spawnattr_setflags(&attr, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
  posix_spawnattr_setpgroup(&attr, 0);
  sigset_t set;
  sigemptyset(&set);
  posix_spawnattr_setsigmask(&attr, &set);
  sigaddset(&set, SIGPIPE);
  posix_spawnattr_setsigdefault(&attr, &set);

  std::string shell = "/bin/sh", dashC = "-c", cmd = command;
  char* argv[] = {shell.data(), dashC.data(), cmd.data(), nullptr};
  pid_t pid = -1;
  int rc = posix_spawn(&pid, "/bin/sh", &actions, &attr, argv, environ);
  posix_spawn_file_actions_destroy(&actions);
  posix_spawnattr_destroy(&attr);
  close(toChild[0]);
  close(fromChild[1]);
  if (rc != 0) {
    close(toChild[1]);
    close(fromChild[0]);
    error = std::string("cannot start /bin/sh: ") + std::strerror(rc);
    return false;
  }
  pid_ = pid;
  in_ = toChild[1];
  out_ = fromChild[0];
  fcntl(in_, F_SETFL, fcntl(in_, F_GETFL) | O_NONBLOCK);
  fcntl(out_, F_SETFL, fcntl(out_, F_GETFL) | O_NONBLOCK);
  eof_ = false;
  buffer_.clear();
  return true;
}

bool EngineProcess::send(const std::string& line) {
  if (in_ < 0) return false;
  std::string data = line + "\n";
  auto deadline = Clock::now() + std::chrono::seconds(1);
  size_t done = 0;
  while (done < data.size()) {
    ssize_t n = write(in_, data.data() + done, data.size() - done);
    if (n > 0) {
      done += size_t(n);
      continue;
    }
    if (n < 0 && errno == EINTR) continue;
    if (n < 0 && errno != EAGAIN && errno != EWOULDBLOCK) return false;
    pollfd p{in_, POLLOUT, 0};
    int wait = millisUntil(deadline);
    if (wait == 0 || poll(&p, 1, wait) == 0) return false;
  }
  return true;
}

bool EngineProcess::takeLine(std::string& line) {
  size_t nl = buffer_.find('\n');
  if (nl == std::string::npos) {
    // The last line may lack its line feed; hand it out once output ended.
    if (!eof_ || buffer_.empty()) return false;
    nl = buffer_.size();
  }
  line.assign(buffer_, 0, nl);
  buffer_.erase(0, nl < buffer_.size() ? nl + 1 : nl);
  if (!line.empty() && line.back() == '\r') line.pop_back();
  return true;
}

EngineProcess::Read EngineProcess::readLine(std::string& line, Clock::time_point deadline) {
  for (;;) {
    if (takeLine(line)) return Read::Line;
    if (eof_ || out_ < 0) return Read::Closed;
    char chunk[4096];
    ssize_t n = read(out_, chunk, sizeof chunk);
    if (n > 0) {
      buffer_.append(chunk, size_t(n));
      continue;
    }
    if (n == 0) {
      eof_ = true;
      continue;
    }
    if (errno == EINTR) continue;
    if (errno != EAGAIN && errno != EWOULDBLOCK) {
      eof_ = true;
      continue;
    }
    int wait = millisUntil(deadline);
    if (wait == 0) return Read::Timeout;
    pollfd p{out_, POLLIN, 0};
    poll(&p, 1, wait);
  }
}

std::string EngineProcess::finish(Clock::time_point deadline) {
  if (!running()) return "not running";
  if (in_ >= 0) {
    close(in_);
    in_ = -1;
  }
  // Wait without reaping, so that the group id stays ours until the kill
  // below has also reached any children the engine left behind.
  siginfo_t info{};
  for (;;) {
    info.si_pid = 0;
    int rc = waitid(P_PID, id_t(pid_), &info, WEXITED | WNOHANG | WNOWAIT);
    if (rc == 0 && info.si_pid == pid_) break;
    if (rc != 0 && errno != EINTR) break;
    if (Clock::now() >= deadline) break;
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  kill(-pid_, SIGKILL);
  int status = 0;
  while (waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
  }
  pid_ = -1;
  closeFds();
  return describeStatus(status);
}

}  // namespace zorva::referee
