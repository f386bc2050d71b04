#include "exploration/faults/investigator.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

namespace exploration {

// An investigation is told as it goes, a loop in a loop, and so has a thread of its own. It runs
// only while the caller waits for it to ask for outcomes or to end, and so no two ever run at once.
struct Investigator::State {
  InvestigationOptions options;
  std::function<void(const Finding&, const Fault*)> concluded;
  std::deque<Finding> waiting;
  std::vector<Fault> faults;

  std::thread thread;
  std::mutex mutex;
  std::condition_variable turn;
  bool isThreadsTurn = false;
  bool isOver = true;
  bool isGivenUp = false;
  Conclusion conclusion;
  std::exception_ptr failure;

  std::vector<Task> tasks;
  std::vector<std::optional<Outcome>> outcomes;
  std::size_t given = 0;    ///< Of the tasks.
  std::size_t missing = 0;  ///< Outcomes.
  std::size_t first = 0;    ///< The number of the first task.

  struct GivenUp {};

  /// On the thread: asks, and lets the caller go on until it has the outcomes.
  std::vector<Outcome> TryAllOf(const std::vector<Task>& those) {
    if (those.empty()) return {};
    first += tasks.size();
    tasks = those;
    outcomes.assign(those.size(), std::nullopt);
    given = 0;
    missing = those.size();
    HandOver(false);
    if (isGivenUp) throw GivenUp();
    std::vector<Outcome> all;
    for (std::optional<Outcome>& outcome : outcomes) all.push_back(std::move(*outcome));
    return all;
  }

  void HandOver(bool toThread) {
    std::unique_lock lock(mutex);
    isThreadsTurn = toThread;
    turn.notify_all();
    turn.wait(lock, [&] { return isThreadsTurn != toThread || (isOver && toThread); });
  }

  void Investigate() {
    {
      std::unique_lock lock(mutex);
      turn.wait(lock, [this] { return isThreadsTurn; });
    }
    try {
      conclusion = Investigated(waiting.front(), faults, options,
                                [this](const std::vector<Task>& those) { return TryAllOf(those); });
    } catch (const GivenUp&) {
    } catch (...) {
      failure = std::current_exception();
    }
    const std::unique_lock lock(mutex);
    isOver = true;
    isThreadsTurn = false;
    turn.notify_all();
  }

  /// Lets the thread go on, and on with the next finding where it has come to an end.
  void GoOn() {
    for (;;) {
      if (isOver) {
        if (waiting.empty()) return;
        isOver = false;
        thread = std::thread([this] { Investigate(); });
      }
      HandOver(true);
      if (!isOver) return;
      thread.join();
      missing = 0;
      given = tasks.size();
      if (failure != nullptr) std::rethrow_exception(std::exchange(failure, nullptr));
      Conclude();
    }
  }

  /// What tells a fault is what its shrunken findings have in common.
  static void Narrow(Fault& fault, const Fault& finding) {
    const std::vector<std::string> common = InBoth(fault.features, finding.features);
    if (!TellingFeatures(common).empty()) fault.features = common;
  }

  void Conclude() {
    const Finding finding = std::move(waiting.front());
    waiting.pop_front();
    switch (conclusion.kind) {
      case Conclusion::Kind::newFault:
        faults.push_back(std::move(*conclusion.fault));
        return concluded(finding, &faults.back());
      case Conclusion::Kind::knownFault:
        ++faults.at(conclusion.known).findings;
        if (conclusion.fault) Narrow(faults.at(conclusion.known), *conclusion.fault);
        return concluded(finding, &faults.at(conclusion.known));
      case Conclusion::Kind::vanished:
        return concluded(finding, nullptr);
    }
  }
};

Investigator::Investigator(InvestigationOptions options,
                           std::function<void(const Finding&, const Fault*)> concluded)
    : state(std::make_unique<State>()) {
  state->options = std::move(options);
  state->concluded = std::move(concluded);
}

Investigator::~Investigator() {
  if (state->isOver) return;
  state->isGivenUp = true;
  state->HandOver(true);
  state->thread.join();
}

void Investigator::Add(Finding finding) {
  state->waiting.push_back(std::move(finding));
  if (state->isOver) state->GoOn();
}

std::optional<Investigator::Numbered> Investigator::Next() {
  if (state->isOver || state->given == state->tasks.size()) return std::nullopt;
  const std::size_t index = state->given++;
  return Numbered{state->first + index, state->tasks[index]};
}

void Investigator::Ended(std::size_t number, Outcome outcome) {
  state->outcomes.at(number - state->first) = std::move(outcome);
  if (--state->missing == 0) state->GoOn();
}

bool Investigator::IsIdle() const { return state->isOver && state->waiting.empty(); }

const std::vector<Fault>& Investigator::Faults() const { return state->faults; }

}  // namespace exploration
