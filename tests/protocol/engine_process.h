#pragma once
// Runs the engine binary as a game manager would: a whole input script on
// standard input, standard output collected, with a time limit.
#include <string>
#include <vector>

namespace zorva::testing {

// What the engine says at START and to ABOUT.
inline const std::string kGreeting = "MESSAGE Deep Zorva 0.1.0 :-)";
inline const std::string kAbout =
    "name=\"Zorva\", author=\"The Zorva developers\", version=\"0.1.0\", country=\"International\", www=\"n/a\"";

struct EngineRun {
  std::vector<std::string> lines;  // standard output, split at line feeds
  int exitCode = -1;               // -1 when the engine was killed or crashed
  bool timedOut = false;
};

// Runs `binary` (the engine under test unless given) on `input`.
EngineRun runEngine(const std::string& input, int timeoutSeconds = 60, const std::string& binary = ZORVA_BINARY);

// Splits text into lines, keeping an unterminated last line.
std::vector<std::string> splitLines(const std::string& text);

}  // namespace zorva::testing
