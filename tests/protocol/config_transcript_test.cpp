// "config.c" beside the program: a copy of the engine in a folder of its own
// runs with a script there.
#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "protocol/engine_process.h"

namespace zorva::testing {
namespace {

namespace fs = std::filesystem;

class ConfigTranscript : public ::testing::Test {
 protected:
  void SetUp() override {
    folder = fs::temp_directory_path() / ("zorva-config-" + std::to_string(getpid()) + "-" +
                                          ::testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::create_directories(folder);
    fs::copy_file(ZORVA_BINARY, folder / "zorva", fs::copy_options::overwrite_existing);
  }
  void TearDown() override { fs::remove_all(folder); }
  EngineRun run(const std::string& script, const std::string& input) {
    std::ofstream(folder / "config.c") << script;
    return runEngine(input, 120, (folder / "zorva").string());
  }
  fs::path folder;
};

TEST_F(ConfigTranscript, AnErrorEndsTheProgramWithOneLine) {
  const EngineRun r = run("info_hash_size = 3;\nint x = 5 $;\n", "ABOUT\n");
  EXPECT_EQ(r.exitCode, 1);
  EXPECT_EQ(r.lines, (std::vector<std::string>{"ERROR (config) Unexpected symbol $ at line 2, column 11"}));
  const EngineRun loop = run("while (1) {}\n", "ABOUT\n");
  EXPECT_EQ(loop.exitCode, 1);
  ASSERT_EQ(loop.lines.size(), 1u);
  EXPECT_EQ(loop.lines[0].rfind("ERROR (config) ", 0), 0u);
}

TEST_F(ConfigTranscript, SettingsTakeEffect) {
  // The script turns the database on: it is loaded at start and written at END.
  const EngineRun r = run("int on = 1;\ninfo_usedatabase = on;\n",
                          "START 15\nzvedittvddatabase 2 0 7 0\n7,7\nDONE\nEND\n");
  EXPECT_EQ(r.exitCode, 0);
  EXPECT_EQ(r.lines.back(), "MESSAGE DATABASE ONE -1 7 0");
  EXPECT_TRUE(fs::exists(folder / "zorva.db"));
}

TEST_F(ConfigTranscript, BenchmarkRunsWithoutInput) {
  const EngineRun r = run("info_benchmark = 1;\ninfo_max_depth = 2;\n", "");
  EXPECT_EQ(r.exitCode, 0);
  int moves = 0;
  for (const std::string& line : r.lines) moves += line.find(',') != std::string::npos && line[0] != 'M';
  EXPECT_EQ(moves, 18) << "three openings on two sizes under three rules";
}

// The value the engine reports for the same one-ply search, with and without
// a learning file that makes every shape worth the same.
TEST_F(ConfigTranscript, LearningFileIsReadOnlyWhenAsked) {
  std::ofstream learning(folder / "learning.txt");
  for (int i = 0; i < 3876; ++i) learning << "100\n";
  learning.close();
  const std::string turn = "INFO max_node -1\nINFO max_depth 1\nSTART 15\nTURN 7,7\nEND\n";
  // The last field of the summary line: the value and its label.
  const auto value = [](const EngineRun& r) {
    for (const std::string& line : r.lines)
      if (line.find(" | ") != std::string::npos) return line.substr(line.rfind(" | ") + 3);
    return std::string("no summary");
  };
  const std::string plain = value(run("info_learning = 0;\n", turn));
  EXPECT_NE(plain, "no summary");
  EXPECT_NE(plain, value(run("info_learning = 1;\n", turn)));
  fs::remove(folder / "learning.txt");
  EXPECT_EQ(value(run("info_learning = 1;\n", turn)), plain) << "a missing file leaves the built-in values";
}

}  // namespace
}  // namespace zorva::testing
