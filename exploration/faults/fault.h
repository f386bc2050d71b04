#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "exploration/execution/outcome.h"
#include "exploration/shrinking/shrink.h"

namespace exploration {

/// A program that went wrong.
struct Finding {
  Program program;
  RunnableProgram runnable;
  Outcome outcome;
};

/// In what way a program goes wrong, of two of which one can be held against the other.
struct Symptom {
  Outcome::Kind kind = Outcome::Kind::right;
  /// Of a wrong answer how its first wrong value differs: "zero", "not stored", "another value's",
  /// "shifted", "wrongly extended", "other"; otherwise the call, the code, what the log says.
  std::string how;
  /// `how` is a message of the compiler's or driver's own, which tells a fault by itself.
  bool isTold = false;

  bool operator==(const Symptom&) const = default;
};
Symptom SymptomOf(const RunnableProgram& program, const Outcome& outcome);

/// Something else under which a fault was tried.
struct Setting {
  std::string name;    ///< "-cl-opt-disable", "in local memory", "work-groups of 1".
  std::string result;  ///< "goes away", "stays", or why it could not be tried.
};

/// What findings have in common.
struct Fault {
  std::string name;   ///< Stable, for a folder: "wrong-answer-nested-unions-1f3a".
  std::string title;  ///< "wrong answer: ...", in the language's terms.
  Symptom symptom;
  /// Of the shrunken program, but for the address spaces if it stays in another; those that other
  /// findings of it, shrunken too, do without are left out.
  std::vector<std::string> features;
  Finding first;  ///< What it was first found with, as it was drawn.
  Finding shrunken;
  bool isComplete = false;  ///< No step makes the shrunken program smaller.
  std::vector<Setting> settings;
  std::size_t findings = 1;  ///< How many belong to it.
};

/// Two are one fault if they go wrong in the same way and what is left of one has the features of
/// the other, and perhaps more: shrinking may end where no single step makes less of it. How a
/// wrong answer is wrong does not count, which depends on the values that are left, nor what
/// something happens to if there is a feature that says what happens. Where the compiler or driver
/// itself says what went wrong, the same message is enough.
bool IsSame(const Fault& one, const Fault& other);

/// The features that stand in both, in the order of the first.
std::vector<std::string> InBoth(const std::vector<std::string>& some,
                                const std::vector<std::string>& others);

/// Of the features those that say what happens, rather than what it happens to: operations and
/// attributes, and neither types nor memories.
std::vector<std::string> TellingFeatures(const std::vector<std::string>& features);

/// Whether the feature is an address space.
bool IsMemory(std::string_view feature);

/// From the symptom and the features. A name does not depend on how an answer is wrong.
std::string TitleOf(const Symptom& symptom, const std::vector<std::string>& features);
std::string NameOf(const Symptom& symptom, const std::vector<std::string>& features);

}  // namespace exploration
