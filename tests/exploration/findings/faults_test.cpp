// Which findings are one fault, what it is called, and where it goes away: on devices that are made
// up.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <deque>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "exploration/faults/investigator.h"
#include "exploration/generator/generator.h"

namespace exploration {
namespace {

using Kind = Outcome::Kind;
using Bytes = std::vector<std::uint8_t>;

Bytes BytesOf(const std::vector<std::uint64_t>& values) {
  Bytes bytes(8 * values.size());
  std::memcpy(bytes.data(), values.data(), bytes.size());
  return bytes;
}

/// Of two answers the second is wrong.
TEST(Symptom, TellsHowAnAnswerIsWrong) {
  constexpr std::uint64_t untouched = 0xA5A5A5A5A5A5A5A5;
  struct {
    std::uint64_t expected;
    std::uint64_t actual;
    const char* how;
  } const cases[] = {
      {0x1122334455667788, untouched, "not stored"},
      {0x1122334455667788, 0, "zero"},
      {0x1122334455667788, 0x1122334400000000, "zero"},
      {0xFFFFFFFFFFFFFF80, 0x80, "wrongly extended"},
      {0x8081, 0xFFFFFFFFFFFF8081, "wrongly extended"},
      {0x1122334455667788, 7, "another value's"},
      {0x1122334455667788, 9, "another value's"},
      {0x1122334455667788, 0x11223344556677, "shifted"},
      {0x1122334455667788, 0x2233445566778800, "shifted"},
      {0x1122334455667788, 0x1122334455667789, "other"},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.how);
    RunnableProgram program;
    program.buffers.push_back({"in", BytesOf({9, 10}), false, {}, {}, {}});
    RunnableBuffer out{"out",           Bytes(16, 0xA5), true, BytesOf({7, one.expected}),
                       Bytes(16, 0xFF), Bytes(16)};
    program.buffers.push_back(out);
    Outcome outcome;
    outcome.kind = Kind::wrongAnswer;
    outcome.answers = {BytesOf({7, one.actual})};
    EXPECT_EQ(SymptomOf(program, outcome).how, one.how);
  }
}

TEST(Symptom, IsTheDriversOwnMessageIfItHasOne) {
  struct {
    Kind kind;
    const char* text;
    const char* how;
    bool isTold;
  } const cases[] = {
      {Kind::refused, "<source>:12:7: error: no member named 'abc' in 'union U17'\n  x\n",
       "error: no member named '...' in '...'", true},
      {Kind::wrongAnswer, "\nSIM FATAL ERROR (a.cpp:213)\nUnsupported size: 7 bytes\n\tKernel: x",
       "Unsupported size: N bytes", true},
      {Kind::crashed, "clang: f.cpp:10: void f(): Assertion `a == 12' failed.\nStack dump:",
       "Assertion `a == N'...'", true},
      {Kind::crashed, "", "a crash (SIGSEGV) in clBuildProgram", false},
      {Kind::hung, "", "a hang in clBuildProgram", false},
      {Kind::unsteady, "", "", false},
  };
  for (const auto& one : cases) {
    Outcome outcome;
    outcome.kind = one.kind;
    outcome.call = "clBuildProgram";
    outcome.code = 11;
    outcome.text = one.text;
    const Symptom symptom = SymptomOf({}, outcome);
    EXPECT_EQ(symptom.how, one.how);
    EXPECT_EQ(symptom.isTold, one.isTold);
  }
}

TEST(Fault, IsCalledByWhatItIs) {
  struct {
    Symptom symptom;
    std::vector<std::string> features;
    const char* title;
    const char* name;
  } const cases[] = {
      {{Kind::wrongAnswer, "zero", false},
       {"members", "nested-unions", "whole-unions", "global-memory"},
       "wrong answer (zero): nested unions, whole unions, global memory",
       "wrong-answer-nested-unions-whole-unions-"},
      {{Kind::wrongAnswer, "other", false}, {"members"}, "wrong answer: members", "wrong-answer-"},
      {{Kind::crashed, "a crash (SIGSEGV) in clBuildProgram", false},
       {"packed", "private-memory"},
       "a crash (SIGSEGV) in clBuildProgram: packed, private memory",
       "crash-packed-"},
      {{Kind::refused, "error: no 'x'", true},
       {"packed"},
       "build refused (error: no 'x'): packed",
       "build-refused-error-no-x-"},
  };
  std::set<std::string> names;
  for (const auto& one : cases) {
    EXPECT_EQ(TitleOf(one.symptom, one.features), one.title);
    const std::string name = NameOf(one.symptom, one.features);
    EXPECT_EQ(name.substr(0, name.size() - 4), one.name);
    EXPECT_TRUE(names.insert(name).second);
  }
}

bool Uses(const RunnableProgram& program, const std::string& feature) {
  return std::find(program.features.begin(), program.features.end(), feature) !=
         program.features.end();
}

/// A fault of a made-up device: a program with all these features goes wrong so.
struct MadeUpFault {
  std::vector<std::string> features;
  Kind kind;
};

/// It runs nothing: whether a program goes wrong says the list of its faults, the first of which
/// counts.
Outcome RunOn(const std::vector<MadeUpFault>& faults, const Task& task) {
  Outcome outcome;
  outcome.kind = Kind::right;
  for (const RunnableBuffer& buffer : task.program.buffers)
    if (buffer.isAnswer) outcome.answers.push_back(buffer.expected);
  for (const MadeUpFault& fault : faults) {
    if (!std::all_of(fault.features.begin(), fault.features.end(),
                     [&task](const auto& feature) { return Uses(task.program, feature); }))
      continue;
    outcome.kind = fault.kind;
    outcome.call = "clBuildProgram";
    if (fault.kind != Kind::wrongAnswer) outcome.answers.clear();
    // The first known byte of `out`.
    const RunnableBuffer& out = task.program.buffers.at(1);
    const auto known = std::find(out.known.begin(), out.known.end(), 0xFF) - out.known.begin();
    if (fault.kind == Kind::wrongAnswer)
      outcome.answers.at(0).at(static_cast<std::size_t>(known)) ^= 0x40;
    break;
  }
  if (task.buildOptions == "-cl-opt-disable") outcome.kind = Kind::right;
  return outcome;
}

struct Concluded {
  std::vector<Fault> faults;
  std::map<std::string, int> findings;  ///< Of each fault by its title; "" for those that vanished.
  int programs = 0;
};

/// Investigates what goes wrong of the first programs, with `atOnce` tasks under way.
Concluded Explored(const std::function<Outcome(const Task&)>& run, std::uint64_t programs,
                   std::size_t atOnce = 1) {
  Concluded concluded;
  InvestigationOptions options;
  options.limits.atOnce = static_cast<int>(atOnce);
  options.device.maxWorkGroupSize = 4;
  Investigator investigator(options, [&](const Finding&, const Fault* fault) {
    ++concluded.findings[fault == nullptr ? "" : fault->title];
  });
  std::deque<Investigator::Numbered> underWay;
  for (std::uint64_t number = 0; number < programs; ++number) {
    Program program = Draw(3, number, {});
    RunnableProgram runnable = MakeRunnable(program);
    Task task;
    task.program = runnable;
    const Outcome outcome = run(task);
    if (outcome.IsFinding()) investigator.Add({std::move(program), std::move(runnable), outcome});
  }
  for (;;) {
    while (underWay.size() < atOnce) {
      std::optional<Investigator::Numbered> next = investigator.Next();
      if (!next) break;
      underWay.push_back(std::move(*next));
    }
    if (underWay.empty()) break;
    // They end in another order than they began.
    const Investigator::Numbered ended = std::move(underWay.back());
    underWay.pop_back();
    investigator.Ended(ended.number, run(ended.task));
  }
  EXPECT_TRUE(investigator.IsIdle());
  concluded.faults = investigator.Faults();
  return concluded;
}

TEST(Investigator, TellsTwoFaultsApart) {
  const std::vector<MadeUpFault> faults = {{{"packed", "whole-structs"}, Kind::wrongAnswer},
                                           {{"loops", "vectors"}, Kind::crashed},
                                           {{"as-type"}, Kind::refused}};
  const auto run = [&faults](const Task& task) { return RunOn(faults, task); };
  const Concluded concluded = Explored(run, 150);
  ASSERT_EQ(concluded.faults.size(), faults.size());
  for (const MadeUpFault& fault : faults) {
    const auto found =
        std::find_if(concluded.faults.begin(), concluded.faults.end(),
                     [&fault](const Fault& one) { return one.symptom.kind == fault.kind; });
    ASSERT_NE(found, concluded.faults.end());
    for (const std::string& feature : fault.features)
      EXPECT_TRUE(Uses(found->shrunken.runnable, feature)) << feature;
    EXPECT_TRUE(found->isComplete);
    EXPECT_GT(found->findings, 1U);
    EXPECT_EQ(concluded.findings.at(found->title), static_cast<int>(found->findings));
    EXPECT_EQ(found->settings.at(0).name, "-cl-opt-disable");
    EXPECT_EQ(found->settings.at(0).result, "goes away");
    EXPECT_EQ(found->settings.at(1).result, "the device takes no SPIR-V");
    EXPECT_LE(found->features.size(), fault.features.size() + 2) << found->title;
    const auto lines = std::count(found->shrunken.runnable.text.begin(),
                                  found->shrunken.runnable.text.end(), '\n');
    EXPECT_LE(lines, 20) << found->shrunken.runnable.text;
  }
  // However many workers there are.
  const Concluded again = Explored(run, 150, 5);
  EXPECT_EQ(again.findings, concluded.findings);
  for (std::size_t i = 0; i < faults.size(); ++i)
    EXPECT_EQ(again.faults.at(i).shrunken.runnable.text,
              concluded.faults.at(i).shrunken.runnable.text);
}

// However many other features its findings have.
TEST(Investigator, TellsOneFaultOnce) {
  for (const char* feature : {"loops", "swizzles", "vector-loads", "packed"}) {
    const std::vector<MadeUpFault> faults = {{{feature}, Kind::wrongAnswer}};
    const Concluded concluded =
        Explored([&faults](const Task& task) { return RunOn(faults, task); }, 60);
    ASSERT_EQ(concluded.faults.size(), 1U) << feature;
    EXPECT_GT(concluded.faults[0].findings, 5U) << feature;
    EXPECT_TRUE(Uses(concluded.faults[0].shrunken.runnable, feature));
  }
}

TEST(Fault, IsTheSameWhateverItHappensTo) {
  struct {
    std::vector<std::string> one;
    std::vector<std::string> other;
    bool isSame;
  } const cases[] = {
      {{"vectors", "swizzles"}, {"arrays", "swizzles", "local-memory"}, true},
      {{"swizzles"}, {"swizzles", "loops"}, true},
      {{"swizzles", "loops"}, {"swizzles", "bytes"}, false},
      {{"members", "nested-structs"}, {"members", "nested-unions"}, false},
      {{"members", "vectors"}, {"members", "vectors", "global-memory"}, true},
      {{"members", "vectors"}, {"members", "three-components"}, false},
      {{"members"}, {"members"}, true},
      {{"members"}, {"members", "loops"}, false},
  };
  for (const auto& one : cases) {
    Fault fault;
    fault.symptom = {Kind::wrongAnswer, "zero", false};
    fault.features = one.one;
    Fault other = fault;
    other.features = one.other;
    // How it is wrong depends on the values.
    other.symptom.how = "not stored";
    EXPECT_EQ(IsSame(fault, other), one.isSame) << testing::PrintToString(one.other);
    EXPECT_EQ(IsSame(other, fault), one.isSame) << testing::PrintToString(one.other);
    other.symptom = {Kind::crashed, "a crash in clBuildProgram", false};
    EXPECT_FALSE(IsSame(fault, other));
  }
}

TEST(Investigator, ForgetsWhatGoesRightAgain) {
  int runs = 0;
  const Concluded concluded = Explored(
      [&runs](const Task& task) {
        return RunOn(runs++ < 40 ? std::vector<MadeUpFault>{{{"members"}, Kind::wrongAnswer}}
                                 : std::vector<MadeUpFault>{},
                     task);
      },
      40);
  EXPECT_TRUE(concluded.faults.empty());
  EXPECT_GT(concluded.findings.at(""), 10);
}

// A device that answers wrongly every third time has one fault, that comes and goes.
TEST(Investigator, TellsWhatComesAndGoes) {
  int runs = 0;
  const Concluded concluded = Explored(
      [&runs](const Task& task) {
        return RunOn(++runs % 3 == 0
                         ? std::vector<MadeUpFault>{{{"whole-unions"}, Kind::wrongAnswer}}
                         : std::vector<MadeUpFault>{},
                     task);
      },
      60);
  ASSERT_FALSE(concluded.faults.empty());
  for (const Fault& fault : concluded.faults) {
    EXPECT_EQ(fault.symptom.kind, Kind::unsteady);
    EXPECT_TRUE(Uses(fault.shrunken.runnable, "whole-unions"));
  }
}

TEST(Investigator, GivesUpWhatIsUnderWay) {
  InvestigationOptions options;
  Investigator investigator(options, [](const Finding&, const Fault*) { FAIL(); });
  Program program = Draw(3, 0, {});
  Outcome wrong;
  wrong.kind = Kind::wrongAnswer;
  investigator.Add({program, MakeRunnable(program), wrong});
  EXPECT_TRUE(investigator.Next().has_value());
  EXPECT_FALSE(investigator.IsIdle());
}

}  // namespace
}  // namespace exploration
