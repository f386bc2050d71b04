#include "exploration/shrinking/shrink.h"

#include <algorithm>
#include <bit>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>

#include "exploration/generator/generator.h"
#include "exploration/program/check.h"
#include "exploration/shrinking/edits.h"
#include "exploration/shrinking/passes.h"

namespace exploration {
namespace {

// Steps on the tree, rather than other choices of the generator: a shorter sequence of choices
// gives another program, in which what went wrong is soon gone, where a step on the tree leaves all
// else as it was. Nor need a generator ever draw what is left. The model makes up for what choices
// would give by themselves: a step whose outcome is not valid is no step. (A sequence of changes to
// a program that works, the third way, needs programs that work.)

/// Nothing if it is not valid.
std::optional<Candidate> Modelled(Program program) {
  try {
    Program tidied = Tidied(std::move(program));
    RunnableProgram runnable = MakeRunnable(tidied);
    return Candidate{std::move(tidied), std::move(runnable)};
  } catch (const Invalid&) {
  } catch (const std::out_of_range&) {  // parts or numbers are missing
  }
  return std::nullopt;
}

std::string KeyOf(const RunnableProgram& program) {
  std::string key = program.text;
  for (const RunnableBuffer& buffer : program.buffers)
    key.append(buffer.bytes.begin(), buffer.bytes.end());
  return key + std::to_string(program.globalSize) + "/" + std::to_string(program.localSize);
}

class Search {
 public:
  Search(const Program& program, const StillWrong& goesWrong, const ShrinkLimits& withLimits)
      : stillWrong(goesWrong), limits(withLimits) {
    kept.push_back({program, MakeRunnable(program)});
    tried.insert(KeyOf(kept.back().runnable));
  }

  Shrunk Shrink() {
    bool isComplete = false;
    while (!isComplete && tries < limits.tries) {
      const std::size_t before = kept.size();
      for (const Pass& pass : limits.isCoarse ? Passes().first(coarsePasses) : Passes()) Try(pass);
      isComplete = kept.size() == before;
    }
    isComplete = isComplete && tries < limits.tries;
    // A step may have led to what goes wrong only now and then: back to what does so always.
    while (kept.size() > 1 && !IsSteady(kept.back())) {
      kept.pop_back();
      isComplete = false;
    }
    return {std::move(kept.back()), tries, isComplete};
  }

 private:
  struct Numbered {
    std::size_t number;
    Candidate candidate;
  };

  void Try(const Pass& pass) {
    for (std::size_t number = 0; tries < limits.tries;) {
      bool isEnd = false;
      const std::vector<Numbered> next = Next(pass, number, isEnd);
      if (next.empty()) return;
      std::vector<Candidate> candidates;
      for (const Numbered& one : next) candidates.push_back(one.candidate);
      const std::vector<bool> wrong = stillWrong(candidates);
      // The first one counts, whatever became of those behind it, as if they had not been tried.
      const auto found = std::find(wrong.begin(), wrong.end(), true) - wrong.begin();
      for (std::size_t i = 0; i < next.size() && i <= static_cast<std::size_t>(found); ++i) {
        tried.insert(KeyOf(next[i].candidate.runnable));
        ++tries;
      }
      number = next.back().number + 1;
      if (static_cast<std::size_t>(found) == next.size()) {
        if (isEnd) return;
        continue;
      }
      number = next[static_cast<std::size_t>(found)].number;
      kept.push_back(next[static_cast<std::size_t>(found)].candidate);
    }
  }

  /// The next candidates from this step on that are valid, smaller and new.
  std::vector<Numbered> Next(const Pass& pass, std::size_t number, bool& isEnd) const {
    std::vector<Numbered> next;
    const std::size_t most = static_cast<std::size_t>(std::max(limits.atOnce, 1));
    const Size size = exploration::SizeOf(kept.back());
    std::set<std::string> asked = tried;
    for (; next.size() < most; ++number) {
      std::optional<Program> program = pass.step(kept.back().program, number);
      isEnd = !program.has_value();
      if (isEnd) break;
      std::optional<Candidate> candidate = Modelled(std::move(*program));
      if (candidate && exploration::SizeOf(*candidate) < size &&
          asked.insert(KeyOf(candidate->runnable)).second)
        next.push_back({number, std::move(*candidate)});
    }
    return next;
  }

  bool IsSteady(const Candidate& candidate) {
    const std::vector<Candidate> runs(static_cast<std::size_t>(limits.confirmations), candidate);
    tries += limits.confirmations;
    const std::vector<bool> wrong = stillWrong(runs);
    return std::find(wrong.begin(), wrong.end(), false) == wrong.end();
  }

  const StillWrong& stillWrong;
  const ShrinkLimits limits;
  std::vector<Candidate> kept;  ///< Each smaller than the one before; the first is what was given.
  std::set<std::string> tried;
  int tries = 0;
};

}  // namespace

Shrunk Shrink(const Program& program, const StillWrong& stillWrong, const ShrinkLimits& limits) {
  return Search(program, stillWrong, limits).Shrink();
}

Size SizeOf(const Candidate& candidate) {
  Size size;
  const Program& program = candidate.program;
  size.weight = WeightOf(program) + 3 * (program.buffers.size() + program.constants.size());
  for (const Function& function : program.functions)
    size.weight += 5 + 2 * function.parameters.size();
  size.text = candidate.runnable.text.size();
  for (const RunnableBuffer& buffer : candidate.runnable.buffers)
    for (const std::uint8_t byte : buffer.bytes)
      size.bits += buffer.name == "out" ? 0 : static_cast<std::size_t>(std::popcount(byte));
  return size;
}

}  // namespace exploration
