#pragma once

#include <string>
#include <string_view>

namespace diagnosis {

/// Reads a run from the contents of its two files and hands it to every view, the page of it and of
/// it beside itself among them. What cannot be read is no fault. Throws std::logic_error if a view
/// does what it must not.
void TryViews(std::string_view info, const std::string& records);

}  // namespace diagnosis
