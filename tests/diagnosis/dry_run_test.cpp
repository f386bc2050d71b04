// The table of what the rows do, against the rows themselves, run on no device, and against what
// the tests know of them; and the stream of random numbers that stands for rand's.

#include "tests/diagnosis/dry_run.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <set>
#include <sstream>
#include <stdexcept>

#include "diagnosis/capture/boundary.h"
#include "diagnosis/record/row_facts.h"
#include "tests/rows.h"

namespace diagnosis {
namespace {

TEST(RowFacts, AreWhatEveryRowDoes) {
  ASSERT_EQ(FactsOfRows().size(), std::size(rows));
  ASSERT_EQ(Rows().size(), std::size(rows));
  std::size_t draws = 0;
  std::set<std::string> texts;
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    const ::Row& row = Rows()[i];
    const RowFacts& facts = FactsOfRows()[i];
    SCOPED_TRACE(row.name);
    EXPECT_EQ(facts.row.name, row.name);
    EXPECT_EQ(FactsOf(row.name), &facts);
    EXPECT_EQ(facts.runLines, RunLines(row));
    EXPECT_EQ(facts.scheduled, row.operation != "power");
    EXPECT_EQ(facts.drawsBefore, draws);
    draws += static_cast<std::size_t>(Runs(row)) * static_cast<std::size_t>(DrawsPerRun(row));
    EXPECT_EQ(facts.drawsPerRepetition, static_cast<std::size_t>(DrawsPerRun(row)));

    const Profile profile = DryRun(rows[i]);
    EXPECT_EQ(KernelTextOf(facts.row), profile.source);
    EXPECT_EQ(facts.kernel, profile.kernel);
    EXPECT_EQ(facts.row.stride, profile.stride);
    EXPECT_EQ(facts.drawsPerRepetition, profile.drawsPerRepetition);
    EXPECT_EQ(facts.repetitions, profile.repetitions);
    EXPECT_EQ(facts.runLines, profile.runLines);
    EXPECT_EQ(facts.tolerance, profile.tolerance);
    texts.insert(profile.source);
  }
  EXPECT_EQ(texts.size(), std::size(rows));
  EXPECT_EQ(FactsOf("add_union_scalar_7"), nullptr);
}

TEST(DryRun, LeavesStandardOutputAsItWasEvenIfTheRowThrows) {
  std::ostringstream written;
  std::streambuf* const out = std::cout.rdbuf(written.rdbuf());
  DryRun(rows[0]);
  const auto throws = []() -> int { throw std::runtime_error("in mid-row"); };
  EXPECT_THROW(DryRun({rows[0].name, throws}), std::runtime_error);
  std::cout << "heard";
  std::cout.rdbuf(out);
  EXPECT_EQ(written.str(), "heard");
}

TEST(Stream, GivesRandsNumbersFromAnyPlaceWhateverElseIsDrawn) {
  for (const std::uint32_t seed : {1U, 0U, 2U, 0xFFFFFFFFU}) {
    std::vector<int> right(1000);
    srandom(seed);
    for (int& number : right) number = static_cast<int>(random());

    Stream stream(7);
    for (const std::size_t place : {0U, 500U, 500U, 990U, 3U}) {
      stream.Seek(seed, place);
      for (std::size_t i = place; i < place + 10; ++i) {
        EXPECT_EQ(stream.Draw(), right[i]) << "seed " << seed << ", number " << i;
        srandom(99);
      }
    }
  }
}

TEST(Stream, IsWhatRandIsToTheSuite) {
  srandom(1);
  OwnStream().Seek(1, 3);
  for (int i = 0; i < 3; ++i) random();
  for (int i = 0; i < 10; ++i) EXPECT_EQ(std::rand(), random());
}

}  // namespace
}  // namespace diagnosis
