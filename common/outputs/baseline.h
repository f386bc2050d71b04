#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "common/outputs/status.h"

namespace outputs {

/// Expected results by name. What is not named is expected to pass. Flake expects a case to end in
/// one way or another. Skip and Missing are no results: the case may also pass.
using Baseline = std::map<std::string, Status, std::less<>>;

/// The cases that a baseline may name.
struct Cases {
  std::string noun;  // "row"
  std::string head;  // of the first column: "test"
  std::vector<std::string> names;
};

/// Those that a name or glob means. Throws text::BadUse if that is none.
std::vector<std::string> Matching(std::string_view pattern, const Cases& cases);

/// What a line of a baseline says.
struct BaselineEntry {
  std::vector<std::string> names;
  bool isName = false;  // of the one case, not a glob's
  Status status = Status::pass;
};

/// A line without comment and blanks around it. Throws text::BadUse, without the place.
BaselineEntry EntryOf(std::string_view text, const Cases& cases);

/// Reads `NAME,status` a line, comments behind a `#`; a first line that is the head is no entry. A
/// name may be a glob; "!GLOB" takes cases out again; the later of two lines counts. Throws
/// text::BadUse, with the line, for a case or status that there is not, a name twice, or another
/// form.
Baseline ReadBaseline(const std::string& path, const Cases& cases);

}  // namespace outputs
