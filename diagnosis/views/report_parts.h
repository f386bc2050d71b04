#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "common/page/html.h"
#include "diagnosis/localization/suspects.h"
#include "diagnosis/record/row.h"
#include "diagnosis/views/compare.h"

// The parts of a page, a file each, and what they share. Each adds its section at the end of the
// element that it is given.

namespace diagnosis {

/// The style sheet: report.css.
extern const char* const styleSheet;

/// A longer command is cut.
inline constexpr std::size_t mostBytesOfCommand = 1000;

/// Whether the row has a section of its own, and where it is.
bool HasSection(const RowResult& outcome);
std::string IdOfRow(std::string_view row);
std::string IdOfSuspect(std::string_view suspect);

/// "12 rows", "1 row".
std::string Counted(std::size_t count, std::string_view one);

/// A distance in few characters: "12", "2.1e9".
std::string ShortUlps(std::uint64_t ulps);

/// A sign for the eye and a name for the ear.
void AddSign(pugi::xml_node parent, const CategoryTraits& look);

/// The sign beside its name, or the name alone where the sign is a word.
void AddBadge(pugi::xml_node parent, const CategoryTraits& look);

/// A way to another place of the page.
pugi::xml_node AddLink(pugi::xml_node parent, std::string_view id, std::string_view text = {});

/// A section with its heading, and its line in the page's contents.
pugi::xml_node AddSection(pugi::xml_node main, pugi::xml_node contents, const char* id,
                          std::string_view title);

/// A place in which what is too wide is scrolled, by keyboard too.
pugi::xml_node AddScrolled(pugi::xml_node parent, std::string_view label);

/// A part that is folded until someone opens it.
pugi::xml_node AddFolded(pugi::xml_node parent, std::string_view summary);

/// Text as it was written, its first part if it is longer than the page has room for.
void AddVerbatim(pugi::xml_node parent, std::string_view label, std::string_view text);

void AddLegend(pugi::xml_node section, const std::vector<RowResult>& outcomes);
void AddMatrix(pugi::xml_node section, const std::vector<RowResult>& outcomes);
void AddDistances(pugi::xml_node section, const std::vector<RowResult>& outcomes);
void AddSuspects(pugi::xml_node section, const Suspects& suspects);
void AddTimes(pugi::xml_node section, const Run& run);

/// How the first wrong lane came about, and the others in a line each.
void AddExplanation(pugi::xml_node article, const Record& record, const Device& device,
                    const Suspects& suspects);

/// The sections of the rows that are not passed and right, in no more than `mostBytes`.
void AddRows(pugi::xml_node section, const Run& run, const std::vector<RowResult>& outcomes,
             const Suspects& suspects, std::size_t mostBytes);

/// What there is to say of a run in general.
void AddFacts(pugi::xml_node parent, const RunInfo& info);

/// The names of what the device says that its floats can do: "denormals, infinities and NaNs, ..."
std::string CapabilitiesOf(const Device& device);

/// The run's options that were given a value: "jobs 1, seed 1, ..."
std::string OptionsOf(const RunInfo& info);

/// The page of several runs, from its verdict on.
void AddComparison(pugi::xml_node header, pugi::xml_node main, pugi::xml_node contents,
                   const std::vector<NamedRun>& runs);

}  // namespace diagnosis
