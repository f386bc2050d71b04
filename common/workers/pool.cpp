#include <uv.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <deque>
#include <exception>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "common/workers/jobs.h"
#include "common/workers/worker_process.h"

namespace workers {
namespace {

// How often in a row workers may end before they have come up.
constexpr int workersBeforeGivingUp = 3;
constexpr std::uint64_t millisecondsOfTick = 1'000;
constexpr int signalsThatInterrupt[] = {SIGINT, SIGTERM, SIGHUP};

// A job that is not over.
struct Pending {
  Job job;
  std::string lostFirst;  // how the first worker was lost, if it was
};

class Pool final : public WorkerListener {
 public:
  Pool(const PoolOptions& options, const PoolListener& listener)
      : options_(options), listener_(listener), command_(options.launcher) {
    command_.push_back(options.program.empty()
                           ? std::filesystem::read_symlink("/proc/self/exe").string()
                           : options.program);
    command_.push_back(options.word);
    slots_.resize(static_cast<std::size_t>(std::max(options.workers, 1)));
  }
  Pool(const Pool&) = delete;
  Pool& operator=(const Pool&) = delete;
  ~Pool() = default;

  PoolEnd Run() {
    if (uv_loop_init(&loop_) != 0) throw std::runtime_error("no event loop to be had");
    // To write to a worker that is gone is no reason to end.
    const auto formerPipe = std::signal(SIGPIPE, SIG_IGN);
    for (std::size_t i = 0; i < signals_.size(); ++i) Listen(signals_[i], signalsThatInterrupt[i]);
    uv_timer_init(&loop_, &ticks_);
    ticks_.data = this;
    uv_timer_start(
        &ticks_,
        [](uv_timer_t* timer) {
          auto& pool = *static_cast<Pool*>(timer->data);
          pool.Guarded([&pool] {
            if (pool.listener_.tick) pool.listener_.tick();
          });
        },
        millisecondsOfTick, millisecondsOfTick);
    uv_unref(reinterpret_cast<uv_handle_t*>(&ticks_));
    GiveWork();
    uv_run(&loop_, UV_RUN_DEFAULT);
    uv_close(reinterpret_cast<uv_handle_t*>(&ticks_), nullptr);
    for (uv_signal_t& signal : signals_) uv_close(reinterpret_cast<uv_handle_t*>(&signal), nullptr);
    uv_run(&loop_, UV_RUN_DEFAULT);
    uv_loop_close(&loop_);
    std::signal(SIGPIPE, formerPipe);
    if (failure_) std::rethrow_exception(failure_);
    return end_;
  }

 private:
  // A place for one worker at a time.
  struct Slot {
    std::unique_ptr<WorkerProcess> worker;
    std::optional<Pending> flight;  // what the worker is at
    bool endsRunner = false;        // before the next job
    int failures = 0;               // in a row
    bool isGivenUp = false;

    bool IsIdle() const { return worker && worker->IsUp() && !worker->IsLeaving() && !flight; }
    bool IsComing() const { return worker && !worker->IsUp(); }
    bool CanStart() const { return !worker && !isGivenUp; }
  };

  void Listen(uv_signal_t& handle, int signal) {
    uv_signal_init(&loop_, &handle);
    handle.data = this;
    struct sigaction former {};
    sigaction(signal, nullptr, &former);
    // Under nohup, whoever hangs up does not end the run.
    if (signal == SIGHUP && former.sa_handler == SIG_IGN) return;
    uv_signal_start(
        &handle,
        [](uv_signal_t* caught, int number) {
          static_cast<Pool*>(caught->data)->Interrupt(number);
        },
        signal);
    uv_unref(reinterpret_cast<uv_handle_t*>(&handle));
  }

  // Gives a job to each worker that has none, and starts workers where there are jobs for them.
  void GiveWork() {
    for (Slot& slot : slots_) {
      if (!slot.IsIdle()) continue;
      if (!HasPending(1)) break;
      slot.flight = std::move(pending_.front());
      pending_.pop_front();
      if (slot.flight->lostFirst.empty()) Guarded([&] { Started(slot.flight->job); });
      if (HasStopped()) {
        Over(*std::exchange(slot.flight, std::nullopt), NotRun(end_.reason));
        return;
      }
      slot.worker->Do(slot.flight->job,
                      slot.flight->job.freshRunner || std::exchange(slot.endsRunner, false));
    }
    auto coming = static_cast<std::size_t>(std::ranges::count_if(slots_, &Slot::IsComing));
    for (std::size_t number = 0; number < slots_.size(); ++number) {
      if (!slots_[number].CanStart()) continue;
      if (!HasPending(coming + 1)) break;
      slots_[number].worker =
          std::make_unique<WorkerProcess>(*this, number, loop_, command_, options_);
      ++coming;
    }
    if (std::ranges::any_of(slots_, [](const Slot& slot) { return slot.flight.has_value(); }))
      return;
    if (HasPending(1)) return;
    for (Slot& slot : slots_)
      if (slot.IsIdle()) slot.worker->Finish();
  }

  // Whether so many jobs wait for a worker; asks for them if not.
  bool HasPending(std::size_t count) {
    while (pending_.size() < count && !HasStopped()) {
      std::optional<Job> job;
      Guarded([&] { job = listener_.next(); });
      if (!job) break;
      if (job->task.size() > longestTask) {
        Over({std::move(*job), {}}, NotRun("the task is too long"));
      } else {
        pending_.push_back({std::move(*job), {}});
      }
    }
    return pending_.size() >= count && !HasStopped();
  }

  void Started(const Job& job) const {
    if (listener_.started) listener_.started(job);
  }

  static Answer NotRun(const std::string& reason) {
    Answer answer;
    answer.reason = reason;
    return answer;
  }

  void CameUp(std::size_t slot, const std::string& device) override {
    slots_[slot].failures = 0;
    if (!std::exchange(sawDevice_, true))
      Guarded([&] {
        if (listener_.device) listener_.device(device);
      });
    GiveWork();
  }

  void SawNoDevice(const std::string& reason) override {
    if (!sawDevice_) Stop({.kind = PoolEnd::Kind::noDevice, .reason = reason});
  }

  void Ended(std::size_t number, Answer answer) override {
    Slot& slot = slots_[number];
    if (!slot.flight) throw std::runtime_error("an answer to no question");
    const Pending pending = *std::exchange(slot.flight, std::nullopt);
    slot.endsRunner = Over(pending, std::move(answer)) == Afterwards::endRunner;
    GiveWork();
  }

  Afterwards Over(const Pending& pending, Answer answer) {
    answer.lostFirst = pending.lostFirst;
    Afterwards afterwards = Afterwards::keepRunner;
    Guarded([&] { afterwards = listener_.ended(pending.job, std::move(answer)); });
    return afterwards;
  }

  void Gone(std::size_t number) override {
    Slot& slot = slots_[number];
    const std::unique_ptr<WorkerProcess> worker = std::move(slot.worker);
    const std::string reason = worker->Reason();
    if (slot.flight) Lose(*std::exchange(slot.flight, std::nullopt), *worker, reason);
    if (HasStopped()) return;
    if (!worker->IsUp()) ++slot.failures;
    slot.isGivenUp = worker->IsBeyondHelp() || slot.failures == workersBeforeGivingUp;
    const bool hasOther =
        std::ranges::any_of(slots_, [](const Slot& other) { return other.worker != nullptr; });
    if (slot.isGivenUp && !hasOther && HasPending(1))
      return Stop({.kind = PoolEnd::Kind::noWorker, .reason = reason});
    GiveWork();
  }

  // Says what became of the job that was under way in a worker that is gone.
  void Lose(Pending pending, const WorkerProcess& worker, const std::string& reason) {
    Answer answer = NotRun(HasStopped() ? end_.reason : reason);
    // One that is leaving has no runner any more, which is no fault of this job.
    if (!HasStopped() && !worker.IsLeaving()) {
      if (!options_.launcher.empty() && pending.lostFirst.empty()) {
        pending.lostFirst = reason;
        pending_.push_front(std::move(pending));
        return;
      }
      // With no way to it on which it could have been lost, it has only taken too long.
      const bool isLate = options_.launcher.empty() && worker.IsHung();
      answer.ending = isLate ? Ending::timedOut : Ending::lost;
    }
    Over(pending, std::move(answer));
  }

  void Interrupt(int signal) {
    if (HasStopped()) {
      for (const Slot& slot : slots_)
        if (slot.worker) slot.worker->Kill();
    }
    Stop({.kind = PoolEnd::Kind::interrupted, .signal = signal, .reason = "interrupted"});
  }

  bool HasStopped() const { return end_.kind != PoolEnd::Kind::finished; }

  // No more jobs are begun, and those under way are given up.
  void Stop(const PoolEnd& end) {
    if (HasStopped()) return;
    end_ = end;
    for (const Slot& slot : slots_)
      if (slot.worker) slot.worker->Abandon();
    for (Pending& pending : std::exchange(pending_, {})) {
      Answer answer = NotRun(pending.lostFirst.empty() ? end.reason : pending.lostFirst);
      if (!pending.lostFirst.empty()) answer.ending = Ending::lost;
      pending.lostFirst.clear();
      Over(pending, std::move(answer));
    }
  }

  // Calls the listener. What it throws ends the run, and leaves it when nothing is under way.
  void Guarded(const std::function<void()>& call) {
    if (failure_) return;
    try {
      call();
    } catch (...) {
      failure_ = std::current_exception();
      Stop({.kind = PoolEnd::Kind::interrupted, .reason = "given up"});
    }
  }

  const PoolOptions& options_;
  const PoolListener& listener_;
  std::vector<std::string> command_;
  std::deque<Pending> pending_;  // that no worker is at
  std::vector<Slot> slots_;
  uv_loop_t loop_{};
  std::array<uv_signal_t, std::size(signalsThatInterrupt)> signals_{};
  uv_timer_t ticks_{};
  bool sawDevice_ = false;
  PoolEnd end_;  // as soon as it is not `finished`, the run has stopped
  std::exception_ptr failure_;
};

}  // namespace

PoolEnd RunJobs(const PoolOptions& options, const PoolListener& listener) {
  return Pool(options, listener).Run();
}

}  // namespace workers
