// Points the plug-in's data folder at a fresh temporary folder for the whole test binary, so that
// no test reads or writes the learned controllers of the machine it runs on. The data folder is
// fixed on its first use, so this must happen before any test creates an instance.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <string>

namespace {

class TemporaryDataFolder : public ::testing::Environment {
 public:
  void SetUp() override {
    std::string pattern = ::testing::TempDir() + "ziv-data-XXXXXX";
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    folder_ = pattern;
    setenv("XDG_DATA_HOME", folder_.c_str(), 1);
  }
  void TearDown() override {
    std::error_code ignored;
    if (!folder_.empty()) std::filesystem::remove_all(folder_, ignored);
  }

 private:
  std::string folder_;
};

[[maybe_unused]] ::testing::Environment* const gDataFolder =
    ::testing::AddGlobalTestEnvironment(new TemporaryDataFolder);

}  // namespace
