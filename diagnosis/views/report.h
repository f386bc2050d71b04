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

/// The page of one run, or of several side by side: HTML that needs nothing else.
std::string ReportOf(const std::vector<NamedRun>& runs);

/// Writes the page of a whole run beside its records, if those were written into a folder.
std::string WriteReportOf(const Analysis& analysis, const std::string& folder);

/// Writes the page in place of what was there. Throws std::runtime_error with one line.
void WriteReport(const std::string& file, const std::string& page);

}  // namespace diagnosis
