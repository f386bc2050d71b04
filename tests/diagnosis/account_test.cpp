// What a row comes to against what was expected of it, and the ledger of a run.

#include "diagnosis/verdict/account.h"

#include <gtest/gtest.h>

#include <csignal>
#include <optional>
#include <string>
#include <vector>

#include "made_up_records.h"

namespace diagnosis {
namespace {

TEST(Account, HoldsARowAgainstItsBaseline) {
  struct {
    std::optional<Status> expected;
    std::vector<Status> ends;  // of the first run, and of the others if there were any
    Status status;
    bool asExpected;
    const char* detail;
  } const cases[] = {
      {{}, {Status::pass}, Status::pass, true, ""},
      {{}, {Status::fail}, Status::fail, false, "c:1 ocl:2 in repetition 1"},
      {{}, {Status::missing}, Status::missing, false, "interrupted"},
      {{}, {Status::skip}, Status::skip, true, "skipped by list:1"},
      {Status::pass, {Status::crash}, Status::crash, false, "SIGSEGV before the first repetition"},
      {Status::fail, {Status::fail}, Status::expectedFail, true, "c:1 ocl:2 in repetition 1"},
      {Status::fail, {Status::pass, Status::pass}, Status::unexpectedPass, false, "expected Fail"},
      {Status::fail,
       {Status::crash, Status::crash},
       Status::crash,
       false,
       "SIGSEGV before the first repetition (expected Fail)"},
      {Status::crash, {Status::crash}, Status::crash, true, "SIGSEGV before the first repetition"},
      {Status::crash, {Status::pass}, Status::unexpectedPass, false, "expected Crash"},
      {Status::timeout, {Status::skip}, Status::skip, true, "skipped by list:1"},
      // Run once more.
      {{},
       {Status::fail, Status::pass},
       Status::flake,
       true,
       "1 of 2 wrong, two different answers: c:1 ocl:2 in repetition 1"},
      {Status::fail,
       {Status::pass, Status::fail},
       Status::flake,
       true,
       "1 of 2 wrong, two different answers: c:1 ocl:2 in repetition 1"},
      {{},
       {Status::crash, Status::fail},
       Status::flake,
       true,
       "2 of 2 wrong, two different answers: SIGSEGV before the first repetition"},
      {{},
       {Status::pass, Status::fail, Status::missing, Status::timeout, Status::pass},
       Status::flake,
       true,
       "2 of 4 wrong, three different answers: c:1 ocl:2 in repetition 1"},
      {{}, {Status::fail, Status::fail}, Status::fail, false, "c:1 ocl:2 in repetition 1"},
      {{}, {Status::fail, Status::missing}, Status::fail, false, "c:1 ocl:2 in repetition 1"},
      // A known flake.
      {Status::flake, {Status::pass}, Status::pass, true, ""},
      {Status::flake, {Status::fail}, Status::flake, true, "c:1 ocl:2 in repetition 1"},
      {Status::flake,
       {Status::pass, Status::fail},
       Status::flake,
       true,
       "1 of 2 wrong, two different answers: c:1 ocl:2 in repetition 1"},
      {Status::flake, {Status::missing}, Status::missing, false, "interrupted"},
      // No results, and nothing passes against them.
      {Status::missing, {Status::pass}, Status::pass, true, ""},
      {Status::skip, {Status::pass}, Status::pass, true, ""},
      {Status::missing, {Status::missing}, Status::missing, true, "interrupted"},
      {Status::skip, {Status::fail}, Status::fail, false, "c:1 ocl:2 in repetition 1"},
  };
  for (const auto& c : cases) {
    Record record = MadeUp("add_union_scalar_1", c.ends.front());
    for (std::size_t i = 1; i < c.ends.size(); ++i)
      record.again.push_back(MadeUp("add_union_scalar_1", c.ends[i]));
    Baseline baseline;
    if (c.expected) baseline["add_union_scalar_1"] = *c.expected;
    std::string what = "expected " + std::string(c.expected ? NameOf(*c.expected) : "nothing");
    for (const Status end : c.ends) what += std::string(", ended ") + std::string(NameOf(end));

    Expectations expectations{baseline};
    const RowResult row = ResultOf(record, {}, expectations);
    EXPECT_EQ(NameOf(row.verdict), NameOf(c.status)) << what;
    EXPECT_EQ(row.asExpected, c.asExpected) << what;
    EXPECT_EQ(row.detail, c.detail) << what;

    const bool isNewFlake = c.status == Status::flake && c.expected != Status::flake;
    expectations.flakesFail = true;
    EXPECT_EQ(ResultOf(record, {}, expectations).asExpected, c.asExpected && !isNewFlake) << what;

    // What a run says of its rows is what the next run expects, if they end alike.
    if (c.ends.size() > 1 && c.status == Status::flake) continue;
    baseline["add_union_scalar_1"] = ToExpect(row.verdict);
    EXPECT_TRUE(ResultOf(record, {}, {baseline}).asExpected) << what;
  }
}

// A row that came to something else in a context shared with others: that of its own counts first.
TEST(Account, SaysWhereASharedContextChangesARow) {
  const struct {
    Status own, shared, verdict;
    std::string detail;
  } cases[] = {
      {Status::pass, Status::fail, Status::flake,
       "Fail in a shared context, Pass in one of its own: 1 of 2 wrong, two different answers: "
       "c:1 ocl:2 in repetition 1"},
      {Status::crash, Status::error, Status::flake,
       "Error in a shared context, Crash in one of its own: 2 of 2 wrong, two different answers: "
       "SIGSEGV before the first repetition"},
      {Status::fail, Status::fail, Status::fail,
       "Fail in a shared context, Fail in one of its own: c:1 ocl:2 in repetition 1"},
  };
  for (const auto& c : cases) {
    Record record = MadeUp("add_union_scalar_1", c.own);
    record.inShared = {MadeUp("add_union_scalar_1", c.shared)};
    const RowResult row = ResultOf(record, {}, {});
    EXPECT_EQ(NameOf(row.status), NameOf(c.own));
    EXPECT_EQ(NameOf(row.verdict), NameOf(c.verdict)) << row.detail;
    EXPECT_EQ(row.detail, c.detail);
  }
}

// Rows of one operation, so many of each verdict, against a baseline that expects what is named.
TEST(Account, SaysInOneSentenceWhatARunComesTo) {
  struct {
    std::vector<std::pair<Status, std::optional<Status>>> rows;  // how it ended, what was expected
    const char* sentence;
  } const cases[] = {
      {{{Status::pass, {}}}, "The row passed."},
      {{{Status::pass, {}}, {Status::pass, {}}}, "Both rows passed."},
      {{{Status::pass, {}}, {Status::pass, {}}, {Status::pass, {}}}, "All 3 rows passed."},
      {{{Status::fail, {}}}, "The row did not pass."},
      {{{Status::fail, {}}, {Status::skip, {}}}, "1 of 2 rows did not pass."},
      {{{Status::pass, {}}, {Status::skip, {}}}, "Both rows ended as expected."},
      {{{Status::pass, Status::fail}}, "The row did not end as expected: it passed."},
      {{{Status::pass, Status::fail}, {Status::pass, {}}, {Status::pass, Status::crash}},
       "2 of 3 rows did not end as expected (2 passed)."},
      {{{Status::fail, Status::fail}, {Status::crash, {}}}, "1 of 2 rows did not end as expected."},
      {{{Status::fail, Status::fail}, {Status::fail, Status::flake}, {Status::pass, {}}},
       "All 3 rows ended as expected, but for 1 flake."},
      {{{Status::missing, {}}, {Status::pass, {}}, {Status::missing, {}}},
       "2 of 3 rows did not pass; incomplete: 1 of 3 rows."},
      {{{Status::missing, Status::missing}}, "The row ended as expected; incomplete: 0 of 1 row."},
  };
  for (const auto& c : cases) {
    std::vector<Record> records;
    Baseline baseline;
    for (const auto& [status, expected] : c.rows) {
      const std::string name = "add_union_scalar_" + std::to_string(records.size() + 1);
      records.push_back(MadeUp(name, status));
      if (expected) baseline[name] = *expected;
    }
    std::vector<RowResult> results;
    for (const Record& record : records) results.push_back(ResultOf(record, {}, {baseline}));
    EXPECT_EQ(SentenceOf(TotalsOf(results)), c.sentence);
  }
}

// The runs of two rows, each of which was to be run three times.
TEST(Account, CountsRunsThatWereNotMade) {
  using Runs = std::vector<Status>;
  const Status pass = Status::pass;
  const Status missing = Status::missing;
  struct {
    Runs one;
    Runs other;
    const char* sentence;
  } const cases[] = {
      {{pass, pass, pass}, {pass, pass, pass}, "Both rows passed."},
      {{pass, pass, pass}, {pass, pass}, "Both rows passed; incomplete: 5 of 6 runs."},
      {{pass, missing, missing}, {pass, pass}, "Both rows passed; incomplete: 3 of 6 runs."},
      {{pass}, {missing}, "1 of 2 rows did not pass; incomplete: 1 of 2 rows and 1 of 6 runs."},
      {{pass, pass, pass}, {missing}, "1 of 2 rows did not pass; incomplete: 1 of 2 rows."},
      {{pass}, {Status::skip}, "Both rows ended as expected; incomplete: 1 of 3 runs."},
      {{pass, pass, pass}, {Status::skip}, "Both rows ended as expected."},
  };
  for (const auto& c : cases) {
    std::vector<Record> records;
    for (const Runs& runs : {c.one, c.other}) {
      const std::string name = "add_union_scalar_" + std::to_string(records.size() + 1);
      Record& record = records.emplace_back(MadeUp(name, runs.front()));
      for (std::size_t i = 1; i < runs.size(); ++i) record.again.push_back(MadeUp(name, runs[i]));
    }
    std::vector<RowResult> results;
    for (const Record& record : records) results.push_back(ResultOf(record, {}, {}));
    EXPECT_EQ(SentenceOf(TotalsOf(results, 3)), c.sentence);
  }
}

}  // namespace
}  // namespace diagnosis
