#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "diagnosis/verdict/baseline.h"
#include "diagnosis/verdict/row_result.h"

namespace diagnosis {

/// What a line of a baseline says.
struct BaselineEntry {
  std::vector<std::string> rows;
  bool isName = false;  // of the one row, not a glob's
  Status status = Status::pass;
};

/// A line without comment and blanks around it. Throws BadUse, without the place.
BaselineEntry EntryOf(std::string_view text);

/// The baseline `text` with as few lines changed as can be so that these rows end as it says: the
/// status on a row's own line, a line that is no longer needed taken away unless it has a comment,
/// and new lines at the end. A glob stays with exclusions behind it, gets another status or goes,
/// whichever changes fewer lines. Rows that were skipped or never reached stay as they are, and so
/// does all that is no entry. Throws BadUse as ReadBaseline, without the file.
std::string Updated(const std::string& text, const std::vector<RowResult>& results);

/// Whether there is such a file, or something that is to be read as one and refused.
bool IsBaselineThere(const std::string& file);

/// Has the file so, or makes it. Returns whether something was written. Throws BadUse as
/// ReadBaseline, and text::CannotWrite.
bool UpdateBaseline(const std::string& file, const std::vector<RowResult>& results);

}  // namespace diagnosis
