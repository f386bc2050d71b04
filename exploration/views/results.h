#pragma once

#include <string>

#include "common/outputs/folder.h"
#include "exploration/record/run_record.h"

namespace exploration {

/// Throws text::BadUse if there are results in the folder and they are not to be replaced, or are
/// none of this program's.
void RefuseOldResults(const std::string& folder, bool replace);

/// The files that a run leaves. What writes throws text::CannotWrite.
class Results {
 public:
  /// Makes the folder if need be. Throws text::BadUse if it cannot, or would have to replace old
  /// results.
  Results(const std::string& folder, bool replace);

  /// Adds a line to findings.jsonl.
  void Found(const FindingRecord& finding);
  void Append(const std::string& line);

  /// Writes the fault's own folder, faults/NAME. `drawing` are the options with which its program
  /// is drawn.
  void Add(const Fault& fault, const RunRecord& run, const std::string& drawing);

  /// Writes run.json. What is made of it is not there before the run has ended.
  void Begin(const RunRecord& run);

  /// Writes what says all of the run: run.json, report.html and junit.xml.
  void Finish(const RunRecord& run);

  /// The folder of a fault, which is made if need be.
  std::string FolderOf(const std::string& fault) const;

 private:
  outputs::Folder folder_;
};

/// The files in a fault's folder; a compiler's has no reproducer.c.
inline constexpr const char* filesOfFault[] = {"program.cl", "original.cl", "reproducer.c",
                                               "report.md"};

}  // namespace exploration
