#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

// Jobs that are done in worker processes, each accounted for whatever the driver does to its
// process. What a job is and what it answers are bytes: the program that gives jobs out and the
// Runner (runner.h) that does them know what they mean.

namespace workers {

inline constexpr std::size_t longestTask = 1 << 20;

/// Something that a runner is to do.
struct Job {
  std::uint64_t number = 0;  // the caller's own, by which it knows the job again
  std::string task;          // for Runner::run, at most longestTask bytes
  double seconds = 60;       // that it may take
  bool freshRunner = false;  // not in a process that has done others
};

/// How a job came to its end.
enum class Ending {
  notRun,     // never begun; the reason says why
  returned,   // Runner::run came back
  exited,     // the process ended in mid-job; the value is its status
  signalled,  // the process was killed; the value is the signal
  timedOut,
  lost,  // with the worker or the way to it, and what was answered with it; the reason says how
};

/// What became of a job.
struct Answer {
  Ending ending = Ending::notRun;
  int value = 0;
  std::string reason;
  std::string bytes;      // all that Runner::run wrote before the end
  std::string printed;    // on standard output and standard error of its process
  double seconds = 0;     // from the order to the end
  std::string lostFirst;  // how the first worker was lost, if the job was run once more for that
};

/// How workers are had.
struct PoolOptions {
  int workers = 1;
  double timeoutSeconds = 60;         // for bringing the driver up
  std::vector<std::string> launcher;  // words before the worker's command
  std::string program;                // the worker's own, as the launcher finds it; empty: this one
  std::string folder;                 // where workers start; empty for the caller's own
  std::string protocol;               // Runner::protocol of the workers
  std::string word = "worker";        // that makes the program such a worker
};

/// What is to be done with the runner that a job was done in.
enum class Afterwards { keepRunner, endRunner };

/// What the pool asks for and tells, all on the caller's thread.
struct PoolListener {
  /// A job to be done. If there is none, it is asked again when a job under way has ended; if none
  /// is under way either, that is the end.
  std::function<std::optional<Job>()> next;
  /// What Runner::bringUp said of the device; once, before the first job.
  std::function<void(const std::string& device)> device;
  /// Before the worker is told to.
  std::function<void(const Job&)> started;
  /// Once for every job that `next` gave, in the order in which they end.
  std::function<Afterwards(const Job&, Answer)> ended;
  /// Every second, whatever happens.
  std::function<void()> tick;
};

/// How a run of jobs ended.
struct PoolEnd {
  enum class Kind {
    finished,
    interrupted,  // by `signal`
    noDevice,
    noWorker,  // none can be had, or none any more
  };
  Kind kind = Kind::finished;
  int signal = 0;
  std::string reason;  // unless it is finished; one line
};

/// Does jobs in worker processes until there are no more, and returns when each has ended. SIGINT,
/// SIGTERM and SIGHUP end the run: the jobs under way are given up, and no more are asked for. Jobs
/// are asked for when a worker is free, so that memory does not grow with their number.
///
/// A job whose worker was lost behind a launcher is run once more in a new one.
///
/// What the listener throws ends the run and comes out of here. Throws std::runtime_error if the
/// system refuses what a run needs.
PoolEnd RunJobs(const PoolOptions& options, const PoolListener& listener);

}  // namespace workers
