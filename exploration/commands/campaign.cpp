#include "exploration/commands/campaign.h"

#include <map>
#include <utility>

#include "common/text/bad_use.h"
#include "exploration/execution/runner.h"

namespace exploration {
namespace {

// Where so many findings wait, further programs would only add to them.
constexpr std::size_t mostWaiting = 32;

class Campaign {
 public:
  Campaign(const WorkOptions& options, const CampaignListener& listener)
      : options_(options), listener_(listener) {}
  Campaign(const Campaign&) = delete;
  Campaign& operator=(const Campaign&) = delete;

  CampaignEnd Run() {
    workers::PoolOptions pool = options_.pool;
    pool.timeoutSeconds = options_.seconds;
    pool.protocol = deviceRunner.protocol;
    workers::PoolListener listener;
    listener.next = [this] { return Next(); };
    listener.device = [this](const std::string& said) { Begin(DeviceFrom(said)); };
    listener.ended = [this](const workers::Job& job, const workers::Answer& answer) {
      return Ended(job.number, answer);
    };
    listener.tick = listener_.tick;
    CampaignEnd end;
    end.pool = RunJobs(pool, listener);
    if (investigator_) end.faults = investigator_->Faults();
    end.open = added_ - concluded_;
    return end;
  }

 private:
  struct Flight {
    Task task;
    std::optional<Program> program;  // of a program that was drawn
    std::size_t number = 0;          // the investigator's, of one that was not
  };

  void Begin(const Device& device) {
    listener_.device(device);
    InvestigationOptions options;
    options.buildOptions = options_.buildOptions;
    options.seconds = options_.seconds;
    options.device = device;
    options.limits.atOnce = options_.pool.workers;
    investigator_.emplace(options, [this](const Finding& finding, const Fault* fault) {
      ++concluded_;
      listener_.concluded(finding, fault);
    });
  }

  std::optional<workers::Job> Next() {
    if (listener_.isOver && listener_.isOver()) return std::nullopt;
    if (!investigator_) return FirstJob();
    if (auto next = investigator_->Next())
      return JobOf({std::move(next->task), std::nullopt, next->number});
    if (added_ - concluded_ >= mostWaiting) return std::nullopt;
    std::optional<Candidate> next = listener_.next();
    if (!next) return std::nullopt;
    Task task;
    task.program = std::move(next->runnable);
    task.buildOptions = options_.buildOptions;
    task.seconds = options_.seconds;
    return JobOf({std::move(task), std::move(next->program), 0});
  }

  // Which programs the device can run is known when it has come up, for which a worker must have
  // something to do.
  std::optional<workers::Job> FirstJob() {
    if (std::exchange(hasFirst_, true)) return std::nullopt;
    Task task;
    task.program.text = "__kernel void test(__global int *out)\n{\n}\n";
    task.program.buffers = {{"out", std::vector<std::uint8_t>(4), true, {}, {}, {}}};
    task.seconds = options_.seconds;
    return JobOf({std::move(task), std::nullopt, 0});
  }

  workers::Job JobOf(Flight flight) {
    workers::Job job;
    job.number = jobs_++;
    job.task = Packed(flight.task);
    job.seconds = options_.seconds;
    flights_.emplace(job.number, std::move(flight));
    return job;
  }

  workers::Afterwards Ended(std::uint64_t number, const workers::Answer& answer) {
    const auto found = flights_.find(number);
    Flight flight = std::move(found->second);
    flights_.erase(found);
    if (number == 0) return workers::Afterwards::keepRunner;  // the first job
    Outcome outcome = Judged(flight.task, answer);
    const Outcome::Kind kind = outcome.kind;
    if (!flight.program) {
      investigator_->Ended(flight.number, std::move(outcome));
    } else {
      Candidate candidate{std::move(*flight.program), std::move(flight.task.program)};
      if (listener_.ended(candidate, outcome) && outcome.IsFinding()) {
        ++added_;
        investigator_->Add(
            {std::move(candidate.program), std::move(candidate.runnable), std::move(outcome)});
      }
    }
    // What else has gone wrong in that process is not to be the next program's.
    const bool isSound = kind == Outcome::Kind::right || kind == Outcome::Kind::wrongAnswer ||
                         kind == Outcome::Kind::refused;
    return isSound ? workers::Afterwards::keepRunner : workers::Afterwards::endRunner;
  }

  const WorkOptions& options_;
  const CampaignListener& listener_;
  std::optional<Investigator> investigator_;  // once the device is known
  std::map<std::uint64_t, Flight> flights_;
  std::uint64_t jobs_ = 0;
  bool hasFirst_ = false;
  std::size_t added_ = 0;
  std::size_t concluded_ = 0;
};

}  // namespace

CampaignEnd Explore(const WorkOptions& options, const CampaignListener& listener) {
  return Campaign(options, listener).Run();
}

void RefuseNoDevice(const workers::PoolEnd& end) {
  if (end.kind == workers::PoolEnd::Kind::noDevice || end.kind == workers::PoolEnd::Kind::noWorker)
    throw text::NothingToRunOn(end.reason);
}

}  // namespace exploration
