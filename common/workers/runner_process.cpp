#include "common/workers/runner_process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <new>
#include <system_error>
#include <tuple>
#include <utility>

namespace workers {
namespace {

using Clock = std::chrono::steady_clock;

// What a driver prints is kept as far as this.
constexpr std::size_t longestPrinted = 256 << 10;

// How long a process may take to die when it is killed: one that hangs in a device's kernel driver
// does not. This is no limit of anybody's work, and so not the pool's.
constexpr auto timeToDie = std::chrono::milliseconds(2000);

[[noreturn]] void Refused(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

}  // namespace

RunnerProcess::RunnerProcess(const Runner& runner) : runner_(runner) {
  void* const memory = mmap(nullptr, sizeof(RunnerMemory), PROT_READ | PROT_WRITE,
                            MAP_SHARED | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (memory == MAP_FAILED) Refused("no memory for a runner");
  memory_ = new (memory) RunnerMemory;
}

RunnerProcess::~RunnerProcess() {
  Kill();
  munmap(memory_, sizeof(RunnerMemory));
}

void RunnerProcess::Start() {
  int sockets[2];
  int pipes[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) != 0)
    Refused("no socket for a runner");
  Descriptor wake(sockets[0]);
  const Descriptor runnersWake(sockets[1]);
  if (pipe2(pipes, O_CLOEXEC) != 0) Refused("no pipe for a runner");
  Descriptor output(pipes[0]);
  const Descriptor runnersOutput(pipes[1]);
  fcntl(wake.Number(), F_SETFL, O_NONBLOCK);
  fcntl(output.Number(), F_SETFL, O_NONBLOCK);

  memory_->Reset();
  printed_.clear();
  status_ = {};
  const pid_t worker = getpid();
  const pid_t process = fork();
  if (process < 0) Refused("no process for a runner");
  if (process == 0) BecomeRunner(worker, runnersWake.Number(), runnersOutput.Number());
  setpgid(process, process);
  process_ = process;
  wake_ = std::move(wake);
  output_ = std::move(output);
}

void RunnerProcess::BecomeRunner(pid_t worker, int wake, int output) {
  setpgid(0, 0);
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != worker) _exit(0);
  for (const int number : {SIGCHLD, SIGPIPE, SIGINT}) signal(number, SIG_DFL);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);

  // The driver gets no descriptor of the worker's but the one socket, out of its way.
  dup2(output, STDOUT_FILENO);
  dup2(output, STDERR_FILENO);
  dup2(wake, 3);
  closefrom(4);
  const int above = Above(3);
  close(3);
  RunnerLoop(runner_, *memory_, above);
}

std::uint32_t RunnerProcess::Ask(std::string_view task) {
  memory_->SetMessage(task);
  memory_->answer.Clear();
  const std::uint32_t number = ++memory_->asked;
  // A runner that cannot be woken is dying.
  std::ignore = send(wake_.Number(), "", 1, MSG_NOSIGNAL);
  return number;
}

void RunnerProcess::HearWake() {
  char bytes[4096];
  ssize_t size = 0;
  do size = read(wake_.Number(), bytes, sizeof bytes);
  while (size > 0);
  if (size == 0 || (errno != EAGAIN && errno != EINTR)) wake_.Close();
}

void RunnerProcess::HearOutput() {
  char bytes[4096];
  // Not for ever, where it never stops.
  for (int i = 0; i < 64 && output_.Number() >= 0; ++i) {
    const ssize_t size = read(output_.Number(), bytes, sizeof bytes);
    if (size < 0 && (errno == EAGAIN || errno == EINTR)) return;
    if (size <= 0) return output_.Close();
    if (printed_.size() > longestPrinted) continue;
    printed_.append(bytes, static_cast<std::size_t>(size));
    if (printed_.size() > longestPrinted) {
      printed_.resize(longestPrinted);
      printed_ += "\n[the rest is left out]\n";
    }
  }
}

std::string RunnerProcess::TakePrinted() {
  HearOutput();
  return std::exchange(printed_, {});
}

bool RunnerProcess::Reap() {
  if (process_ == 0) return true;
  siginfo_t info{};
  if (waitid(P_PID, static_cast<id_t>(process_), &info, WEXITED | WNOHANG | WNOWAIT) != 0 ||
      info.si_pid == 0)
    return false;
  status_ = {.signalled = info.si_code != CLD_EXITED, .value = info.si_status};
  // What it has started goes with it, before its number can be another's.
  kill(-process_, SIGKILL);
  waitpid(process_, nullptr, 0);
  HearOutput();
  Forget();
  return true;
}

void RunnerProcess::AskToEnd() const { shutdown(wake_.Number(), SHUT_RDWR); }

void RunnerProcess::Kill() {
  if (process_ == 0) return;
  kill(-process_, SIGKILL);
  for (const auto end = Clock::now() + timeToDie; !Reap() && Clock::now() < end;)
    poll(nullptr, 0, 2);
  Forget();  // whether it is dead or cannot die
}

void RunnerProcess::Forget() {
  process_ = 0;
  wake_.Close();
  output_.Close();
}

}  // namespace workers
