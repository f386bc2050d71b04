#pragma once

#include <gtest/gtest.h>
#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "common/workers/jobs.h"
#include "common/workers/runner.h"

// Jobs for a runner without a driver. Its tasks are commands with a word each, or two, apart by
// lines:
//   say WORD      answers it
//   print WORD    prints it
//   number        answers the process's number
//   child         leaves a child behind, and answers its number
//   close         closes whatever it may have open
//   overflow      answers more than there is room for, and then "end"
//   abort, exit, hang; kill, which is the worker's end, and stop, which stops it

namespace stub {

extern const workers::Runner runner;

/// What became of a job, and what a whole run told.
struct Ended {
  workers::Job job;
  workers::Answer answer;
};
struct Told {
  workers::PoolEnd end;
  std::vector<std::string> devices;
  std::vector<std::uint64_t> started;
  std::vector<Ended> ended;  // by the job's number
};

class Jobs : public testing::Test {
 protected:
  Jobs();
  ~Jobs() override;

  void Set(const std::string& name, const std::string& value);

  /// What each start of a runner does, a letter each, and each behind these: "." comes up, "x"
  /// aborts, "h" hangs, "n" finds no device, "c" comes up and has closed whatever it may have open.
  void SetStarts(const std::string& starts);
  /// How many there were.
  std::size_t Starts() const;
  /// The numbers of all runners.
  std::string Runners() const;

  /// Jobs with these tasks, numbered from 0.
  Told RunAll(const std::vector<workers::Job>& jobs);
  Told RunTasks(const std::vector<std::string>& tasks);

  std::filesystem::path folder_;
  workers::PoolOptions options_;
  std::function<workers::Afterwards(const workers::Answer&)> afterwards_;

 private:
  std::vector<std::string> set_;
};

std::string Contents(const std::filesystem::path& path);

/// Whether each of these processes, whose numbers stand in the text, goes within some seconds.
/// False if there are none.
bool AllGo(const std::string& numbers);

}  // namespace stub
