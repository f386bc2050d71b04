// How a row's outcomes in two runs compare, and how runs are laid side by side.

#include "diagnosis/views/compare.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "harness/rows.h"

namespace diagnosis {
namespace {

// What a row came to, in short.
struct Came {
  Status status;
  Opinion::Verdict verdict = Opinion::Verdict::unseen;
  int wrongLanes = 0;
  std::uint32_t ulps = 0;
  float answer = 1;
};

constexpr auto right = Opinion::Verdict::right;
constexpr auto wrong = Opinion::Verdict::wrong;

struct Held {
  Record record;
  RowResult outcome;
};

Held Holding(const Came& came) {
  Held held;
  held.record.row = "add_union_arrays_1";
  held.outcome.status = came.status;
  held.outcome.opinion.verdict = came.verdict;
  held.outcome.opinion.greatestUlps = came.ulps;
  for (int lane = 0; lane < came.wrongLanes; ++lane)
    held.outcome.opinion.wrong.push_back({1, 0, lane, came.answer, 2, came.ulps});
  held.outcome.category = CategoryOf(came.status, came.verdict);
  return held;
}

Comparison Between(Held before, Held after) {
  before.outcome.record = &before.record;
  after.outcome.record = &after.record;
  return ComparisonOf(before.outcome, after.outcome);
}

TEST(Compare, OrdersWhatARowMayComeTo) {
  const Came fromTheBest[] = {
      {Status::pass, right},       {Status::pass},
      {Status::fail, right},       {Status::pass, wrong, 1, 3},
      {Status::fail, wrong, 1, 3}, {Status::fail, wrong, 1, 4},
      {Status::fail, wrong, 2, 3}, {Status::error},
      {Status::buildError},        {Status::crash},
      {Status::missing},
  };
  for (std::size_t i = 0; i < std::size(fromTheBest); ++i) {
    for (std::size_t j = 0; j < std::size(fromTheBest); ++j) {
      SCOPED_TRACE(std::to_string(i) + " and " + std::to_string(j));
      const Comparison expected = j < i   ? Comparison::better
                                  : j > i ? Comparison::worse
                                          : Comparison::same;
      EXPECT_EQ(Between(Holding(fromTheBest[i]), Holding(fromTheBest[j])), expected);
    }
  }
}

TEST(Compare, TellsADifferenceThatIsNeitherBetterNorWorse) {
  const struct {
    const char* what;
    Came before;
    Came after;
    Comparison comparison;
  } cases[] = {
      {"a right answer less near",
       {Status::pass, right, 0, 2},
       {Status::pass, right, 0, 9},
       Comparison::otherwise},
      {"another wrong answer",
       {Status::fail, wrong, 1, 3, 1},
       {Status::fail, wrong, 1, 3, 3},
       Comparison::otherwise},
      {"a crash in place of a timeout", {Status::crash}, {Status::timeout}, Comparison::otherwise},
      {"no longer asked for", {Status::pass, right}, {Status::skip}, Comparison::oneOnly},
      {"asked for again", {Status::skip}, {Status::crash}, Comparison::oneOnly},
      {"never asked for", {Status::skip}, {Status::skip}, Comparison::same},
  };
  for (const auto& one : cases)
    EXPECT_EQ(Between(Holding(one.before), Holding(one.after)), one.comparison) << one.what;
}

TEST(Compare, SetsOutcomesOnOtherDataApart) {
  // Ten unions of 32 bytes, of which the row stores the first sixteen.
  const auto unions = [](std::size_t at, std::uint8_t byte) {
    Bytes bytes(320);
    bytes[at] = byte;
    return bytes;
  };
  const auto with = [](const Came& came, std::uint32_t seed, const std::vector<Bytes>& inputs) {
    Held held = Holding(came);
    held.record.seed = seed;
    for (const Bytes& input : inputs) held.record.repetitions.emplace_back().inputB = input;
    return held;
  };
  const Bytes one = unions(0, 1);
  const Bytes other = unions(0, 2);
  const Came passed{Status::pass, right};
  const Came failed{Status::fail, wrong, 1, 3};
  const Came unbuilt{Status::buildError};
  const Came crashed{Status::crash};
  // As far as both came, the bytes decide; where neither shows any, the seed.
  EXPECT_EQ(Between(with(passed, 1, {one, other}), with(failed, 1, {one})), Comparison::worse);
  EXPECT_EQ(Between(with(passed, 1, {one, one}), with(failed, 1, {one, other})),
            Comparison::otherData);
  EXPECT_EQ(Between(with(passed, 1, {one}), with(passed, 2, {one})), Comparison::same);
  EXPECT_EQ(Between(with(passed, 1, {one}), with(crashed, 1, {})), Comparison::worse);
  EXPECT_EQ(Between(with(passed, 1, {one}), with(crashed, 2, {})), Comparison::otherData);
  // No data reaches a build.
  EXPECT_EQ(Between(with(passed, 1, {one}), with(unbuilt, 2, {})), Comparison::worse);
  // The last byte that is stored, and the first one that is not.
  const Bytes none = unions(0, 0);
  EXPECT_EQ(Between(with(passed, 1, {none}), with(failed, 1, {unions(9 * 32 + 15, 1)})),
            Comparison::otherData);
  EXPECT_EQ(Between(with(passed, 1, {none}), with(failed, 1, {unions(9 * 32 + 16, 1)})),
            Comparison::worse);
}

// A record of a row that passed, as far as a status goes.
Record Passed(const char* row) {
  Record record;
  record.row = row;
  record.ending = {Ending::Kind::returned, 1, ""};
  return record;
}

TEST(Compare, LaysRunsSideBySideInTheMatrixsOrder) {
  Record crashed = Passed("copy_union_scalar_1");
  crashed.ending = {Ending::Kind::signalled, 11, ""};
  std::vector<NamedRun> runs(3);
  runs[0].run.records = {Passed("copy_union_scalar_1"), Passed("power_union_arrays_1")};
  runs[1].run.records = {Passed("add_union_arrays_1"), Passed("copy_union_scalar_1")};
  runs[2].run.records = {crashed};
  const std::vector<ComparedRow> rows = Compare(runs);
  ASSERT_EQ(rows.size(), 3U);
  EXPECT_EQ(rows[0].name, "add_union_arrays_1");
  EXPECT_EQ(rows[0].comparison, Comparison::oneOnly);
  EXPECT_FALSE(rows[0].outcomes[0].has_value());
  EXPECT_TRUE(rows[0].outcomes[1].has_value());
  EXPECT_EQ(rows[1].name, "copy_union_scalar_1");
  EXPECT_EQ(rows[1].comparison, Comparison::worse);
  EXPECT_EQ(rows[2].comparison, Comparison::oneOnly);
}

TEST(Compare, PrintsWhatDiffersAlone) {
  std::vector<NamedRun> runs(2);
  runs[0].name = "old";
  runs[1].name = "new\x1B[1m";
  runs[0].run.records = {Passed("add_union_arrays_1"), Passed("copy_union_scalar_1")};
  runs[1].run.records = runs[0].run.records;
  runs[1].run.records[1].ending = {Ending::Kind::signalled, 11, ""};
  EXPECT_EQ(DifferencesOf(runs, Compare(runs)),
            "A  old: , driver , \n"
            "B  new\\x1B[1m: , driver , \n"
            "\n"
            "Worse: 1\n"
            "  copy_union_scalar_1         Pass, unseen -> Crash: SIGSEGV before the first "
            "repetition\n"
            "\n"
            "1 worse, 1 the same\n");
}

// Rows of which one of the runs tells nothing: few by name, many by their number.
TEST(Compare, CountsWhatARunTellsNothingOf) {
  const auto differences = [](std::size_t count, Ending::Kind kind) {
    std::vector<NamedRun> runs(2);
    runs[0].name = "results";
    runs[1].name = "results";
    runs[0].run.records = {Passed("copy_union_scalar_1")};
    runs[1].run.records = runs[0].run.records;
    for (std::size_t i = 0; i < count; ++i) {
      runs[0].run.records.push_back(Passed(std::string(rows[i].name).c_str()));
      if (kind == Ending::Kind::returned) continue;
      Record& other = runs[1].run.records.emplace_back(runs[0].run.records.back());
      other.ending = {kind, 0, "interrupted"};
    }
    const std::string text = DifferencesOf(runs, Compare(runs));
    return text.substr(text.find("\n\n") + 2);
  };
  EXPECT_EQ(differences(42, Ending::Kind::returned),
            "In one run only: 42\n"
            "  42 rows                     not selected in B\n"
            "\n42 in one run only, 1 the same\n");
  EXPECT_EQ(differences(42, Ending::Kind::notRun),
            "Worse: 42\n"
            "  42 rows                     not reached in B\n"
            "\n42 worse, 1 the same\n");
  EXPECT_EQ(differences(42, Ending::Kind::skipped),
            "In one run only: 42\n"
            "  42 rows                     skipped in B\n"
            "\n42 in one run only, 1 the same\n");
  EXPECT_EQ(differences(1, Ending::Kind::returned),
            "In one run only: 1\n"
            "  add_union_arrays_1          Pass, unseen -> not selected\n"
            "\n1 in one run only, 1 the same\n");
}

}  // namespace
}  // namespace diagnosis
