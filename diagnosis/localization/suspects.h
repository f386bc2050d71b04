#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "diagnosis/verdict/row_result.h"

namespace diagnosis {

/// The suspect of a row that nothing explains.
inline constexpr char unexplained[] = "unexplained";

/// The suspect of a row that failed though it is right, because the device keeps denormals.
inline constexpr char denormalsKept[] = "denormals-kept";

/// What a device may do wrong with unions, and the rows that it explains.
struct Suspect {
  std::string name;     // "b-at-32", "lanes-reversed", ...; two at once are "negated+b-at-32"
  std::string meaning;  // one sentence
  std::vector<std::string> rows;
  std::vector<std::string> alike;  // others that explain the same rows: the data can't tell
  std::size_t counted = 0;         // of the rows, those that none of the fewest before it explains
};

/// A suspect of one row.
struct NamedSuspect {
  std::string name;
  std::string meaning;  // one sentence, with what it leaves open behind it
};

/// What experiments have decided of suspects between which it was open.
struct Decision {
  std::vector<std::string> kept;
  std::vector<std::string> dropped;
  std::size_t experiments = 0;  // that were asked about these
};

/// The suspects of a run.
struct Suspects {
  /// For each wrong row the suspects that predict every one of its lanes, those that explain most
  /// rows of the run first, the simplest first among equals; "unexplained" where none does. A row
  /// that failed but is right has "denormals-kept" if that is why.
  std::map<std::string, std::vector<NamedSuspect>, std::less<>> byRow;
  /// The fewest suspects that explain all of these rows; rows that none explains under
  /// "unexplained", which is last.
  std::vector<Suspect> fewest;

  std::vector<Decision> decisions;

  /// Those of that row, which may be none.
  const std::vector<NamedSuspect>& Of(std::string_view row) const;
};

/// The suspects of the rows of a run on that device.
Suspects SuspectsOf(const std::vector<RowResult>& rows, const Device& device);

}  // namespace diagnosis
