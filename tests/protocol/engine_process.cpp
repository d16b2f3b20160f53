#include "protocol/engine_process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <thread>

namespace zorva::testing {

namespace {

std::string tempPath(const char* tag) {
  static int counter = 0;
  return "/tmp/zorva-e2e-" + std::to_string(getpid()) + "-" + std::to_string(counter++) + "-" + tag;
}

std::string slurp(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

}  // namespace

std::vector<std::string> splitLines(const std::string& text) {
  std::vector<std::string> lines;
  size_t start = 0;
  while (start < text.size()) {
    const size_t end = text.find('\n', start);
    if (end == std::string::npos) {
      lines.push_back(text.substr(start));
      break;
    }
    lines.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return lines;
}

EngineRun runEngine(const std::string& input, int timeoutSeconds, const std::string& binary) {
  const std::string inPath = tempPath("in"), outPath = tempPath("out");
  std::ofstream(inPath, std::ios::binary) << input;
  EngineRun run;
  const pid_t pid = fork();
  if (pid == 0) {
    const int in = open(inPath.c_str(), O_RDONLY);
    const int out = open(outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    dup2(in, STDIN_FILENO);
    dup2(out, STDOUT_FILENO);
    execl(binary.c_str(), binary.c_str(), static_cast<char*>(nullptr));
    _exit(127);
  }
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(timeoutSeconds);
  int status = 0;
  while (waitpid(pid, &status, WNOHANG) == 0) {
    if (std::chrono::steady_clock::now() > deadline) {
      kill(pid, SIGKILL);
      waitpid(pid, &status, 0);
      run.timedOut = true;
      break;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  if (!run.timedOut && WIFEXITED(status)) run.exitCode = WEXITSTATUS(status);
  run.lines = splitLines(slurp(outPath));
  std::remove(inPath.c_str());
  std::remove(outPath.c_str());
  return run;
}

}  // namespace zorva::testing
