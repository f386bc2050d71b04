#pragma once

#include <memory>
#include <string>

#include "common/outputs/folder.h"
#include "diagnosis/localization/analysis.h"

namespace diagnosis {

/// The files of a run's folder: records.jsonl is its journal.
outputs::Files FilesOfRun();

/// The folder of a run that is there, to be written into. Throws text::BadUse if there is none, or
/// another run is writing into it, and leaves nothing behind.
std::unique_ptr<outputs::Folder> FolderOfRun(const std::string& path);

/// The journal's lines of a record: one for each run of its row.
std::string LinesOf(const Record& record);

/// Writes all that follows from a run's run.json and records.jsonl beside them. Throws
/// text::CannotWrite; then what is left of it is not there.
void WriteResults(outputs::Folder& folder, const Analysis& analysis);

}  // namespace diagnosis
