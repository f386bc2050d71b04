// What the suite and the second opinion make of a row together, and which of the two counts.

#include "diagnosis/verdict/category.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "diagnosis/verdict/row_result.h"
#include "tests/diagnosis/made_up_device.h"

namespace diagnosis {
namespace {

enum class Answers { right, wrong, none };

Record RecordOf(Answers answers, Ending ending) {
  MadeUpDevice device("add_union_vector4_1");
  if (answers == Answers::wrong) device.bitsOf = [old = device.bitsOf](float x) { return old(-x); };
  Record record = device.Run(answers == Answers::none ? 0 : 1);
  record.ending = std::move(ending);
  return record;
}

TEST(Category, IsOfTheSuitesVerdictAndTheSecondOpinions) {
  const Ending passed{Ending::Kind::returned, 1, ""};
  const Ending failed{Ending::Kind::returned, 0, ""};
  const Ending crashed{Ending::Kind::signalled, 11, ""};
  const struct {
    Answers answers;
    Ending ending;
    Category category;
    Status strict;         // the verdict where the second opinion counts
    Status strictAgainst;  // that, where Fail is expected
  } cases[] = {
      {Answers::right, passed, Category::passedRight, Status::pass, Status::unexpectedPass},
      {Answers::wrong, passed, Category::passedWrong, Status::fail, Status::expectedFail},
      {Answers::right, failed, Category::failedRight, Status::pass, Status::unexpectedPass},
      {Answers::wrong, failed, Category::failedWrong, Status::fail, Status::expectedFail},
      {Answers::none, passed, Category::passedUnseen, Status::pass, Status::unexpectedPass},
      {Answers::none, failed, Category::failedUnseen, Status::fail, Status::expectedFail},
      {Answers::wrong, crashed, Category::crash, Status::crash, Status::crash},
  };
  const Device device = MadeUpDevice("add_union_vector4_1").reported;
  for (const auto& c : cases) {
    SCOPED_TRACE(TraitsOf(c.category).name);
    const Record record = RecordOf(c.answers, c.ending);
    const RowResult row = ResultOf(record, device, {});
    EXPECT_STREQ(TraitsOf(row.category).name, TraitsOf(c.category).name);
    EXPECT_EQ(row.verdict, row.status);

    Expectations strict;
    strict.strict = true;
    const RowResult judged = ResultOf(record, device, strict);
    EXPECT_EQ(judged.category, row.category);
    EXPECT_EQ(judged.status, row.status);
    EXPECT_EQ(NameOf(judged.verdict), NameOf(c.strict));
    EXPECT_EQ(judged.asExpected, c.strict == Status::pass);
    strict.baseline[record.row] = Status::fail;
    EXPECT_EQ(NameOf(ResultOf(record, device, strict).verdict), NameOf(c.strictAgainst));
  }
}

// A row that passes with other answers is one that a reader should know of; what lies behind the
// lanes is nobody's answer.
TEST(Category, OfARowThatIsRunManyTimesHoldsTheAnswersAgainstEachOther) {
  const MadeUpDevice device("copy_union_vector3_1");
  const Record right = device.Run();
  const struct {
    std::size_t byte;  // of the result, that differs in the second of three runs
    int value;         // that each run returned
    Category category;
    Status verdict;
    const char* detail;
  } cases[] = {
      {2, 1, Category::flake, Status::flake, "0 of 3 wrong, two different answers"},
      {13, 1, Category::passedRight, Status::pass, ""},
      {2, 0, Category::failedRight, Status::fail,
       "3 of 3 wrong, two different answers: the row returned 0 without a mismatch line"},
  };
  for (const auto& c : cases) {
    Record record = right;
    record.ending.value = c.value;
    Record other = record;
    other.repetitions.front().result.at(c.byte) ^= 1U;
    record.again = {other, record};
    RowResult row = ResultOf(record, device.reported, {});
    EXPECT_STREQ(TraitsOf(row.category).name, TraitsOf(c.category).name);
    EXPECT_EQ(NameOf(row.verdict), NameOf(c.verdict));
    EXPECT_EQ(row.detail, c.detail);
    // Run by run it comes to the same.
    std::vector<Record> runs = std::exchange(record.again, {});
    row = ResultOf(record, device.reported, {});
    for (Record& run : runs) {
      record.again.push_back(std::move(run));
      TakeLastRun(row, device.reported, {});
    }
    EXPECT_EQ(row.detail, c.detail);
  }
}

}  // namespace
}  // namespace diagnosis
