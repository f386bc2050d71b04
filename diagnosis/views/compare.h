#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "diagnosis/record/record.h"
#include "diagnosis/record/run_folder.h"
#include "diagnosis/verdict/row_result.h"

namespace diagnosis {

/// "Fail, wrong in 12 of 400 lanes, 3 ulps at most", "Crash: SIGSEGV in repetition 2", ...
std::string SummaryOf(const RowResult& outcome);

/// How a row's later outcome compares with the one before.
enum class Comparison {
  same,
  otherwise,  // differs, yet stands the same: other lanes, another distance, another detail
  oneOnly,    // run in one of the two only
  otherData,  // the row stored other bytes, so that neither outcome tells of the other; a failing
              // build, which no data reaches, is compared all the same
  better,
  worse,
};

/// By rank; between two wrong outcomes of the same rank by wrong lanes, then by the
/// greatest distance. A distance within what OpenCL allows makes a row neither better nor worse.
Comparison ComparisonOf(const RowResult& before, const RowResult& after);

/// A row in every run; no outcome where a run has no record of it.
struct ComparedRow {
  std::string name;
  std::vector<std::optional<RowResult>> outcomes;
  Comparison comparison;  // the gravest of any run against the first
};

/// A run, and what a person calls it: the folder that it was read from.
struct NamedRun {
  std::string name;
  Run run;
};

/// The runs that were written into the folders. Throws BadUse.
std::vector<NamedRun> ReadRuns(const std::vector<std::string>& folders, InUse inUse = InUse::told);

/// All rows of the runs, in the order of the matrix. The runs outlive it.
std::vector<ComparedRow> Compare(const std::vector<NamedRun>& runs);

/// Whether the row stands alike in every run; on other data there is nothing to tell of it then.
bool CameToTheSame(const ComparedRow& row);

/// What else than the device's words differs between the first run and each other, a line each: "B
/// is of other layers: ... in place of ...".
std::vector<std::string> OtherProvenance(const std::vector<NamedRun>& runs);

/// What differs between two runs, for a terminal.
std::string DifferencesOf(const std::vector<NamedRun>& runs, const std::vector<ComparedRow>& rows);

}  // namespace diagnosis
