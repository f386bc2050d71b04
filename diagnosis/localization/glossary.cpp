#include "diagnosis/localization/glossary.h"

#include <fmt/format.h>

#include <charconv>
#include <cstdint>
#include <optional>
#include <sstream>
#include <utility>

#include "diagnosis/localization/hypothesis.h"
#include "diagnosis/localization/suspects.h"

namespace diagnosis {
namespace {

// The patterns as they are told where no number is known.
std::string WithoutNumber(std::string_view pattern) {
  constexpr std::pair<std::string_view, std::string_view> words[] = {
      {"{n:+}", "+N"}, {"{n:08X}", "N"}, {"{n}", "N"}, {"{s}", "s"}, {"{{", "{"}, {"}}", "}"}};
  std::string text;
  while (!pattern.empty()) {
    bool isWord = false;
    for (const auto& [written, told] : words) {
      if (!pattern.starts_with(written)) continue;
      text += told;
      pattern.remove_prefix(written.size());
      isWord = true;
      break;
    }
    if (isWord) continue;
    text += pattern.front();
    pattern.remove_prefix(1);
  }
  return text;
}

std::string Told(const char* pattern, std::optional<std::int64_t> number) {
  return number ? Filled(pattern, *number) : WithoutNumber(pattern);
}

Term TermOf(const Hypothesis& hypothesis, std::optional<std::int64_t> number) {
  Term term{Told(hypothesis.name, number), Told(hypothesis.sentence, number),
            hypothesis.entry.cause,        Told(hypothesis.entry.example, number),
            hypothesis.entry.place,        {}};
  std::istringstream rows(hypothesis.entry.rows);
  for (std::string row; rows >> row;) term.rows.push_back(row);
  return term;
}

// The number in a name of that pattern, 0 in one that has none; nothing if it is of another.
std::optional<std::int64_t> NumberIn(std::string_view name, std::string_view pattern) {
  const std::size_t open = pattern.find('{');
  if (open == std::string_view::npos)
    return name == pattern ? std::optional<std::int64_t>(0) : std::nullopt;
  const std::size_t close = pattern.find('}');
  const std::string_view before = pattern.substr(0, open);
  const std::string_view behind = pattern.substr(close + 1);
  if (name.size() <= before.size() + behind.size() || !name.starts_with(before) ||
      !name.ends_with(behind))
    return std::nullopt;
  const std::string_view digits =
      name.substr(before.size(), name.size() - before.size() - behind.size());
  std::int64_t number = 0;
  const int base = pattern[close - 1] == 'X' ? 16 : 10;
  const auto [end, error] =
      std::from_chars(digits.data(), digits.data() + digits.size(), number, base);
  const bool isWhole = error == std::errc() && end == digits.data() + digits.size();
  return isWhole ? std::optional(number) : std::nullopt;
}

Term TermOfUnexplained() {
  return {unexplained,
          "No suspect predicts the answers.",
          "The device does something that is not in this list, or several things at once.",
          "c.r = v\nc.r = what no rule here gives",
          "the row's explanation, its reproducer, and what the wrong lanes have in common",
          {"*"}};
}

}  // namespace

std::vector<Term> Glossary() {
  std::vector<Term> terms;
  for (const std::span<const Hypothesis> hypotheses : AllHypotheses()) {
    for (const Hypothesis& hypothesis : hypotheses)
      terms.push_back(TermOf(hypothesis, std::nullopt));
  }
  terms.push_back(TermOfUnexplained());
  return terms;
}

std::vector<Term> TermsOf(std::string_view suspect) {
  if (suspect == unexplained) return {TermOfUnexplained()};
  std::vector<Term> terms;
  while (!suspect.empty()) {
    const std::string_view name = suspect.substr(0, suspect.find('+'));
    suspect.remove_prefix(std::min(name.size() + 1, suspect.size()));
    const std::size_t before = terms.size();
    for (const std::span<const Hypothesis> hypotheses : AllHypotheses()) {
      for (const Hypothesis& hypothesis : hypotheses) {
        // As it stands in the list, too.
        const bool isGeneral = name == WithoutNumber(hypothesis.name);
        const auto number = isGeneral ? std::nullopt : NumberIn(name, hypothesis.name);
        if (isGeneral || number) terms.push_back(TermOf(hypothesis, number));
      }
    }
    if (terms.size() == before) return {};
  }
  return terms;
}

std::string TextOf(const Term& term) {
  const std::size_t end = term.example.find('\n');
  return fmt::format(
      "{}: {}\n"
      "  Probably    {}\n"
      "  In place of {}\n"
      "  it does     {}\n"
      "  Look at     {}\n"
      "  Rows        {}\n",
      term.name, term.sentence, term.cause, term.example.substr(0, end),
      term.example.substr(end + 1), term.place, fmt::join(term.rows, " "));
}

}  // namespace diagnosis
