#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "common/workers/jobs.h"
#include "exploration/execution/device.h"
#include "exploration/faults/investigator.h"

namespace exploration {

/// How programs are run.
struct WorkOptions {
  workers::PoolOptions pool;
  double seconds = 60;  ///< That a program may take, and the driver to come up.
  std::string buildOptions;
  std::string compiler;  ///< A command that takes a text's file, in place of a device; or empty.
};

/// What a campaign asks for and tells, all on the caller's thread.
struct CampaignListener {
  /// Once, before the first program is asked for. Of a compiler its command is the name.
  std::function<void(const Device&)> device;
  /// A program to be run; nothing if there are no more for now.
  std::function<std::optional<Candidate>()> next;
  /// Whether it is to be investigated, which is only asked for a finding.
  std::function<bool(const Candidate&, const Outcome&)> ended;
  /// Once for each finding that was investigated; with no fault it has vanished.
  std::function<void(const Finding&, const Fault*)> concluded;
  /// Every second.
  std::function<void()> tick;
  /// Whether it ends now, with what is under way given up.
  std::function<bool()> isOver;
};

/// What is left of a campaign.
struct CampaignEnd {
  workers::PoolEnd pool;
  std::vector<Fault> faults;  ///< Each with how many findings it explains.
  std::size_t open = 0;       ///< Findings that were not investigated to the end.
};

/// Runs programs until there are no more and all findings are investigated.
CampaignEnd Explore(const WorkOptions& options, const CampaignListener& listener);

/// Throws NothingToRunOn if there was no device, no compiler or no worker.
void RefuseNoDevice(const workers::PoolEnd& end);

}  // namespace exploration
