#pragma once

#include <iosfwd>
#include <string>
#include <string_view>

#include "diagnosis/record/record.h"

namespace diagnosis {

/// The run that was written into `folder` as run.json and records.jsonl. What is damaged is left
/// out and named in the run's damages, a line for a person each; a row whose record is not there is
/// there as not run. Throws std::runtime_error with one line if nothing is left: if one of the
/// files is not there, run.json does not say what the device can do, or all records are damaged.
Run ReadRun(const std::string& folder);

/// The same of the files' contents; `folder` is what the damages call the place.
Run ReadRun(std::string_view info, std::istream& records, const std::string& folder);

/// What is to be done where the folder is one that a run is writing into.
enum class InUse {
  told,     // what is there is read, and standard error says that there will be more
  refused,  // by BadUse
  isOurs,   // this process has it
};

/// ReadRun for a command: names the damages on standard error, and throws BadUse if nothing is
/// left.
Run OpenRun(const std::string& folder, InUse inUse = InUse::told);

}  // namespace diagnosis
