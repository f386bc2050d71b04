#pragma once

#include <memory>
#include <string>

#include "diagnosis/record/record.h"
#include "diagnosis/verdict/account.h"

namespace diagnosis {

/// A run in the form that CI servers read: a suite an operation, a case a row. The cause of what
/// did not pass stands in `type`, its line in `message`; what is as expected of it counts as
/// skipped.
class JUnit {
 public:
  JUnit();
  JUnit(const JUnit&) = delete;
  JUnit& operator=(const JUnit&) = delete;
  ~JUnit();

  /// Adds the row, or puts it in place of what is there of it.
  void Put(const Record& record, const AccountedRow& row);

  /// XML 1.0 in UTF-8, whatever the rows and the driver wrote.
  std::string Text(const RunInfo& info);

 private:
  struct Tree;
  std::unique_ptr<Tree> tree_;
};

}  // namespace diagnosis
