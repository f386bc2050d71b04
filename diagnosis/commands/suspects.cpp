#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/text/bad_use.h"
#include "common/text/nearest.h"
#include "common/text/text.h"
#include "diagnosis/commands/command.h"
#include "diagnosis/localization/glossary.h"
#include "diagnosis/views/as_json.h"

namespace diagnosis {
namespace {

struct Options {
  std::vector<std::string> names;
  bool json = false;
  bool markdown = false;
};

std::vector<Term> TermsCalled(const std::string& name) {
  std::vector<Term> terms = TermsOf(name);
  if (!terms.empty()) return terms;
  const std::vector<Term> all = Glossary();
  std::vector<std::string_view> known;
  for (const Term& term : all) known.push_back(term.name);
  const std::optional<std::string_view> nearest = text::Nearest(name, known);
  throw text::BadUse(fmt::format(
      "no suspect is called '{}'{}", text::PrintableLine(name),
      nearest ? fmt::format(": did you mean '{}'?", *nearest) : " ('triage suspects' names them)"));
}

std::string MarkdownOf(const std::vector<Term>& terms) {
  std::string text =
      "# Suspects\n\n"
      "What the names mean that a run ends with: what the compiler probably does, what is asked "
      "for "
      "and what is\n"
      "done in its place, where to look, and which rows can show it. `./triage suspects NAME` "
      "tells "
      "the same of\n"
      "one. N stands for a number.\n";
  for (const Term& term : terms)
    fmt::format_to(std::back_inserter(text),
                   "\n## {}\n\n{}\n{}\n\n```c\n{}\n```\n\nWhere to look: {}.\nRows: `{}`.\n",
                   term.name, term.sentence, term.cause, term.example, term.place,
                   fmt::join(term.rows, "` `"));
  return text;
}

std::string NamesAndSentences(const std::vector<Term>& terms) {
  std::string text;
  for (const Term& term : terms)
    fmt::format_to(std::back_inserter(text), "{:<30}  {}\n", term.name, term.sentence);
  return text;
}

void Print(const Options& options) {
  std::vector<Term> terms;
  for (const std::string& name : options.names) {
    const std::vector<Term> called = TermsCalled(name);
    terms.insert(terms.end(), called.begin(), called.end());
  }
  if (options.names.empty()) terms = Glossary();
  if (options.json) return command_line::Print(JsonOf(terms));
  if (options.markdown) return command_line::Print(MarkdownOf(terms));
  if (options.names.empty()) return command_line::Print(NamesAndSentences(terms));
  std::string text;
  for (const Term& term : terms) text += (text.empty() ? "" : "\n") + TextOf(term);
  command_line::Print(text);
}

void AddTo(CLI::App& app, command_line::Call&) {
  const auto options = std::make_shared<Options>();
  app.add_option("NAME", options->names, "As a run tells them; all in a line each if none")
      ->type_name("");
  CLI::Option* const json = AddJson(app, options->json);
  app.add_flag("--markdown", options->markdown, "As a page: docs/suspects.md")->excludes(json);
  app.callback([options] { Print(*options); });
}

}  // namespace

const command_line::Command commands::suspects = {
    "suspects", "Say what the names of suspects mean, and where to look", AddTo,
    "triage suspects b-at-32\n"
    "triage suspects"};

}  // namespace diagnosis
