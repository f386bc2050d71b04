#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace diagnosis {

/// What there is to know of a suspect's name.
struct Term {
  std::string name;               // "b-at-32"; "b-at-N" where no number is given
  std::string sentence;           // what the device does
  std::string cause;              // what the compiler, or the driver, probably does
  std::string example;            // two lines: what is asked for, and what is done in its place
  std::string place;              // where to look
  std::vector<std::string> rows;  // globs of the rows that can show it
};

/// Every name that there is, by subject, the simplest first; "unexplained" is last.
std::vector<Term> Glossary();

/// Of one name as a run tells it: one term, or more where two faults come together
/// ("negated+b-at-32"). Empty if there is no such name.
std::vector<Term> TermsOf(std::string_view suspect);

/// "b-at-32: The float member ...", and what else there is, in lines for a person.
std::string TextOf(const Term& term);

}  // namespace diagnosis
