#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "exploration/record/run_record.h"

namespace exploration {

/// Which programs a run has drawn: of a seed's the Kth and every Nth behind it.
struct Share {
  std::uint64_t seed = 1;
  std::uint64_t shard = 1;   ///< K
  std::uint64_t shards = 1;  ///< N
};

/// "seed 7, shard 1/4"
std::string Told(const Share& share);

/// Whether some program is in both, if runs are long enough.
bool Overlap(const Share& one, const Share& other);

/// One, but for runs that were merged. Throws text::BadUse if the record does not say.
std::vector<Share> SharesOf(const RunRecord& run);

/// What the options of the runs have in common, and each run's share.
std::map<std::string, std::string> MergedOptions(const std::vector<RunRecord>& runs);

}  // namespace exploration
