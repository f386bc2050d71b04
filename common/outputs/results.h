#pragma once

#include <string>
#include <vector>

#include "common/outputs/junit.h"
#include "diagnosis/record/record.h"
#include "diagnosis/verdict/account.h"

namespace diagnosis {

/// Throws BadUse if there are results in the folder and they are not to be replaced.
void RefuseOldResults(const std::string& folder, bool replace);

/// The files that a run leaves: results.csv, failures.csv, junit.xml, records.jsonl and run.json.
/// At any moment they are whole and say all of the rows ended till then: records.jsonl grows by a
/// line at a time, and the others are replaced in one step.
///
/// Any function throws std::runtime_error, with one line, when a file cannot be written. The files
/// are then as they were, and the object is to be used no more.
class ResultsFolder {
 public:
  /// Makes the folder and its files, without a row. Throws BadUse if it cannot, or would have to
  /// replace old results.
  ResultsFolder(const std::string& folder, bool replace, const RunInfo& info);
  ResultsFolder(const ResultsFolder&) = delete;
  ResultsFolder& operator=(const ResultsFolder&) = delete;

  void SetDevice(const Device& device);
  /// Writes down that the row is about to be run.
  void Started(const std::string& row);
  void Ended(const Record& record, const AccountedRow& row);
  /// Replaces what was written of rows that were run again, and closes the run. `records` are those
  /// of all rows, in the order of the matrix, and `account` what became of them.
  void Finish(const std::vector<Record>& records, const std::vector<AccountedRow>& account,
              const std::string& end);

 private:
  void Replace(const char* name, const std::string& text) const;
  void Append(const Record& record) const;
  void WriteTables();

  std::string folder_;
  RunInfo info_;
  std::vector<AccountedRow> account_;
  JUnit junit_;
};

}  // namespace diagnosis
