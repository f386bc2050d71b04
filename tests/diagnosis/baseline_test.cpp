// What people write by hand: baselines, lists of skips, names and globs of rows.

#include "diagnosis/verdict/baseline.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "common/text/bad_use.h"
#include "diagnosis/record/select.h"
#include "diagnosis/verdict/baseline_update.h"
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
      {"sub_*,Fail\n", ":1: no row matches 'sub_*'"},
      {"!add\n", ":1: no row is called 'add'"},
      {"!add_*,Fail\n", ":1: no row matches 'add_*,Fail'"},
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

TEST_F(TextFile, OfTwoLinesOfABaselineTheLaterCounts) {
  Write(
      "add_union_scalar_[12],Fail\n"
      "add_union_scalar_1,Crash\n"
      "copy_union_vector*_1,Timeout\n"
      "!copy_union_vector[2348]_1  # mended\n"
      "copy_union_vector3_1,Pass\n");
  EXPECT_EQ(ReadBaseline(path), (Baseline{{"add_union_scalar_1", Status::crash},
                                          {"add_union_scalar_2", Status::fail},
                                          {"copy_union_vector16_1", Status::timeout}}));
}

TEST_F(TextFile, ABaselineChangesAsLittleAsCanBe) {
  const auto updated = [](const std::string& text,
                          const std::vector<std::pair<const char*, Status>>& ended) {
    std::vector<Record> records(ended.size());
    std::vector<RowResult> results(ended.size());
    for (std::size_t i = 0; i < ended.size(); ++i) {
      records[i].row = ended[i].first;
      results[i].record = &records[i];
      results[i].verdict = ended[i].second;
    }
    return Updated(text, results);
  };
  struct {
    const char* text;
    std::vector<std::pair<const char*, Status>> ended;
    const char* updated;
  } const cases[] = {
      // Nothing to change, whatever the form.
      {"test,status\r\n  add_union_scalar_1 , ExpectedFail  # ours\r\n",
       {{"add_union_scalar_1", Status::expectedFail}, {"add_union_scalar_2", Status::pass}},
       "test,status\r\n  add_union_scalar_1 , ExpectedFail  # ours\r\n"},
      // Another status on the row's own line.
      {"# a\nadd_union_scalar_1 , Fail  # b\r\n",
       {{"add_union_scalar_1", Status::crash}},
       "# a\nadd_union_scalar_1 , Crash  # b\r\n"},
      // A line that is needed no longer, and one whose comment stays.
      {"add_union_scalar_1,Fail\nadd_union_scalar_2,Fail # known\n# end",
       {{"add_union_scalar_1", Status::unexpectedPass}, {"add_union_scalar_2", Status::pass}},
       "add_union_scalar_2,Pass # known\n# end"},
      // New lines, behind a last one without an end.
      {"add_union_scalar_1,Fail",
       {{"add_union_scalar_1", Status::expectedFail},
        {"copy_union_scalar_1", Status::flake},
        {"copy_union_scalar_2", Status::fail}},
       "add_union_scalar_1,Fail\ncopy_union_scalar_1,Flake\ncopy_union_scalar_2,Fail\n"},
      // Rows of a glob, before and behind their own lines.
      {"add_union_scalar_*,Fail\n!add_union_scalar_3\n",
       {{"add_union_scalar_1", Status::pass},
        {"add_union_scalar_2", Status::expectedFail},
        {"add_union_scalar_3", Status::fail}},
       "add_union_scalar_*,Fail\nadd_union_scalar_1,Pass\n"},
      {"add_union_scalar_*,Fail  # all\n!add_union_scalar_3  # mended\n",
       {{"add_union_scalar_3", Status::fail}},
       "add_union_scalar_*,Fail  # all\n!add_union_scalar_3  # mended\nadd_union_scalar_3,Fail\n"},
      // All rows of a glob: it goes, or has another status.
      {"add_union_scalar_[12],Fail\n# end\n",
       {{"add_union_scalar_1", Status::pass}, {"add_union_scalar_2", Status::unexpectedPass}},
       "# end\n"},
      {"add_union_scalar_[12],Fail  # why\n",
       {{"add_union_scalar_1", Status::pass}, {"add_union_scalar_2", Status::pass}},
       "add_union_scalar_[12],Pass  # why\n"},
      {"!add_union_scalar_[12]  # why\n",
       {{"add_union_scalar_1", Status::crash}, {"add_union_scalar_2", Status::crash}},
       "add_union_scalar_[12],Crash  # why\n"},
      // Some rows of a glob that have a name in common, and one that has not.
      {"*_union_vector8_*,Fail\n",
       {{"add_union_vector8_1", Status::pass},
        {"add_union_vector8_2", Status::pass},
        {"add_union_vector8_3", Status::pass},
        {"add_union_vector8_4", Status::pass},
        {"add_union_vector8_5", Status::pass},
        {"add_union_vector8_6", Status::pass},
        {"copy_union_vector8_6", Status::crash}},
       "*_union_vector8_*,Fail\n!add_union_vector8_*\ncopy_union_vector8_6,Crash\n"},
      // A row's own line, with its comment, is moved behind the glob that has the last word.
      {"add_union_scalar_1,Crash  # known\nadd_union_scalar_*,Fail\n# end\n",
       {{"add_union_scalar_1", Status::timeout}},
       "add_union_scalar_*,Fail\n# end\nadd_union_scalar_1,Timeout  # known\n"},
      {"add_union_scalar_1,Crash\nadd_union_scalar_*,Fail\n",
       {{"add_union_scalar_1", Status::crash}},
       "add_union_scalar_*,Fail\nadd_union_scalar_1,Crash\n"},
      // What was not run says nothing.
      {"add_union_scalar_1,Fail\nadd_union_scalar_2,Fail\n",
       {{"add_union_scalar_1", Status::skip}, {"add_union_scalar_2", Status::missing}},
       "add_union_scalar_1,Fail\nadd_union_scalar_2,Fail\n"},
      {"", {{"add_union_scalar_1", Status::pass}}, ""},
  };
  for (const auto& c : cases) {
    const std::string text = updated(c.text, c.ended);
    EXPECT_EQ(text, c.updated);
    // And then there is nothing more to change.
    EXPECT_EQ(updated(text, c.ended), text);
  }
}

// Whatever stands there and whatever happened, the new baseline says what happened, leaves the rest
// and every comment alone, and is one that can be read.
TEST_F(TextFile, ABaselineThatWasChangedSaysWhatHappened) {
  std::mt19937 random(1);
  const auto one = [&random](const auto& list) { return list[random() % std::size(list)]; };
  constexpr const char* tests[] = {"add_union_*",
                                   "*_vector3_?",
                                   "copy_union_scalar_[1-4]",
                                   "*",
                                   "*_union_vector*_4",
                                   "add_union_scalar_1",
                                   "power_*_[46]",
                                   "add_*_1",
                                   "copy_union_scalar_2",
                                   "add_union_*_1",
                                   "*_scalar_1",
                                   "floor_union_vector3_4"};
  constexpr const char* ends[] = {"\n", "  # known\n", "\r\n"};
  constexpr Status wordsFor[] = {Status::pass, Status::fail, Status::crash};
  for (int i = 0; i < 300; ++i) {
    std::string before;
    std::set<std::string> named;
    for (auto left = random() % 6; left > 0; --left) {
      const std::string test = one(tests);
      if (!named.insert(test).second) continue;
      const bool isExcluded = random() % 4 == 0;
      before += isExcluded ? "!" + test : test + "," + std::string(NameOf(one(wordsFor)));
      before += one(ends);
    }
    Write(before);
    Baseline expected = ReadBaseline(path);
    std::vector<Record> records(std::size(rows));
    std::vector<RowResult> results;
    const auto changed = random() % 40;
    for (std::size_t row = 0; row < std::size(rows); ++row) {
      if (random() % 40 > changed) continue;
      records[row].row = rows[row].name;
      RowResult& result = results.emplace_back();
      result.record = &records[row];
      result.verdict = one(wordsFor);
      expected.erase(records[row].row);
      if (result.verdict != Status::pass) expected[records[row].row] = result.verdict;
    }
    const std::string after = Updated(before, results);
    Write(after);
    EXPECT_EQ(ReadBaseline(path), expected) << before << "became\n" << after;
    EXPECT_EQ(Updated(after, results), after);
    const auto comments = [](const std::string& text) { return std::ranges::count(text, '#'); };
    EXPECT_EQ(comments(after), comments(before)) << before << "became\n" << after;
  }
}

TEST_F(TextFile, AListOfSkipsTakesGlobs) {
  Write("# none of these\nadd_union_arrays_?\npower_union_vector3_4 # nor this\n");
  const Skips skips = ReadSkips(path);
  EXPECT_EQ(skips.size(), 7U);
  EXPECT_EQ(skips.at("add_union_arrays_6"), path + ":2");
  EXPECT_EQ(skips.at("power_union_vector3_4"), path + ":3");
  Write("power_*\n!power_union_vector*\n");
  EXPECT_EQ(ReadSkips(path).size(), 12U);
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
  EXPECT_EQ(Select({"!power_*"}).size(), 168U);
  EXPECT_EQ(Select({"add_*", "!*_[2-6]", "add_union_scalar_2", "!*_vector*"}),
            (std::vector<std::size_t>{0, 6, 7}));
  EXPECT_THROW(Select({"!nothing"}), text::BadUse);
  EXPECT_THROW(Select({"add_*", "!*"}), text::BadUse);
  EXPECT_THROW(Select({"add_*", "nothing"}), text::BadUse);
  EXPECT_THROW(Select({""}), text::BadUse);
  EXPECT_THROW(RowCalled("add_*"), text::BadUse);
}

}  // namespace
}  // namespace diagnosis
