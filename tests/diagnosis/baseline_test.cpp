// What people write by hand: baselines, lists of skips, names and globs of rows.

#include "diagnosis/verdict/baseline.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>

#include "common/text/bad_use.h"
#include "diagnosis/record/select.h"
#include "harness/rows.h"

namespace diagnosis {
namespace {

class TextFile : public testing::Test {
 protected:
  ~TextFile() override { std::remove(path.c_str()); }

  void Write(const std::string& text) const { std::ofstream(path, std::ios::binary) << text; }

  // What reading the file is refused with, without the path; empty if it is not.
  template <class Read>
  std::string Refusal(Read read) const {
    try {
      read(path);
    } catch (const text::BadUse& refusal) {
      const std::string line = refusal.what();
      const std::size_t position = line.find(path);
      EXPECT_NE(position, std::string::npos) << line;
      return line.substr(0, position) + line.substr(position + path.size());
    }
    return "";
  }

  std::string path = testing::TempDir() + "baseline_test." + std::to_string(getpid());
};

TEST_F(TextFile, ABaselineGivesExpectedStatusesByRow) {
  Write(
      "test,status\n"
      "# what our driver is known for\n"
      "add_union_scalar_1,Fail\n"
      "\n"
      "  multiply_union_vector3_6 , Crash  # since 1.2\r\n"
      "copy_union_arrays_1,ExpectedFail\n"
      "power_union_arrays_1,Flake");
  EXPECT_EQ(ReadBaseline(path), (Baseline{{"add_union_scalar_1", Status::fail},
                                          {"multiply_union_vector3_6", Status::crash},
                                          {"copy_union_arrays_1", Status::fail},
                                          {"power_union_arrays_1", Status::flake}}));
  EXPECT_EQ(ReadBaseline("/dev/null"), Baseline{});
}

TEST_F(TextFile, ABaselineIsRefusedWithTheLineThatIsWrong) {
  struct {
    const char* text;
    const char* refusal;
  } const cases[] = {
      {"add_union_scalar_1,Fail\nadd_union_scalar_1,Fail\n",
       ":2: add_union_scalar_1 is named twice"},
      {"\nadd_union_scalar_7,Fail\n", ":2: no row is called 'add_union_scalar_7'"},
      {"add_*,Fail\n", ":1: no row is called 'add_*'"},
      {"add_union_scalar_1,fail\n", ":1: 'fail' is no status to expect"},
      {"add_union_scalar_1,UnexpectedPass\n", ":1: 'UnexpectedPass' is no status to expect"},
      {"add_union_scalar_1,\n", ":1: '' is no status to expect"},
      {"add_union_scalar_1\n", ":1: 'add_union_scalar_1' is not of the form test,status"},
      {"test,status,seconds\n", ":1: 'test,status,seconds' is not of the form test,status"},
      {"add_union_scalar_1,Fail\ntest,status\n", ":2: no row is called 'test'"},
      {"\x7F\x45LF\x01,Fail\n", ":1: no row is called '\\x7FELF\\x01'"},
  };
  for (const auto& c : cases) {
    Write(c.text);
    EXPECT_EQ(Refusal(ReadBaseline), c.refusal);
  }
  std::remove(path.c_str());
  EXPECT_EQ(Refusal(ReadBaseline), "cannot read : No such file or directory");
  EXPECT_THROW(ReadBaseline("/"), text::BadUse);
}

TEST_F(TextFile, AListOfSkipsTakesGlobs) {
  Write("# none of these\nadd_union_arrays_?\npower_union_vector3_4 # nor this\n");
  const Skips skips = ReadSkips(path);
  EXPECT_EQ(skips.size(), 7U);
  EXPECT_EQ(skips.at("add_union_arrays_6"), path + ":2");
  EXPECT_EQ(skips.at("power_union_vector3_4"), path + ":3");
  Write("add_union_arrays_1\nsub_*\n");
  EXPECT_EQ(Refusal(ReadSkips), ":2: no row matches 'sub_*'");
}

TEST(Select, TakesNamesAndGlobsInTheOrderOfTheMatrix) {
  EXPECT_EQ(Select({}).size(), 210U);
  EXPECT_EQ(Select({"*_vector3_?"}).size(), 30U);
  EXPECT_EQ(Select({"multiply_*"}).size(), 42U);
  EXPECT_EQ(Select({"add_union_arrays_3", "add_union_arrays_[12]", "add_union_arrays_3"}),
            (std::vector<std::size_t>{0, 1, 2}));
  EXPECT_EQ(rows[RowCalled("power_union_vector8_6")].name, "power_union_vector8_6");
  EXPECT_THROW(Select({"add_*", "nothing"}), text::BadUse);
  EXPECT_THROW(Select({""}), text::BadUse);
  EXPECT_THROW(RowCalled("add_*"), text::BadUse);
}

}  // namespace
}  // namespace diagnosis
