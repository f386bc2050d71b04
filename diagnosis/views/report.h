#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "diagnosis/localization/analysis.h"
#include "diagnosis/views/compare.h"

namespace diagnosis {

/// The most bytes that a page takes, whatever failed and whatever the driver wrote. What has no
/// room is left out, and the page says so.
inline constexpr std::size_t mostBytesOfPage = std::size_t{8} << 20;

/// The page of a run: HTML that needs nothing else.
std::string ReportOf(const Analysis& analysis);

/// The page of one run, or of several side by side.
std::string ReportOf(const std::vector<NamedRun>& runs);

}  // namespace diagnosis
