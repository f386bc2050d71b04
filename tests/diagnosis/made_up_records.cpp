#include "made_up_records.h"

#include <gtest/gtest.h>

#include <csignal>

namespace diagnosis {

Record MadeUp(const std::string& row, Status status) {
  using Kind = Ending::Kind;
  Record record;
  record.row = row;
  record.ending = {Kind::returned, 1, ""};
  record.out = "Running test " + row + "...\nRUN 1: PASSED\n";
  switch (status) {
    case Status::fail:
      record.ending.value = 0;
      record.out = "Running test " + row + "...\n  c:1 ocl:2\nRUN 1: FAILED!\n";
      break;
    case Status::buildError:
      record.failedCalls = {{"clBuildProgram", -11, 0}};
      record.buildLog = "1:1: error: unions are not our thing\n";
      record.out = "";
      break;
    case Status::error:
      record.failedCalls = {{"clEnqueueReadBuffer", -36, 3}};
      break;
    case Status::crash:
      record.ending = {Kind::signalled, SIGSEGV, ""};
      break;
    case Status::timeout:
      record.ending = {Kind::timedOut, 0, ""};
      break;
    case Status::skip:
      record.ending = {Kind::skipped, 0, "skipped by list:1"};
      break;
    case Status::missing:
      record.ending = {Kind::notRun, 0, "interrupted"};
      break;
    default:
      break;
  }
  EXPECT_EQ(StatusOf(record), status);
  return record;
}

}  // namespace diagnosis
