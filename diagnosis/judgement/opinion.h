#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "diagnosis/judgement/arithmetic.h"
#include "diagnosis/record/record.h"
#include "diagnosis/record/row.h"

namespace diagnosis {

/// A lane that OpenCL C does not allow.
struct WrongLane {
  int repetition;  // from 1
  int element;
  int lane;
  float answer;                       // the device's
  float right;                        // the answer that is right, or the nearest of those that are
  std::optional<std::uint64_t> ulps;  // between them; none if one of them is a NaN or they lie on
                                      // two sides of zero, and 0 if a zero has the wrong sign
};

/// The second opinion on a row: whether the device is right by OpenCL C 1.2, full profile, in every
/// lane of the ten elements of every repetition whose result came back, from the bytes that it got.
struct Opinion {
  enum class Verdict { right, wrong, unseen };
  Verdict verdict = Verdict::unseen;
  int lanes = 0;                   // judged
  std::vector<WrongLane> wrong;    // in the order of repetition, element, lane
  std::uint64_t greatestUlps = 0;  // of all lanes judged, the right ones too
};

/// "right", "wrong", "unseen"
std::string_view NameOf(Opinion::Verdict verdict);

/// The distance that says something: none from or to a NaN, nor between numbers that have not the
/// same sign.
std::optional<std::uint64_t> DistanceBetween(float answer, float right);

/// Whether all that the row takes went to the device in that repetition and its result came back.
bool IsSeen(const Row& row, const Repetition& repetition);

/// The answers that are right in a lane of a repetition that is seen.
RightAnswers RightAnswersOf(const Row& row, const Repetition& repetition, int element, int lane,
                            const FloatMode& mode);

/// The opinion on one run of a row on that device.
Opinion OpinionOf(const Record& record, const Device& device);

}  // namespace diagnosis
