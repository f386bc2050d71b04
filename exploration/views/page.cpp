#include "exploration/views/page.h"

#include <fmt/format.h>

#include <algorithm>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "common/page/charts.h"
#include "common/page/html.h"
#include "common/page/page.h"
#include "common/page/parts.h"
#include "common/text/text.h"
#include "exploration/views/report.h"
#include "exploration/views/rules.h"

namespace exploration {
namespace {

constexpr std::size_t bytesOfLine = 8;

bool IsWrong(const AnswerRecord& answer, std::size_t i) {
  return answer.known[i] != 0 && answer.actual[i] != answer.expected[i];
}

// One of the two columns: what is wrong is marked in both.
void AddBytes(pugi::xml_node line, const AnswerRecord& answer, std::size_t first, bool isRight) {
  const pugi::xml_node cell = page::Add(page::Add(line, "td"), "code");
  for (std::size_t i = first; i < std::min(first + bytesOfLine, answer.expected.size()); ++i) {
    const std::string byte =
        isRight && answer.known[i] == 0
            ? "??"
            : fmt::format("{:02X}", (isRight ? answer.expected : answer.actual)[i]);
    if (i > first) page::AddText(cell, " ");
    if (IsWrong(answer, i)) {
      page::Add(cell, "mark", byte);
    } else {
      page::AddText(cell, byte);
    }
  }
}

// The lines in which something is wrong.
void AddAnswer(pugi::xml_node parent, const AnswerRecord& answer) {
  const std::size_t size = answer.expected.size();
  if (answer.known.size() != size || answer.actual.size() != size) return;
  const pugi::xml_node table =
      page::Add(page::AddScrolled(parent, fmt::format("Bytes of {}", answer.buffer)), "table");
  page::Add(table, "caption",
            fmt::format("Where the bytes of {} are wrong; ?? may be anything", answer.buffer));
  const pugi::xml_node head = page::Add(page::Add(table, "thead"), "tr");
  for (const char* title : {"From byte", "Right", "The answer"})
    page::Set(page::Add(head, "th", title), "scope", "col");
  const pugi::xml_node body = page::Add(table, "tbody");
  for (std::size_t first = 0; first < size; first += bytesOfLine) {
    bool isWrong = false;
    for (std::size_t i = first; i < std::min(first + bytesOfLine, size); ++i)
      isWrong = isWrong || IsWrong(answer, i);
    if (!isWrong) continue;
    const pugi::xml_node line = page::Add(body, "tr");
    page::Set(page::Add(line, "th", fmt::format("{}", first)), "scope", "row");
    AddBytes(line, answer, first, true);
    AddBytes(line, answer, first, false);
  }
}

void AddList(pugi::xml_node parent, const std::vector<std::string>& lines) {
  const pugi::xml_node list = page::Add(parent, "ul");
  for (const std::string& line : lines) page::Add(list, "li", line);
}

void AddFault(pugi::xml_node section, const FaultRecord& fault) {
  const pugi::xml_node article = page::Set(page::Add(section, "article"), "id", fault.name);
  page::Add(article, "h3", fault.title);
  page::AddFacts(
      article,
      {{"What happens", fault.told},
       {"Programs", fmt::format("{} ({})", fault.findings.size(), fmt::join(fault.findings, ", "))},
       {"Features", fmt::format("{}", fmt::join(fault.features, ", "))},
       {"Files", fmt::format("faults/{}", fault.name)}});
  page::AddVerbatim(article, "The shrunken program", fault.text, "program.cl has all of it");
  for (const AnswerRecord& answer : fault.answers) AddAnswer(article, answer);
  if (!fault.log.empty())
    page::AddVerbatim(article, "What the driver printed", fault.log, "run.json has all of it");
  if (!fault.settings.empty()) {
    page::Add(article, "h4", "Where it goes away");
    std::vector<std::string> lines;
    for (const Setting& setting : fault.settings)
      lines.push_back(fmt::format("{}: {}", setting.name, setting.result));
    AddList(article, lines);
  }
  const pugi::xml_node why = page::AddFolded(article, "Why the program is valid");
  std::vector<std::string> lines;
  for (const Rule& rule : RulesFor(fault.features))
    lines.push_back(fmt::format("{} ({})", rule.says, rule.source));
  AddList(why, lines);
  page::AddVerbatim(page::AddFolded(article, "The program as it was drawn"), "The original",
                    fault.original, "original.cl has all of it");
}

constexpr page::Shade shades[] = {
    {"exact", "", "0", "no program is wrong"},
    {"near", "", "2", "fewer than one in fifty"},
    {"far", "", "12", "fewer than one in ten"},
    {"beyond", "!", "40", "fewer than one in three"},
    {"outside", "\u2717", "90", "one in three or more"},
};

const page::Shade& ShadeOf(std::uint64_t wrong, std::uint64_t programs) {
  if (wrong == 0) return shades[0];
  if (wrong * 50 < programs) return shades[1];
  if (wrong * 10 < programs) return shades[2];
  return wrong * 3 < programs ? shades[3] : shades[4];
}

void AddPairs(page::Page& page, const PairCounts& pairs) {
  const pugi::xml_node section = page.AddSection("features", "Features by features");
  page::AddClassed(
      section, "p", "lead",
      "Of the programs that use both features, how many are wrong; on the diagonal, of "
      "those that use the one.");
  page::AddShades(section, shades);
  std::vector<std::string> numbers;
  std::vector<std::string> names;
  for (std::size_t i = 0; i < pairs.features.size(); ++i) {
    numbers.push_back(fmt::format("{}", i + 1));
    names.push_back(fmt::format("{} {}", i + 1, pairs.features[i]));
  }
  const std::vector<std::string_view> columns(numbers.begin(), numbers.end());
  std::vector<page::Heading> lines;
  for (std::size_t i = 0; i < names.size(); ++i) lines.push_back({names[i], pairs.features[i]});
  const page::Grid grid = {
      "Programs that are wrong", "by two features that they use", "", "feature", columns, lines};
  page::AddGrid(
      page::AddScrolled(section, "Features by features"), grid,
      [&pairs](pugi::xml_node cell, std::size_t line, std::size_t column) {
        const std::uint64_t programs = pairs.programs[line][column];
        const std::uint64_t wrong = pairs.wrong[line][column];
        if (column > line) return page::MakeBlank(cell, "the same two, the other way");
        if (programs == 0) return page::MakeBlank(cell, "no program");
        const page::Shade& shade = ShadeOf(wrong, programs);
        page::Set(cell, "class", shade.style);
        page::AddText(cell, fmt::format("{}{}", shade.sign, page::ShortNumber(wrong)));
        page::Set(cell, "title",
                  fmt::format("{}, {}: {} of {} wrong", pairs.features[line],
                              pairs.features[column], wrong, text::Counted(programs, "program")));
      });
}

}  // namespace

std::string PageOf(const RunRecord& run) {
  page::Page page("union explore", TotalsOf(run), "union explore");
  std::vector<std::pair<std::string_view, std::string>> facts = {
      {run.device.IsCompiler() ? "Compiler" : "Device", DeviceLine(run.device)},
      {"Start", run.start},
      {"End", run.end},
      {"Run", run.ending},
      {"Host", run.host},
      {"Version", run.version},
      {"Command", run.command}};
  for (const auto& [name, value] : run.options) facts.emplace_back(name, value);
  page::AddFacts(page.Header(), facts);
  const pugi::xml_node faults = page.AddSection("faults", "Faults");
  if (!run.IsFinished())
    page::AddClassed(faults, "p", "lead", fmt::format("The run did not finish: {}.", run.ending));
  if (run.faults.empty())
    page::AddClassed(faults, "p", "lead",
                     run.IsFinished() ? "No fault was found." : "No fault was found before that.");
  for (const FaultRecord& fault : run.faults) AddFault(faults, fault);
  AddPairs(page, run.pairs);
  return page.Html();
}

}  // namespace exploration
