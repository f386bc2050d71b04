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
    std::vector<Status> ends;  // of the first run, and of the second if there was one
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
       "Fail, then Pass: c:1 ocl:2 in repetition 1"},
      {Status::fail,
       {Status::pass, Status::fail},
       Status::flake,
       true,
       "Pass, then Fail: c:1 ocl:2 in repetition 1"},
      {{},
       {Status::crash, Status::fail},
       Status::flake,
       true,
       "Crash, then Fail: SIGSEGV before the first repetition"},
      {{}, {Status::fail, Status::fail}, Status::fail, false, "c:1 ocl:2 in repetition 1"},
      {{}, {Status::fail, Status::missing}, Status::fail, false, "c:1 ocl:2 in repetition 1"},
      // A known flake.
      {Status::flake, {Status::pass}, Status::pass, true, ""},
      {Status::flake, {Status::fail}, Status::flake, true, "c:1 ocl:2 in repetition 1"},
      {Status::flake, {Status::missing}, Status::missing, false, "interrupted"},
      // No results, and nothing passes against them.
      {Status::missing, {Status::pass}, Status::pass, true, ""},
      {Status::skip, {Status::pass}, Status::pass, true, ""},
      {Status::missing, {Status::missing}, Status::missing, true, "interrupted"},
      {Status::skip, {Status::fail}, Status::fail, false, "c:1 ocl:2 in repetition 1"},
  };
  for (const auto& c : cases) {
    Record record = MadeUp("add_union_scalar_1", c.ends.front());
    if (c.ends.size() > 1) record.again = {MadeUp("add_union_scalar_1", c.ends.back())};
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

TEST(Account, AddsUpOnlyIfEachRowIsThereOnce) {
  const auto account = [](const std::vector<std::string>& names) {
    std::vector<AccountedRow> rows;
    for (const std::string& name : names) rows.emplace_back().name = name;
    return rows;
  };
  EXPECT_TRUE(AddsUp(account({"b", "a"}), {"a", "b"}));
  EXPECT_FALSE(AddsUp(account({"a"}), {"a", "b"}));
  EXPECT_FALSE(AddsUp(account({"a", "a"}), {"a", "b"}));
  EXPECT_FALSE(AddsUp(account({"a", "b", "b"}), {"a", "b"}));
}

}  // namespace
}  // namespace diagnosis
