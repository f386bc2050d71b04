#include "exploration/record/share.h"

#include <fmt/format.h>

#include <numeric>
#include <regex>
#include <stdexcept>

#include "common/text/bad_use.h"

namespace exploration {
namespace {

// Of merged runs alone: what each of them has drawn.
constexpr const char* optionOfShares = "runs";

std::string ToldOf(const RunRecord& run) {
  if (const auto shares = run.options.find(optionOfShares); shares != run.options.end())
    return shares->second;
  const auto seed = run.options.find("seed");
  const auto shard = run.options.find("shard");
  if (seed == run.options.end() || shard == run.options.end()) return "";
  return fmt::format("seed {}, shard {}", seed->second, shard->second);
}

}  // namespace

std::string Told(const Share& share) {
  return fmt::format("seed {}, shard {}/{}", share.seed, share.shard, share.shards);
}

bool Overlap(const Share& one, const Share& other) {
  const std::uint64_t step = std::gcd(one.shards, other.shards);
  return one.seed == other.seed && one.shard % step == other.shard % step;
}

std::vector<Share> SharesOf(const RunRecord& run) {
  const std::string told = ToldOf(run);
  const std::regex pattern(R"(seed (\d{1,20}), shard (\d{1,7})/([1-9]\d{0,6}))");
  std::vector<Share> shares;
  try {
    for (std::sregex_iterator one(told.begin(), told.end(), pattern), end; one != end; ++one)
      shares.push_back({std::stoull((*one)[1]), std::stoull((*one)[2]), std::stoull((*one)[3])});
  } catch (const std::out_of_range&) {
    shares.clear();
  }
  if (shares.empty()) throw text::BadUse("its options do not say which programs it has drawn");
  return shares;
}

std::map<std::string, std::string> MergedOptions(const std::vector<RunRecord>& runs) {
  std::map<std::string, std::string> options = runs.front().options;
  std::string shares;
  for (const RunRecord& run : runs) {
    std::erase_if(options, [&run](const auto& option) {
      const auto same = run.options.find(option.first);
      return same == run.options.end() || same->second != option.second;
    });
    shares += (shares.empty() ? "" : "; ") + ToldOf(run);
  }
  options[optionOfShares] = shares;
  return options;
}

}  // namespace exploration
