// What a row tells of itself when it is run on no device, against what the tests know of the rows;
// and the stream of random numbers that stands for rand's.

#include "diagnosis/capture/rehearsal.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <set>
#include <sstream>

#include "diagnosis/capture/boundary.h"
#include "tests/rows.h"

namespace diagnosis {
namespace {

TEST(Rehearsal, LearnsEveryRowsConstantsAndPrintsNothing) {
  std::ostringstream written;
  std::streambuf* const out = std::cout.rdbuf(written.rdbuf());
  std::streambuf* const err = std::cerr.rdbuf(written.rdbuf());
  const std::vector<Rehearsed>& rehearsal = Rehearsal();
  std::cout.rdbuf(out);
  std::cerr.rdbuf(err);
  EXPECT_EQ(written.str(), "");

  ASSERT_EQ(rehearsal.size(), Rows().size());
  std::size_t draws = 0;
  std::set<std::string> sources;
  for (std::size_t i = 0; i < rehearsal.size(); ++i) {
    const ::Row& row = Rows()[i];
    const Rehearsed& told = rehearsal[i];
    SCOPED_TRACE(row.name);
    EXPECT_EQ(told.name, row.name);
    EXPECT_EQ(told.stride, row.stride);
    EXPECT_EQ(told.drawsPerRepetition, static_cast<std::size_t>(DrawsPerRun(row)));
    EXPECT_EQ(told.repetitions, Runs(row));
    EXPECT_EQ(told.runLines, RunLines(row));
    EXPECT_EQ(told.tolerance, Tolerance(row));
    EXPECT_EQ(told.scheduled, row.operation != "power");
    EXPECT_EQ(told.drawsBefore, draws);
    draws += static_cast<std::size_t>(Runs(row)) * static_cast<std::size_t>(DrawsPerRun(row));
    EXPECT_NE(told.source.find("__kernel void " + told.kernel + "("), std::string::npos);
    sources.insert(told.source);
  }
  EXPECT_EQ(sources.size(), rehearsal.size());
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
