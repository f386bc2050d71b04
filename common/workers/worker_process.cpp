#include "common/workers/worker_process.h"

#include <fmt/format.h>

#include <algorithm>
#include <csignal>
#include <memory>
#include <stdexcept>
#include <utility>
#include <variant>

namespace workers {
namespace {

// What a worker and the way to it get beyond a phase's own time before they count as hung.
constexpr double graceSeconds = 15;
// How long a driver may take over its end, and a worker over its own when it is stopped, and to be
// read out when its process is gone.
constexpr double secondsToEnd = 5;
constexpr double secondsToStop = 1;
constexpr double secondsToReadOut = 0.5;

uv_stdio_flags Pipe(unsigned direction) {
  return static_cast<uv_stdio_flags>(UV_CREATE_PIPE | direction);
}

template <class Handle>
uv_stream_t* Stream(Handle& handle) {
  return reinterpret_cast<uv_stream_t*>(&handle);
}

}  // namespace

WorkerProcess::WorkerProcess(WorkerListener& pool, std::size_t slot, uv_loop_t& loop,
                             const std::vector<std::string>& command, const PoolOptions& options)
    : pool_(pool),
      slot_(slot),
      name_(options.launcher.empty() ? "the worker" : fmt::format("'{}'", command.front())),
      bringUpSeconds_(options.timeoutSeconds),
      frames_(HelloOf(options.protocol)) {
  uv_timer_init(&loop, &timer_);
  for (uv_pipe_t* const pipe : {&in_, &out_, &error_}) uv_pipe_init(&loop, pipe, 0);
  timer_.data = in_.data = out_.data = error_.data = process_.data = this;
  Spawn(loop, command, options.folder);
}

void WorkerProcess::Spawn(uv_loop_t& loop, const std::vector<std::string>& command,
                          const std::string& folder) {
  std::vector<std::string> words = command;
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);

  std::array<uv_stdio_container_t, 3> stdio{};
  stdio[0] = {Pipe(UV_READABLE_PIPE), {Stream(in_)}};
  stdio[1] = {Pipe(UV_WRITABLE_PIPE), {Stream(out_)}};
  stdio[2] = {Pipe(UV_WRITABLE_PIPE), {Stream(error_)}};
  uv_process_options_t options{};
  options.exit_cb = [](uv_process_t* process, std::int64_t status, int signal) {
    static_cast<WorkerProcess*>(process->data)->Exited(status, signal);
  };
  options.file = arguments.front();
  options.args = arguments.data();
  if (!folder.empty()) options.cwd = folder.c_str();
  options.stdio = stdio.data();
  options.stdio_count = static_cast<int>(stdio.size());
  // A session of its own, and so a group that can be ended as a whole: a launcher may be a script
  // that has not given its place to the worker.
  options.flags = UV_PROCESS_DETACHED;
  spawnError_ = uv_spawn(&loop, &process_, &options);
  if (spawnError_ != 0) {
    nonsense_ =
        fmt::format("'{}' cannot be started: {}", command.front(), uv_strerror(spawnError_));
    hasExited_ = true;
    Conclude();
    return;
  }
  const auto allocate = [](uv_handle_t* handle, std::size_t, uv_buf_t* buffer) {
    WorkerProcess& worker = *static_cast<WorkerProcess*>(handle->data);
    *buffer = uv_buf_init(worker.buffer_.data(), static_cast<unsigned>(worker.buffer_.size()));
  };
  uv_read_start(Stream(out_), allocate,
                [](uv_stream_t* stream, ssize_t size, const uv_buf_t* buffer) {
                  static_cast<WorkerProcess*>(stream->data)->Heard(size, buffer->base);
                });
  uv_read_start(Stream(error_), allocate,
                [](uv_stream_t* stream, ssize_t size, const uv_buf_t* buffer) {
                  static_cast<WorkerProcess*>(stream->data)->HeardError(size, buffer->base);
                });
  Allow(bringUpSeconds_ + graceSeconds);
}

void WorkerProcess::Do(const Job& job, bool freshRunner) {
  jobSeconds_ = job.seconds;
  phase_ = lastPhase_;
  Allow(jobSeconds_);
  Say(Task{.bytes = job.task, .freshRunner = freshRunner});
}

void WorkerProcess::Finish() {
  if (IsLeaving() || hasExited_) return;
  state_ = State::leaving;
  Allow(graceSeconds);
  Say(workers::Finish{});
}

void WorkerProcess::Abandon() {
  if (hasExited_) return;
  state_ = State::leaving;
  phase_.reset();
  Close(in_);
  Allow(secondsToStop);
}

void WorkerProcess::Kill() const {
  if (!hasExited_) kill(-process_.pid, SIGKILL);
}

std::string WorkerProcess::Reason() const {
  if (!noRunner_.empty()) return noRunner_;
  if (spawnError_ != 0) return nonsense_;
  if (IsHung()) return fmt::format("{} does not answer", name_);
  std::string reason = !nonsense_.empty() ? fmt::format("{} sent {}", name_, nonsense_)
                       : status_.signalled
                           ? fmt::format("{} was killed by {}", name_, TextOf(status_))
                           : fmt::format("{} ended with {}", name_, TextOf(status_));
  const std::string_view words = LastLine(said_);
  if (!words.empty()) reason += fmt::format(": {}", words);
  return reason;
}

bool WorkerProcess::IsBeyondHelp() const {
  // One that came up has tried hard enough to have a runner.
  return !noRunner_.empty() || spawnError_ != 0 || (IsHung() && !IsUp());
}

void WorkerProcess::Allow(double seconds) {
  uv_timer_start(
      &timer_, [](uv_timer_t* timer) { static_cast<WorkerProcess*>(timer->data)->TimeIsOver(); },
      static_cast<std::uint64_t>(seconds * 1000), 0);
}

void WorkerProcess::BeIdle() {
  phase_.reset();
  if (state_ == State::working) uv_timer_stop(&timer_);
}

void WorkerProcess::TimeIsOver() {
  if (hasExited_) return Conclude();
  if (phase_) {
    Allow(graceSeconds);
    Say(GiveUp{*std::exchange(phase_, std::nullopt)});
    // One that somebody has stopped hears of it when it goes on.
    kill(-process_.pid, SIGCONT);
    return;
  }
  if (!IsLeaving()) state_ = State::hung;
  Kill();
}

void WorkerProcess::Say(const Order& order) {
  struct Write {
    uv_write_t request;
    std::string bytes;
  };
  auto write = std::make_unique<Write>();
  write->bytes = Framed(Packed(order));
  write->request.data = write.get();
  uv_buf_t buffer = uv_buf_init(write->bytes.data(), static_cast<unsigned>(write->bytes.size()));
  // A worker that hears nothing any more is about to end, which is noticed elsewhere.
  const int error =
      uv_write(&write->request, Stream(in_), &buffer, 1, [](uv_write_t* request, int) {
        const std::unique_ptr<Write> done(static_cast<Write*>(request->data));
      });
  if (error == 0) static_cast<void>(write.release());
}

void WorkerProcess::Heard(ssize_t size, const char* bytes) {
  if (size < 0) {
    isReadOut_ = true;
    Close(out_);
    if (hasExited_) return Conclude();
    // A worker that says no more is at its end, or else of no use.
    if (state_ == State::working) {
      phase_.reset();
      Allow(secondsToStop);
    }
    return;
  }
  try {
    frames_.Feed({bytes, static_cast<std::size_t>(size)});
    while (const std::optional<std::string> message = frames_.Next())
      std::visit([this](auto&& report) { Take(std::forward<decltype(report)>(report)); },
                 ReportFrom(*message));
  } catch (const std::runtime_error& error) {
    nonsense_ = error.what();
    Kill();
  }
}

void WorkerProcess::HeardError(ssize_t size, const char* bytes) {
  if (size < 0) return Close(error_);
  constexpr std::size_t enough = 2048;
  said_.append(bytes, static_cast<std::size_t>(size));
  if (said_.size() > enough) said_.erase(0, said_.size() - enough);
}

void WorkerProcess::Take(const Phase& phase) {
  if (uv_is_closing(reinterpret_cast<const uv_handle_t*>(&in_)) != 0) return;
  phase_ = lastPhase_ = phase.number;
  switch (phase.kind) {
    case Phase::Kind::starting:
      return Allow(bringUpSeconds_);
    case Phase::Kind::running:
      return Allow(jobSeconds_);
    case Phase::Kind::ending:
      return Allow(secondsToEnd);
  }
}

void WorkerProcess::Take(const Up& up) {
  if (isUp_) throw std::runtime_error("a message out of turn");
  isUp_ = true;
  BeIdle();
  pool_.CameUp(slot_, up.device);
}

void WorkerProcess::Take(const NoDevice& noDevice) {
  noRunner_ = noDevice.reason;
  pool_.SawNoDevice(noRunner_);
  Abandon();
}

void WorkerProcess::Take(const NoRunner& noRunner) {
  noRunner_ = noRunner.reason;
  Abandon();
}

void WorkerProcess::Take(workers::Ended ended) {
  BeIdle();
  pool_.Ended(slot_, std::move(ended.answer));
}

void WorkerProcess::Exited(std::int64_t status, int signal) {
  // What the command left behind. The number can be another group's only when all numbers have been
  // round since the loop has waited for it.
  Kill();
  hasExited_ = true;
  status_ = {.signalled = signal != 0, .value = signal != 0 ? signal : static_cast<int>(status)};
  phase_.reset();
  if (isReadOut_) return Conclude();
  Allow(secondsToReadOut);
}

// Leaves the loop; the last handle to be closed takes the worker with it.
void WorkerProcess::Conclude() {
  Close(in_);
  Close(out_);
  Close(error_);
  Close(timer_);
  Close(process_);
}

template <class Handle>
void WorkerProcess::Close(Handle& handle) {
  auto* const any = reinterpret_cast<uv_handle_t*>(&handle);
  if (uv_is_closing(any) != 0) return;
  uv_close(any, [](uv_handle_t* closed) {
    WorkerProcess& worker = *static_cast<WorkerProcess*>(closed->data);
    if (--worker.handles_ == 0) worker.pool_.Gone(worker.slot_);
  });
}

}  // namespace workers
