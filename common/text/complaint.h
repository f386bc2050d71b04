#pragma once

#include <string_view>

namespace text {

/// A line on standard error, "triage: LINE", printable and not too long for one. Where nobody reads
/// it, that can be told nowhere, and what goes on goes on.
void Complain(std::string_view program, std::string_view line);

}  // namespace text
