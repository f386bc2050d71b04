#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "diagnosis/localization/glossary.h"
#include "diagnosis/views/compare.h"
#include "diagnosis/views/explain.h"

// What commands print, for scripts: an object with the version of its form, which grows by one when
// something in it is renamed or left out, and a list. With line ends. What a driver has printed and
// is no UTF-8 is spelled out.

namespace diagnosis {

inline constexpr int versionOfJson = 1;

/// Of these rows what is particular to each, as `triage list --long` has it.
std::string JsonOfRows(const std::vector<std::size_t>& selected);

std::string JsonOf(const std::vector<Explanation>& explanations);
std::string JsonOf(const std::vector<NamedRun>& runs, const std::vector<ComparedRow>& compared);
std::string JsonOf(const std::vector<Term>& terms);

}  // namespace diagnosis
