#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "diagnosis/judgement/opinion.h"
#include "diagnosis/localization/suspects.h"
#include "diagnosis/record/record.h"
#include "diagnosis/verdict/category.h"

namespace diagnosis {

/// A byte of a union and the store that wrote it last.
struct StoredByte {
  std::uint8_t value;
  std::string store;  // "h[0]", "a[1]", ...; empty if none reached it
};

/// A value as a person wants it.
struct NamedValue {
  std::string what;   // "a[2] as short", "b[2] as float", "reference", "device", ...
  std::string bits;   // "0x801D276E"
  std::string value;  // "-2.67734e-39"
  std::string hex;    // "-0x1.d276ep-128"; empty for integers
  std::string kind;   // "NaN", "infinite", "denormal" or empty
};

/// One wrong lane in full, or one that the suite rejects though it is right.
struct ExplainedLane {
  WrongLane lane;
  std::vector<std::string> storesA;  // the stores into this union, in their order
  std::vector<std::string> storesB;
  std::vector<StoredByte> bytesA;      // of the whole union
  std::vector<StoredByte> bytesB;      // empty with one input
  std::vector<NamedValue> values;      // integer view, float view, reference, answer
  std::vector<std::string> reference;  // how it came about, a step a line
  std::string suiteRule;               // what the suite's rule says of this lane
  std::string openClRule;
  bool isRight = false;  // by OpenCL's rules
  std::string title;     // "wrong lane", or what else makes it the first to be told of
};

/// A row that is not passed and right.
struct Explanation {
  std::string row;
  std::string status;                     // "Fail: ..." with the detail
  Category category = Category::missing;  // of the first run
  Opinion opinion;
  std::vector<ExplainedLane> first;  // that which the suite's line names, else the first such lane;
                                     // empty if there is none
  std::vector<std::string> others;   // the others, a line each
  std::vector<std::string> suspects;     // "name: meaning"
  std::vector<std::string> experiments;  // on this row, several lines each
  std::vector<std::string> notes;        // what the row, the compiler and the driver had to say
};

Explanation Explain(const Record& record, const Device& device, const Suspects& suspects);

/// How far the answer is from a right one: "3 units in the last place off", "the other sign".
std::string DistanceOf(const WrongLane& lane);

/// "repetition 1, element 2, lane 3".
std::string WhereOf(int repetition, int element, int lane);

/// The explanation as `triage explain` prints it, line ends included, with no more than
/// `mostOthers` of the other lanes.
std::string TextOf(const Explanation& explanation, std::size_t mostOthers = 40);

}  // namespace diagnosis
