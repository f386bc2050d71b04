#pragma once

#include <uv.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/workers/exit_status.h"
#include "common/workers/framing.h"
#include "common/workers/jobs.h"
#include "common/workers/messages.h"

namespace workers {

/// What a worker tells the pool that it is of.
class WorkerListener {
 public:
  virtual void CameUp(std::size_t slot, const std::string& device) = 0;
  virtual void SawNoDevice(const std::string& reason) = 0;
  /// Throws std::runtime_error if the worker was asked for nothing.
  virtual void Ended(std::size_t slot, Answer answer) = 0;
  /// The worker is gone for good, and may be deleted.
  virtual void Gone(std::size_t slot) = 0;

 protected:
  ~WorkerListener() = default;
};

/// A worker as the pool has it: a command with a process group of its own, from its start until
/// nothing of it is left in the loop, and the clock for all that it does.
class WorkerProcess {
 public:
  WorkerProcess(WorkerListener& pool, std::size_t slot, uv_loop_t& loop,
                const std::vector<std::string>& command, const PoolOptions& options);
  WorkerProcess(const WorkerProcess&) = delete;
  WorkerProcess& operator=(const WorkerProcess&) = delete;

  /// The job's answer comes as Ended, unless the worker goes before it.
  void Do(const Job& job, bool freshRunner);

  /// No more jobs: the driver is let come to an end of its own.
  void Finish();

  /// No more jobs, and the one that is under way is given up.
  void Abandon();

  void Kill() const;

  bool IsUp() const { return isUp_; }
  bool IsLeaving() const { return state_ == State::leaving; }
  bool IsHung() const { return state_ == State::hung; }

  /// Why there is no such worker any more, for a person: one line.
  std::string Reason() const;
  /// Whether one more would end no better.
  bool IsBeyondHelp() const;

 private:
  enum class State { working, leaving, hung };

  void Spawn(uv_loop_t& loop, const std::vector<std::string>& command, const std::string& folder);
  void Say(const Order& order);
  void Heard(ssize_t size, const char* bytes);
  void HeardError(ssize_t size, const char* bytes);
  void Exited(std::int64_t status, int signal);

  void Take(const Phase& phase);
  void Take(const Up& up);
  void Take(const NoDevice& noDevice);
  void Take(const NoRunner& noRunner);
  void Take(workers::Ended ended);

  void Allow(double seconds);
  void BeIdle();
  void TimeIsOver();
  void Conclude();
  template <class Handle>
  void Close(Handle& handle);

  WorkerListener& pool_;
  std::size_t slot_;
  std::string name_;  // in front of what became of it
  double bringUpSeconds_;
  double jobSeconds_ = 0;

  uv_process_t process_{};
  uv_pipe_t in_{};
  uv_pipe_t out_{};
  uv_pipe_t error_{};
  uv_timer_t timer_{};
  int handles_ = 5;
  std::array<char, 65536> buffer_;

  State state_ = State::working;
  FrameReader frames_;
  std::optional<std::uint32_t> phase_;  // that can be given up
  std::uint32_t lastPhase_ = 0;
  bool isUp_ = false;
  bool isReadOut_ = false;
  bool hasExited_ = false;
  ExitStatus status_;
  int spawnError_ = 0;
  std::string noRunner_;
  std::string nonsense_;
  std::string said_;  // the end of what came on standard error
};

}  // namespace workers
