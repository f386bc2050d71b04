#include "common/workers/pool.h"

#include <fmt/format.h>
#include <uv.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstring>
#include <deque>
#include <exception>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <variant>

#include "diagnosis/capture/journal.h"
#include "diagnosis/execution/messages.h"
#include "diagnosis/record/row_facts.h"

namespace diagnosis {
namespace {

// How often in a row workers may end before they have come up.
constexpr int workersBeforeGivingUp = 3;
// What a worker and the way to it get beyond the row's own time before they count as hung.
constexpr double graceSeconds = 15;
// How long a worker may take over its end when it has no more to do, when it is stopped, and to
// be read out when its process is gone.
constexpr std::uint64_t millisecondsToFinish = 10'000;
constexpr std::uint64_t millisecondsToStop = 1'000;
constexpr std::uint64_t millisecondsToReadOut = 500;
constexpr std::uint64_t millisecondsOfTick = 1'000;

// A job that is not over.
struct Pending {
  const Job* job;
  std::string lost;  // how the first worker was lost, if it was
};

// The end of what a command said, for a person: one line.
std::string_view LastLine(std::string_view text) {
  const std::size_t end = text.find_last_not_of(" \r\n");
  text = text.substr(0, end == std::string_view::npos ? 0 : end + 1);
  return text.substr(text.find_last_of("\r\n") + 1);
}

// What a worker tells the pool it is of.
class WorkersPool {
 public:
  virtual void CameUp(std::size_t slot, const Device& device) = 0;
  virtual void SawNoDevice(const std::string& reason) = 0;
  virtual void Ended(std::size_t slot, const Pending& pending, Ended ended) = 0;
  // The worker is gone for good, and may be deleted.
  virtual void Gone(std::size_t slot) = 0;

 protected:
  ~WorkersPool() = default;
};

// A process that runs rows, from its start until nothing of it is left in the loop.
class Worker {
 public:
  Worker(WorkersPool& pool, std::size_t slot, uv_loop_t& loop,
         const std::vector<std::string>& command, const PoolOptions& options)
      : pool_(pool),
        slot_(slot),
        command_(command.front()),
        folder_(options.folder),
        timeoutSeconds_(options.timeoutSeconds) {
    uv_timer_init(&loop, &timer_);
    for (uv_pipe_t* const pipe : {&in_, &out_, &err_}) uv_pipe_init(&loop, pipe, 0);
    timer_.data = in_.data = out_.data = err_.data = process_.data = this;
    Spawn(loop, command);
  }
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

  void Do(Pending pending, const Task& task) {
    SetTimer(timeoutSeconds_ * task.passes + graceSeconds);
    flight_ = std::move(pending);
    Say(Packed(Order(task)));
  }

  // No more rows; one that is under way is given up.
  void Finish(std::uint64_t milliseconds) {
    if (state_ == State::finishing || exited_) return;
    state_ = State::finishing;
    Close(in_);
    uv_timer_start(&timer_, OnTimer, milliseconds, 0);
  }

  void Kill() {
    if (!exited_) uv_process_kill(&process_, SIGKILL);
  }

  bool CameUp() const { return cameUp_; }
  bool Finishing() const { return state_ == State::finishing; }
  bool Hung() const { return state_ == State::hung; }
  std::optional<Pending>& Flight() { return flight_; }
  int Signal() const { return signal_; }
  int Status() const { return status_; }

  // Why there is no such worker any more, for a person. `final` if another try is useless.
  std::string Reason(bool& final) const {
    final = true;
    if (!noRunner_.empty()) return noRunner_;
    if (spawnError_ != 0)
      return fmt::format("'{}' cannot be started: {}", command_, uv_strerror(spawnError_));
    if (Hung()) return fmt::format("'{}' does not answer", command_);
    final = false;
    std::string reason = !nonsense_.empty() ? fmt::format("'{}' sent {}", command_, nonsense_)
                         : signal_ != 0
                             ? fmt::format("'{}' ended with signal {}", command_, signal_)
                             : fmt::format("'{}' ended with status {}", command_, status_);
    const std::string_view words = LastLine(words_);
    if (!words.empty()) reason += fmt::format(": {}", words);
    return reason;
  }

 private:
  enum class State { working, finishing, hung };

  void Spawn(uv_loop_t& loop, const std::vector<std::string>& command) {
    std::vector<std::string> words = command;
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);

    const auto create = [](unsigned direction) {
      return static_cast<uv_stdio_flags>(UV_CREATE_PIPE | direction);
    };
    std::array<uv_stdio_container_t, 3> stdio{};
    stdio[0] = {create(UV_READABLE_PIPE), {reinterpret_cast<uv_stream_t*>(&in_)}};
    stdio[1] = {create(UV_WRITABLE_PIPE), {reinterpret_cast<uv_stream_t*>(&out_)}};
    stdio[2] = {create(UV_WRITABLE_PIPE), {reinterpret_cast<uv_stream_t*>(&err_)}};
    uv_process_options_t options{};
    options.exit_cb = [](uv_process_t* process, std::int64_t status, int signal) {
      static_cast<Worker*>(process->data)->Exited(status, signal);
    };
    options.file = arguments.front();
    options.args = arguments.data();
    if (!folder_.empty()) options.cwd = folder_.c_str();
    options.stdio = stdio.data();
    options.stdio_count = static_cast<int>(stdio.size());
    spawnError_ = uv_spawn(&loop, &process_, &options);
    if (spawnError_ != 0) {
      exited_ = true;
      Conclude();
      return;
    }
    const auto allocate = [](uv_handle_t* handle, std::size_t, uv_buf_t* buffer) {
      Worker& worker = *static_cast<Worker*>(handle->data);
      *buffer = uv_buf_init(worker.buffer_.data(), static_cast<unsigned>(worker.buffer_.size()));
    };
    uv_read_start(reinterpret_cast<uv_stream_t*>(&out_), allocate,
                  [](uv_stream_t* stream, ssize_t size, const uv_buf_t* buffer) {
                    static_cast<Worker*>(stream->data)->Heard(size, buffer->base);
                  });
    uv_read_start(reinterpret_cast<uv_stream_t*>(&err_), allocate,
                  [](uv_stream_t* stream, ssize_t size, const uv_buf_t* buffer) {
                    static_cast<Worker*>(stream->data)->HeardWords(size, buffer->base);
                  });
    SetTimer(timeoutSeconds_ + graceSeconds);
    Say(Packed(Order(Begin{timeoutSeconds_})));
  }

  void SetTimer(double seconds) {
    uv_timer_start(&timer_, OnTimer, static_cast<std::uint64_t>(seconds * 1000), 0);
  }

  static void OnTimer(uv_timer_t* timer) {
    Worker& worker = *static_cast<Worker*>(timer->data);
    if (worker.exited_) return worker.Conclude();
    if (worker.state_ != State::finishing) worker.state_ = State::hung;
    worker.Kill();
  }

  void Say(std::string_view packed) {
    struct Write {
      uv_write_t request;
      std::string bytes;
    };
    auto write = std::make_unique<Write>();
    write->bytes = Framed(packed);
    write->request.data = write.get();
    uv_buf_t buffer = uv_buf_init(write->bytes.data(), static_cast<unsigned>(write->bytes.size()));
    // A worker that hears nothing any more is about to end, which is noticed elsewhere.
    const int error =
        uv_write(&write->request, reinterpret_cast<uv_stream_t*>(&in_), &buffer, 1,
                 [](uv_write_t* request, int) {
                   const std::unique_ptr<Write> done(static_cast<Write*>(request->data));
                 });
    if (error == 0) static_cast<void>(write.release());
  }

  void Heard(ssize_t size, const char* bytes) {
    if (size < 0) {
      readOut_ = true;
      Close(out_);
      if (exited_) return Conclude();
      // A worker that says no more is at its end, or else of no use.
      if (state_ == State::working) uv_timer_start(&timer_, OnTimer, millisecondsToStop, 0);
      return;
    }
    try {
      frames_.Feed({bytes, static_cast<std::size_t>(size)});
      while (const std::optional<std::string> message = frames_.Next())
        std::visit([this](auto&& answer) { Take(std::forward<decltype(answer)>(answer)); },
                   AnswerFrom(*message));
    } catch (const std::runtime_error& error) {
      nonsense_ = error.what();
      Kill();
    }
  }

  void HeardWords(ssize_t size, const char* bytes) {
    if (size < 0) return Close(err_);
    constexpr std::size_t enough = 2048;
    words_.append(bytes, static_cast<std::size_t>(size));
    if (words_.size() > enough) words_.erase(0, words_.size() - enough);
  }

  void Take(const Device& device) {
    cameUp_ = true;
    uv_timer_stop(&timer_);
    pool_.CameUp(slot_, device);
  }

  void Take(const NoDevice& noDevice) {
    noRunner_ = noDevice.reason;
    pool_.SawNoDevice(noRunner_);
    Finish(millisecondsToStop);
  }

  void Take(const NoRunner& noRunner) {
    noRunner_ = noRunner.reason;
    Finish(millisecondsToStop);
  }

  void Take(diagnosis::Ended ended) {
    if (!flight_) throw std::runtime_error("an answer to no question");
    uv_timer_stop(&timer_);
    const Pending pending = *std::exchange(flight_, std::nullopt);
    pool_.Ended(slot_, pending, std::move(ended));
  }

  void Exited(std::int64_t status, int signal) {
    exited_ = true;
    status_ = static_cast<int>(status);
    signal_ = signal;
    if (readOut_) return Conclude();
    uv_timer_start(&timer_, OnTimer, millisecondsToReadOut, 0);
  }

  // Leaves the loop; the last handle to be closed takes the worker with it.
  void Conclude() {
    Close(in_);
    Close(out_);
    Close(err_);
    Close(timer_);
    Close(process_);
  }

  template <class Handle>
  void Close(Handle& handle) {
    auto* const any = reinterpret_cast<uv_handle_t*>(&handle);
    if (uv_is_closing(any) != 0) return;
    uv_close(any, [](uv_handle_t* closed) {
      Worker& worker = *static_cast<Worker*>(closed->data);
      if (--worker.handles_ == 0) worker.pool_.Gone(worker.slot_);
    });
  }

  WorkersPool& pool_;
  std::size_t slot_;
  std::string command_;
  std::string folder_;
  double timeoutSeconds_;

  uv_process_t process_{};
  uv_pipe_t in_{};
  uv_pipe_t out_{};
  uv_pipe_t err_{};
  uv_timer_t timer_{};
  int handles_ = 5;
  std::array<char, 65536> buffer_;

  State state_ = State::working;
  FrameReader frames_{workersHello};
  std::optional<Pending> flight_;
  bool cameUp_ = false;
  bool readOut_ = false;
  bool exited_ = false;
  int status_ = 0;
  int signal_ = 0;
  int spawnError_ = 0;
  std::string noRunner_;
  std::string nonsense_;
  std::string words_;  // the end of what came on standard error
};

class Pool final : public WorkersPool {
 public:
  Pool(const std::vector<Job>& jobs, const PoolOptions& options, const PoolListener& listener)
      : options_(options), listener_(listener) {
    for (const Job& job : jobs) pending_.push_back({&job, {}});
    command_ = options.launcher;
    command_.push_back(options.program.empty()
                           ? std::filesystem::read_symlink("/proc/self/exe").string()
                           : options.program);
    command_.emplace_back("worker");
    const auto wanted = static_cast<std::size_t>(std::max(options.workers, 1));
    slots_.resize(std::min(wanted, jobs.size()));
  }
  Pool(const Pool&) = delete;
  Pool& operator=(const Pool&) = delete;
  ~Pool() = default;

  PoolEnd Run() {
    if (uv_loop_init(&loop_) != 0) throw std::runtime_error("no event loop to be had");
    // To write to a worker that is gone is no reason to end.
    const auto formerPipe = std::signal(SIGPIPE, SIG_IGN);
    for (std::size_t i = 0; i < signals_.size(); ++i) {
      uv_signal_init(&loop_, &signals_[i]);
      signals_[i].data = this;
      uv_signal_start(
          &signals_[i],
          [](uv_signal_t* signal, int) { static_cast<Pool*>(signal->data)->Interrupt(); },
          i == 0 ? SIGINT : SIGTERM);
      uv_unref(reinterpret_cast<uv_handle_t*>(&signals_[i]));
    }
    uv_timer_init(&loop_, &ticks_);
    ticks_.data = this;
    uv_timer_start(
        &ticks_,
        [](uv_timer_t* timer) {
          auto& pool = *static_cast<Pool*>(timer->data);
          pool.Tell(pool.listener_.tick);
        },
        millisecondsOfTick, millisecondsOfTick);
    uv_unref(reinterpret_cast<uv_handle_t*>(&ticks_));
    for (std::size_t slot = 0; slot < slots_.size(); ++slot) StartWorker(slot);
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
  struct Slot {
    std::unique_ptr<Worker> worker;
    int failures = 0;  // in a row
  };

  void StartWorker(std::size_t slot) {
    slots_[slot].worker = std::make_unique<Worker>(*this, slot, loop_, command_, options_);
  }

  void CameUp(std::size_t slot, const Device& device) override {
    slots_[slot].failures = 0;
    if (!std::exchange(sawDevice_, true)) Tell(listener_.device, device);
    GiveWork(slot);
  }

  void SawNoDevice(const std::string& reason) override {
    if (sawDevice_ || !stopped_.empty()) return;
    Tell(listener_.noDevice, reason);
    Stop(PoolEnd::noDevice, reason);
  }

  void GiveWork(std::size_t slot) {
    Worker& worker = *slots_[slot].worker;
    if (worker.Finishing()) return;
    if (pending_.empty()) return worker.Finish(millisecondsToFinish);
    Pending next = std::move(pending_.front());
    pending_.pop_front();
    const Job& job = *next.job;
    if (next.lost.empty()) Tell(listener_.started, job);
    if (worker.Finishing()) return Over(next, NotRun(stopped_));
    const RowFacts& facts = FactsOfRows().at(job.row);
    worker.Do(std::move(next), {.row = facts.row.name,
                                .conditions = {.seed = options_.seed,
                                               .drawsBefore = facts.drawsBefore,
                                               .stride = facts.row.stride,
                                               .buildOptions = job.buildOptions,
                                               .localSize = job.localSize},
                                .passes = job.passes,
                                .freshRunner = job.freshWorker || options_.isolate});
  }

  static diagnosis::Ended NotRun(const std::string& reason) {
    diagnosis::Ended ended;
    ended.ending.reason = reason;
    return ended;
  }

  void Ended(std::size_t slot, const Pending& pending, diagnosis::Ended ended) override {
    Over(pending, ended);
    GiveWork(slot);
  }

  // Tells of a job's end. What a worker says of a row is in the journal; how the row ended, only
  // if it returned.
  void Over(const Pending& pending, const diagnosis::Ended& ended) {
    const Job& job = *pending.job;
    Record record;
    record.row = FactsOfRows().at(job.row).row.name;
    record.seed = options_.seed;
    record.buildOptions = job.buildOptions;
    record.localSize = job.localSize;
    record.driver = ended.driver;
    ReadJournal(std::as_bytes(std::span(ended.journal)), record);
    if (ended.ending.kind != Ending::Kind::returned ||
        record.ending.kind != Ending::Kind::returned) {
      record.ending = ended.ending;
      record.seconds = ended.seconds;
    }
    if (!pending.lost.empty()) {
      std::string& reason = record.ending.reason;
      reason += fmt::format("{}{}{}", reason.empty() ? "" : "; ", runOnceMore, pending.lost);
    }
    Tell(listener_.ended, job, std::move(record));
  }

  void Gone(std::size_t slot) override {
    const std::unique_ptr<Worker> worker = std::move(slots_[slot].worker);
    bool final = false;
    const std::string reason = worker->Reason(final);
    if (worker->Flight()) Lose(*worker, reason);
    if (pending_.empty()) return;
    if (!worker->CameUp()) ++slots_[slot].failures;
    // A worker that came up and cannot find a runner later has tried hard enough itself.
    if (!final || (worker->CameUp() && worker->Hung())) {
      if (slots_[slot].failures < workersBeforeGivingUp) return StartWorker(slot);
    }
    const bool last =
        std::ranges::none_of(slots_, [](const Slot& other) { return other.worker != nullptr; });
    if (last) NotReached(reason);
  }

  // Says what became of the row that was under way in a worker that is gone.
  void Lose(Worker& worker, const std::string& reason) {
    Pending pending = *std::exchange(worker.Flight(), std::nullopt);
    diagnosis::Ended ended;
    ended.ending.reason = reason;
    if (!stopped_.empty()) {
      ended.ending.reason = stopped_;
    } else if (worker.Finishing()) {
      // It has no runner any more, which is no fault of this row.
    } else if (!options_.launcher.empty()) {
      if (pending.lost.empty()) {
        pending.lost = reason;
        pending_.push_front(std::move(pending));
        return;
      }
      ended.ending.kind = Ending::Kind::lost;
    } else if (worker.Hung()) {
      ended.ending = {.kind = Ending::Kind::timedOut, .value = 0, .reason = {}};
    } else if (worker.Signal() != 0) {
      ended.ending = {.kind = Ending::Kind::signalled, .value = worker.Signal(), .reason = {}};
    } else {
      ended.ending = {.kind = Ending::Kind::exited, .value = worker.Status(), .reason = {}};
    }
    Over(pending, ended);
  }

  void NotReached(const std::string& reason) {
    while (!pending_.empty()) {
      Pending next = std::move(pending_.front());
      pending_.pop_front();
      diagnosis::Ended ended = NotRun(reason);
      if (!next.lost.empty())
        ended.ending = {.kind = Ending::Kind::lost, .reason = std::exchange(next.lost, {})};
      Over(next, ended);
    }
  }

  void Interrupt() {
    if (!stopped_.empty()) {
      for (const Slot& slot : slots_)
        if (slot.worker) slot.worker->Kill();
    }
    Stop(PoolEnd::interrupted, "interrupted");
  }

  // No more rows are begun, and those under way are given up.
  void Stop(PoolEnd end, const std::string& reason) {
    if (!stopped_.empty()) return;
    end_ = end;
    stopped_ = reason;
    for (const Slot& slot : slots_)
      if (slot.worker) slot.worker->Finish(millisecondsToStop);
    NotReached(reason);
  }

  // Calls the listener. What it throws ends the run, and leaves it when nothing is under way.
  template <class Function, class... Arguments>
  void Tell(const Function& function, Arguments&&... arguments) {
    if (failure_ || !function) return;
    try {
      function(std::forward<Arguments>(arguments)...);
    } catch (...) {
      failure_ = std::current_exception();
      Stop(PoolEnd::interrupted, "given up");
    }
  }

  const PoolOptions& options_;
  const PoolListener& listener_;
  std::vector<std::string> command_;
  std::deque<Pending> pending_;
  std::vector<Slot> slots_;
  uv_loop_t loop_{};
  std::array<uv_signal_t, 2> signals_{};
  uv_timer_t ticks_{};
  bool sawDevice_ = false;
  std::string stopped_;  // why, if it is
  PoolEnd end_ = PoolEnd::finished;
  std::exception_ptr failure_;
};

}  // namespace

PoolEnd RunJobs(const std::vector<Job>& jobs, const PoolOptions& options,
                const PoolListener& listener) {
  return Pool(jobs, options, listener).Run();
}

}  // namespace diagnosis
