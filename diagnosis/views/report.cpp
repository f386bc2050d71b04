#include "diagnosis/views/report.h"

#include <CL/cl.h>
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "common/text/text.h"
#include "diagnosis/localization/analysis.h"
#include "diagnosis/views/draws_of_run.h"
#include "diagnosis/views/report_parts.h"

namespace diagnosis {

namespace fs = std::filesystem;

namespace {

// Half a megabyte is enough for all that is on the page beside the rows' sections.
constexpr std::size_t mostBytesOfRows = mostBytesOfPage - (std::size_t{1} << 19);
constexpr std::size_t mostBytesOfText = 8 << 10;

std::size_t CountOf(const std::vector<RowResult>& outcomes, Category category) {
  return static_cast<std::size_t>(std::ranges::count(outcomes, category, &RowResult::category));
}

// The words one after another: "a, b and c".
std::string Joined(const std::vector<std::string>& words) {
  std::string text;
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (i > 0) text += i + 1 == words.size() ? " and " : ", ";
    text += words[i];
  }
  return text;
}

// How many rows ended as the run's baseline says.
std::string AsExpected(const Totals& totals) {
  const std::size_t others = totals.rows - totals.asExpected;
  if (others == 0) return "every row ended as the baseline expects";
  return Counted(others, "row") + " ended otherwise than the baseline expects";
}

// What the suite says.
std::string LedgerSentence(const Analysis& analysis) {
  const Run& run = *analysis.run;
  const std::vector<RowResult>& outcomes = analysis.rows;
  struct Name {
    Status status;
    const char* text;
  };
  constexpr Name names[] = {
      {Status::fail, "failed"},
      {Status::buildError, "could not be built"},
      {Status::error, "ended in an error"},
      {Status::crash, "crashed"},
      {Status::timeout, "took too long"},
      {Status::flake, "ended now so, now otherwise"},
      {Status::skip, "skipped"},
      {Status::missing, "never reached"},
  };
  const auto status = [](const RowResult& row) { return TraitsOf(row.category).status; };
  const auto passed = static_cast<std::size_t>(std::ranges::count(outcomes, Status::pass, status));
  std::string text;
  if (passed == outcomes.size()) {
    text = passed == 1 ? "The one row passed" : fmt::format("All {} rows passed", passed);
  } else {
    std::vector<std::string> others;
    for (const Name& name : names) {
      const auto count = std::ranges::count(outcomes, name.status, status);
      if (count > 0) others.push_back(fmt::format("{} {}", count, name.text));
    }
    text =
        fmt::format("{} of {} passed: {}", passed, Counted(outcomes.size(), "row"), Joined(others));
  }
  if (!run.info.expected.empty()) text += "; " + AsExpected(analysis.totals);
  return text + (run.info.end.empty() ? "; the run was cut off." : ".");
}

// What OpenCL says to that.
std::string OpinionSentence(const std::vector<RowResult>& outcomes) {
  const std::size_t right = CountOf(outcomes, Category::passedRight);
  const std::size_t judged = right + CountOf(outcomes, Category::failedRight) +
                             CountOf(outcomes, Category::passedWrong) +
                             CountOf(outcomes, Category::failedWrong);
  if (judged == 0) return "Nothing came back that could be held against OpenCL\u2019s rules.";
  if (right == judged) return "By OpenCL\u2019s rules, too, every lane that came back is right.";

  struct Part {
    Category category;
    const char* text;
    const char* meaning;
  };
  constexpr Part parts[] = {
      {Category::failedWrong, "that failed {} wrong", "a fault of the device"},
      {Category::passedWrong, "that passed {} wrong", "a fault that the suite\u2019s rule hides"},
      {Category::failedRight, "that failed {} right", "where the suite asks more than OpenCL does"},
  };
  std::string text;
  for (const Part& part : parts) {
    const std::size_t count = CountOf(outcomes, part.category);
    if (count == 0) continue;
    text += text.empty() ? "By OpenCL\u2019s rules " : "; ";
    text +=
        fmt::format("{} {}, {}", count,
                    fmt::format(fmt::runtime(part.text), count == 1 ? "is" : "are"), part.meaning);
  }
  return text + ".";
}

std::string TitleOf(const std::vector<NamedRun>& runs) {
  if (runs.size() > 1) return Counted(runs.size(), "run") + " side by side";
  const std::string name = text::PrintableLine(runs.front().run.info.device.name);
  return name.empty() ? "A device without a name" : name;
}

void AddRun(pugi::xml_node header, pugi::xml_node main, pugi::xml_node contents, const Run& run) {
  const Analysis analysis = AnalysisOf(run, ExpectationsOf(run.info));
  const std::vector<RowResult>& outcomes = analysis.rows;
  const Suspects& suspects = analysis.suspects;
  const bool allRight = std::ranges::none_of(outcomes, HasSection);

  AddClassed(header, "p", "verdict", LedgerSentence(analysis) + " " + OpinionSentence(outcomes));
  if (const std::string draws = DrawsOfRun(run); !draws.empty())
    AddClassed(header, "p", "lead", draws);
  AddLegend(header, outcomes);
  AddFacts(header, run.info);

  AddMatrix(AddSection(main, contents, "matrix", "The matrix"), outcomes);
  AddDistances(AddSection(main, contents, "distances", "Distance from the right answer"), outcomes);
  if (!allRight) {
    AddSuspects(AddSection(main, contents, "suspects", "Suspects"), suspects);
    AddRows(AddSection(main, contents, "rows", "Row by row"), run, outcomes, suspects,
            mostBytesOfRows);
  }
  AddTimes(AddSection(main, contents, "times", "Where the time went"), run);
}

}  // namespace

bool HasSection(const RowResult& outcome) {
  return outcome.category != Category::passedRight && outcome.category != Category::skip &&
         outcome.category != Category::missing;
}

std::string IdOfRow(std::string_view row) { return fmt::format("row-{}", row); }

std::string IdOfSuspect(std::string_view suspect) { return fmt::format("suspect-{}", suspect); }

std::string Counted(std::size_t count, std::string_view one) {
  return fmt::format("{} {}{}", count, one, count == 1 ? "" : "s");
}

std::string ShortUlps(std::uint64_t ulps) {
  if (ulps < 100'000) return fmt::format("{}", ulps);
  const auto number = static_cast<double>(ulps);
  const int exponent = static_cast<int>(std::log10(number));
  return fmt::format("{:.1f}e{}", number / std::pow(10.0, exponent), exponent);
}

void AddSign(pugi::xml_node parent, const CategoryTraits& look) {
  Set(AddClassed(parent, "span", "sign", look.sign), "aria-hidden", "true");
}

void AddBadge(pugi::xml_node parent, const CategoryTraits& look) {
  const pugi::xml_node badge = AddClassed(parent, "span", fmt::format("chip {}", look.style));
  if (static_cast<unsigned char>(*look.sign) >= 0x80) {
    AddSign(badge, look);
    AddText(badge, " ");
  }
  AddText(badge, look.name);
}

pugi::xml_node AddLink(pugi::xml_node parent, std::string_view id, std::string_view text) {
  return Set(Add(parent, "a", text), "href", fmt::format("#{}", id));
}

pugi::xml_node AddSection(pugi::xml_node main, pugi::xml_node contents, const char* id,
                          std::string_view title) {
  const std::string heading = fmt::format("{}-heading", id);
  AddLink(Add(contents, "li"), id, title);
  const pugi::xml_node section = Set(Add(main, "section"), "id", id);
  Set(section, "aria-labelledby", heading);
  Set(Add(section, "h2", title), "id", heading);
  return section;
}

pugi::xml_node AddScrolled(pugi::xml_node parent, std::string_view label) {
  const pugi::xml_node region = AddClassed(parent, "div", "scrolled");
  Set(region, "role", "region");
  Set(region, "aria-label", label);
  return Set(region, "tabindex", "0");
}

pugi::xml_node AddFolded(pugi::xml_node parent, std::string_view summary) {
  const pugi::xml_node folded = Add(parent, "details");
  Add(folded, "summary", summary);
  return folded;
}

void AddVerbatim(pugi::xml_node parent, std::string_view label, std::string_view text) {
  const std::string_view shown = text.substr(0, mostBytesOfText);
  Add(AddScrolled(parent, label), "pre", shown);
  if (shown.size() < text.size()) {
    AddClassed(parent, "p", "note",
               fmt::format("{} more left out here; the records hold them.",
                           Counted(text.size() - shown.size(), "byte")));
  }
}

std::string CapabilitiesOf(const Device& device) {
  struct Bit {
    std::uint64_t bit;
    const char* name;
  };
  constexpr Bit bits[] = {
      {CL_FP_DENORM, "denormals"},
      {CL_FP_INF_NAN, "infinities and NaNs"},
      {CL_FP_ROUND_TO_NEAREST, "rounds to nearest"},
      {CL_FP_ROUND_TO_ZERO, "rounds toward zero"},
      {CL_FP_ROUND_TO_INF, "rounds to infinities"},
      {CL_FP_FMA, "fused multiply-add"},
      {CL_FP_SOFT_FLOAT, "in software"},
      {CL_FP_CORRECTLY_ROUNDED_DIVIDE_SQRT, "division and square root correctly rounded"},
  };
  std::string text;
  for (const Bit& bit : bits) {
    if ((device.singleFpConfig & bit.bit) != 0)
      text += (text.empty() ? "" : ", ") + std::string(bit.name);
  }
  if ((device.singleFpConfig & CL_FP_DENORM) == 0)
    text += text.empty() ? "none reported" : "; no denormals";
  return text;
}

std::string OptionsOf(const RunInfo& info) {
  std::string text;
  for (const auto& [name, value] : info.options) {
    if (!value.empty()) text += fmt::format("{}{} {}", text.empty() ? "" : ", ", name, value);
  }
  return text::PrintableLine(text, mostBytesOfCommand);
}

void AddFacts(pugi::xml_node parent, const RunInfo& info) {
  const std::pair<const char*, std::string> facts[] = {
      {"Platform", text::PrintableLine(info.device.platform)},
      {"Vendor", text::PrintableLine(info.device.vendor)},
      {"Driver", text::PrintableLine(info.device.driverVersion)},
      {"OpenCL", text::PrintableLine(info.device.version)},
      {"Floats", CapabilitiesOf(info.device)},
      {"Host", text::PrintableLine(info.host)},
      {"Suite", text::PrintableLine(info.version)},
      {"Started", text::PrintableLine(info.start)},
      {"Ended", info.end.empty() ? "cut off" : text::PrintableLine(info.end)},
      {"Command", text::PrintableLine(info.command, mostBytesOfCommand)},
      {"Options", OptionsOf(info)},
  };
  const pugi::xml_node list = AddClassed(parent, "dl", "facts");
  for (const auto& [name, value] : facts) {
    if (value.empty()) continue;
    Add(list, "dt", name);
    Add(list, "dd", value);
  }
}

std::string ReportOf(const std::vector<NamedRun>& runs) {
  pugi::xml_document page;
  page.append_child(pugi::node_doctype).set_value("html");
  const pugi::xml_node html = Set(Add(page, "html"), "lang", "en");

  const pugi::xml_node head = Add(html, "head");
  Set(Add(head, "meta"), "charset", "utf-8");
  Set(Set(Add(head, "meta"), "name", "viewport"), "content", "width=device-width, initial-scale=1");
  Set(Set(Add(head, "meta"), "name", "color-scheme"), "content", "light dark");
  const std::string title = TitleOf(runs);
  Add(head, "title", title + " \u00B7 union conformance");
  Add(head, "style", styleSheet);

  const pugi::xml_node body = Add(html, "body");
  Set(AddClassed(body, "a", "skip", "Skip to the results"), "href", "#main");
  const pugi::xml_node header = Add(body, "header");
  AddClassed(header, "p", "kicker", "Union conformance suite");
  Add(header, "h1", title);
  const pugi::xml_node contents = Add(Set(Add(body, "nav"), "aria-label", "On this page"), "ul");
  const pugi::xml_node main = Set(Add(body, "main"), "id", "main");

  if (runs.size() == 1) {
    AddRun(header, main, contents, runs.front().run);
  } else {
    AddComparison(header, main, contents, runs);
  }
  return HtmlOf(page);
}

std::string WriteReportOf(const Analysis& analysis, const std::string& folder) {
  if (folder.empty()) return "";
  // One copy of all the records, where a list in braces would take two.
  std::vector<NamedRun> runs(1);
  runs.front().name = folder;
  runs.front().run = *analysis.run;
  WriteReport(folder + "/report.html", ReportOf(runs));
  return "";
}

void WriteReport(const std::string& file, const std::string& page) {
  // A device or a pipe is written to; a file is replaced in one step.
  std::error_code ignored;
  const bool isOther = fs::exists(file, ignored) && !fs::is_regular_file(file, ignored);
  const std::string part = isOther ? file : file + ".part";
  std::ofstream out(part, std::ios::binary | std::ios::trunc);
  out << page << std::flush;
  out.close();
  if (out && (isOther || std::rename(part.c_str(), file.c_str()) == 0)) return;
  if (!isOther) fs::remove(part, ignored);
  throw std::runtime_error(fmt::format("cannot write '{}'", file));
}

}  // namespace diagnosis
