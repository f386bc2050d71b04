#include "exploration/commands/campaign.h"

#include <fmt/format.h>

#include <iterator>
#include <map>
#include <utility>

#include "common/text/bad_use.h"
#include "common/text/text.h"
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
    if (IsCompiler()) {
      pool.protocol = compilerRunner.protocol;
      pool.word = compilerWord;
      // Its command is the caller's, who has named it from where he stands.
      pool.folder.clear();
    }
    workers::PoolListener listener;
    listener.next = [this] { return Next(); };
    listener.device = [this](const std::string& said) {
      if (!IsCompiler()) Begin(DeviceFrom(said));
    };
    listener.ended = [this](const workers::Job& job, const workers::Answer& answer) {
      return Ended(job.number, answer);
    };
    listener.tick = listener_.tick;
    CampaignEnd end;
    end.pool = RunJobs(pool, listener);
    if (end.pool.kind == workers::PoolEnd::Kind::finished && !unusable_.empty())
      end.pool = {workers::PoolEnd::Kind::noDevice, 0, unusable_};
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

  bool IsCompiler() const { return !options_.compiler.empty(); }

  void Begin(const Device& device) {
    listener_.device(device);
    InvestigationOptions options;
    options.buildOptions = options_.buildOptions;
    options.compiler = options_.compiler;
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
    if (probes_ < ProbesOfAll()) return Probe();
    if (!investigator_) return std::nullopt;
    if (auto next = investigator_->Next())
      return JobOf({std::move(next->task), std::nullopt, next->number});
    if (added_ - concluded_ >= mostWaiting) return std::nullopt;
    std::optional<Candidate> next = listener_.next();
    if (!next) return std::nullopt;
    Task task;
    task.program = std::move(next->runnable);
    task.buildOptions = options_.buildOptions;
    task.compiler = options_.compiler;
    task.seconds = options_.seconds;
    return JobOf({std::move(task), std::move(next->program), 0});
  }

  // Which programs the device can run is known when it has come up, for which a worker must have
  // something to do. What a compiler takes it doesn't say itself.
  static constexpr const char* probes[] = {
      "__kernel void test(__global int *out)\n{\n}\n",
      "#pragma OPENCL EXTENSION cl_khr_fp64 : enable\n"
      "__kernel void test(__global double *out)\n{\n  out[0] = out[0] + 1.0;\n}\n",
      "#pragma OPENCL EXTENSION cl_khr_fp16 : enable\n"
      "__kernel void test(__global half *out)\n{\n  half value = out[0];\n  out[0] = value;\n}\n"};

  std::uint64_t ProbesOfAll() const { return IsCompiler() ? std::size(probes) : 1; }

  std::optional<workers::Job> Probe() {
    // The others would only show the same.
    if (!unusable_.empty()) return std::nullopt;
    Task task;
    task.program.text = probes[probes_++];
    task.program.buffers = {{"out", std::vector<std::uint8_t>(8), true, {}, {}, {}}};
    task.compiler = options_.compiler;
    task.seconds = options_.seconds;
    return JobOf({std::move(task), std::nullopt, 0});
  }

  void ProbeEnded(std::uint64_t number, const Outcome& outcome) {
    const bool isRight = outcome.kind == Outcome::Kind::right;
    if (!IsCompiler()) return;
    if (number == 0 && outcome.kind == Outcome::Kind::notRun) {
      unusable_ = outcome.text;
    } else if (number == 0 && !isRight) {
      const std::string details = text::PrintableLine(outcome.text, 300);
      unusable_ = fmt::format("'{}' does not compile the plainest kernel: {}{}", options_.compiler,
                              Told(outcome), details.empty() ? "" : ": " + details);
    }
    compiler_.name = options_.compiler;
    if (number == 1) compiler_.hasDouble = isRight;
    if (number == 2) compiler_.hasHalf = isRight;
    if (++probesEnded_ == ProbesOfAll() && unusable_.empty()) Begin(compiler_);
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
    Outcome outcome = Judged(flight.task, answer);
    if (number < ProbesOfAll()) {
      ProbeEnded(number, outcome);
      return workers::Afterwards::keepRunner;
    }
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
  std::uint64_t probes_ = 0;
  std::uint64_t probesEnded_ = 0;
  std::string unusable_;  // why the compiler is
  Device compiler_;
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
