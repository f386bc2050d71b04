#pragma once

#include <cstddef>
#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/page/html.h"
#include "common/page/page.h"
#include "common/page/parts.h"
#include "common/text/text.h"
#include "diagnosis/localization/analysis.h"
#include "diagnosis/views/compare.h"

// What the parts of a run's page share.

namespace diagnosis {

using page::Add;
using page::AddClassed;
using page::AddText;
using page::Set;
using text::Counted;

/// A section of a run's page: a file that makes one of these, and its name in the list.
struct Section {
  const char* id;
  const char* title;
  bool isOfFaults;  // left out where every row passed and is right
  void (*add)(page::Page& page, pugi::xml_node section, const Analysis& analysis);
};

/// SECTIONS(DO) does DO(name) for each, in their order on the page.
#define SECTIONS(DO) \
  DO(matrix)         \
  DO(distances)      \
  DO(suspects)       \
  DO(rows)           \
  DO(times)

#define DECLARE(name) extern const Section name;
namespace sections {
SECTIONS(DECLARE)
}
#undef DECLARE

/// A longer command is cut.
inline constexpr std::size_t mostBytesOfCommand = 1000;

/// How the category looks.
page::Mark MarkOf(Category category);

/// Whether the row has an article of its own, and where it is.
bool HasArticle(const RowResult& row);
std::string IdOfRow(std::string_view row);
std::string IdOfSuspect(std::string_view suspect);

/// What the suite says of a run, and what OpenCL says to that.
std::string VerdictOn(const Analysis& analysis);

/// How the first wrong lane came about, and the others in a line each.
void AddExplanation(pugi::xml_node article, const Record& record, const Device& device,
                    const Suspects& suspects);

/// What there is to say of a run in general.
struct RunFact {
  std::string_view name;
  std::string value;     // on one line; empty if it is not known
  bool isAlone = true;   // on the page of one run
  bool isBeside = true;  // on the page of several
};
std::vector<RunFact> FactsOf(const RunInfo& info);

/// The page of several runs, from its verdict on.
void AddComparison(page::Page& page, const std::vector<NamedRun>& runs);

}  // namespace diagnosis
