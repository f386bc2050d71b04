#pragma once

#include <bitset>
#include <cstddef>
#include <vector>

#include "diagnosis/localization/candidate.h"
#include "diagnosis/localization/suspects.h"

namespace diagnosis {

/// Takes away what explains no more rows than a plainer suspect of the same row does, if it is not
/// itself a plain one: with so many of its kind, one may fit by chance.
void Sift(Question& question, const Counts& counts);

/// Takes away the suspects that explain a row here and there by chance. What a device does wrong,
/// it does wherever the operation, the shape or the element type is the same: of the wrong rows
/// that share two of these with those that it explains, a suspect must explain two thirds, for two
/// of the three ways to choose two, or for each where it explains one or two rows only.
void KeepCredible(std::vector<Question>& questions);

/// Takes away the suspects that are of none of the fewest kinds which explain the run. A kind stays
/// if as few can be had with it: the data can't tell.
void KeepFewestKinds(std::vector<Question>& questions);

/// Takes away what is not plain where a plain suspect is one of the run's fewest, and this is not:
/// other rows have refuted it.
void KeepPlain(Question& question, const std::vector<Suspect>& fewest);

/// Some of the rows in question, by their numbers.
using RowSet = std::bitset<256>;

/// The fewest sets that hold all of these rows; where that takes too long to find, those that one
/// after the other hold most of what is left. Each row is in a set.
std::vector<std::size_t> FewestOf(const std::vector<RowSet>& sets, RowSet missing);

}  // namespace diagnosis
