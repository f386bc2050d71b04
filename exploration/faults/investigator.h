#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "exploration/faults/investigation.h"

namespace exploration {

/// Investigates findings one after the other, while the pool's workers do its tasks among others.
/// Everything happens in the caller's thread or while it waits.
class Investigator {
 public:
  /// `concluded` is called within Ended() or Add() for each finding: the fault is new if it has one
  /// finding. With a fault of nothing the finding has vanished.
  Investigator(InvestigationOptions options,
               std::function<void(const Finding& finding, const Fault* fault)> concluded);
  /// Gives up what is under way.
  ~Investigator();
  Investigator(const Investigator&) = delete;
  Investigator& operator=(const Investigator&) = delete;

  void Add(Finding finding);
  /// A task to be done now, with the number under which it is to be answered; nothing while it
  /// waits for answers or has nothing to do.
  struct Numbered {
    std::size_t number;
    Task task;
  };
  std::optional<Numbered> Next();
  void Ended(std::size_t number, Outcome outcome);
  /// Whether no finding waits or is under investigation.
  bool IsIdle() const;
  /// In the order in which they were found.
  const std::vector<Fault>& Faults() const;

 private:
  struct State;
  std::unique_ptr<State> state;
};

}  // namespace exploration
