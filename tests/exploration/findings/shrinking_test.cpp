// Each pass on a small program, and shrinking by made-up oracles.

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "exploration/features/basics.h"
#include "exploration/features/features.h"
#include "exploration/features/places.h"
#include "exploration/generator/generator.h"
#include "exploration/program/check.h"
#include "exploration/shrinking/edits.h"
#include "exploration/shrinking/passes.h"
#include "exploration/shrinking/shrink.h"
#include "exploration/shrinking/without_features.h"

namespace exploration {
namespace {

Node Literal(TypeId type, std::vector<std::int64_t> numbers) {
  return {&literalConstruct, type, {}, std::move(numbers)};
}

/// With one work-item, and as much for each pass to take out as a few lines have.
class Sample {
 public:
  Sample() {
    program.inputs = {{700, 0x4142, -3}};
    Type inner;
    inner.kind = Type::Kind::structure;
    inner.name = "S1";
    inner.members = {{"a", TypeOf(Scalar::shortType), 0}, {"b", VectorOf(Scalar::intType, 4), 0}};
    inner.packed = true;
    const TypeId structure = program.types.Add(inner);
    Type outer;
    outer.kind = Type::Kind::unionType;
    outer.name = "U1";
    outer.members = {{"s", structure, 0},
                     {"n", TypeOf(Scalar::longType), 0},
                     {"v", program.types.ArrayOf(TypeOf(Scalar::intType), 3), 8}};
    record = program.types.Add(outer);
    program.body = Block({});
  }

  std::int64_t Declare(const char* name, Space space = Space::privateSpace) {
    const TypeId type = space == Space::privateSpace ? record : program.types.ArrayOf(record, 2);
    program.variables.push_back({name, type, space, Variable::Role::object});
    const auto variable = static_cast<std::int64_t>(program.variables.size()) - 1;
    Add({&declarationConstruct, noType, {}, {variable}});
    return variable;
  }
  std::int64_t AddBuffer(const char* name, int count) {
    program.variables.push_back(
        {name, program.types.ArrayOf(record, count), Space::globalSpace, Variable::Role::buffer});
    const auto variable = static_cast<std::int64_t>(program.variables.size()) - 1;
    const std::size_t size = SizeOf(program.types, program.variables.back().type);
    program.buffers.push_back({static_cast<int>(variable), std::vector<std::uint8_t>(size, 0x11)});
    return variable;
  }
  void Add(Node statement) { program.body.parts.push_back(std::move(statement)); }
  Node Member(std::int64_t variable, int member) const {
    return MemberOf(program, NameOf(program, variable), member);
  }
  Node Input(TypeId type, std::int64_t slot) const { return {&inputConstruct, type, {}, {slot}}; }
  void Answer(Node value) {
    const std::int64_t slot = program.answers;
    program.answers += program.types[value.type].count;
    Add({&answerConstruct, noType, {std::move(value)}, {slot}});
  }

  Program program;
  TypeId record = noType;
};

/// "u1.n = in[0];", and two answers.
Program Stored() {
  Sample sample;
  const std::int64_t u = sample.Declare("u1");
  sample.Add(Assignment(sample.Member(u, 1), sample.Input(TypeOf(Scalar::longType), 0)));
  sample.Answer(sample.Member(u, 1));
  sample.Answer(sample.Input(TypeOf(Scalar::longType), 2));
  return sample.program;
}

/// "u1.s.b = (int4)(...);" and an answer of `component` of it.
Program Vector() {
  Sample sample;
  const std::int64_t u = sample.Declare("u1");
  const Node vector = MemberOf(sample.program, sample.Member(u, 0), 1);
  sample.Add(Assignment(vector, Literal(vector.type, {5, 6, 7, 8})));
  sample.Answer(vector);
  return sample.program;
}

/// A short in a structure in a union in that memory, in groups of two where it isn't private.
Program ShortIn(Space space) {
  Sample sample;
  Node whole;
  if (space == Space::privateSpace) {
    whole = NameOf(sample.program, sample.Declare("u1"));
  } else {
    sample.program.localSize = 2;
    sample.program.inputs.push_back(sample.program.inputs.front());
    const auto variable = static_cast<int>(space == Space::localSpace ? sample.Declare("l1", space)
                                                                      : sample.AddBuffer("g1", 2));
    whole = OwnElement(sample.program, variable);
  }
  const Node member = MemberOf(sample.program, MemberOf(sample.program, whole, 0), 0);
  sample.Add(Assignment(member, sample.Input(TypeOf(Scalar::shortType), 1)));
  sample.Answer(member);
  return sample.program;
}

/// Of a function with two parameters, whose result is one of them.
Program Called() {
  Sample sample;
  Function function;
  function.name = "f1";
  for (const char* name : {"x1", "x2"}) {
    function.parameters.push_back(static_cast<int>(sample.program.variables.size()));
    sample.program.variables.push_back(
        {name, TypeOf(Scalar::longType), Space::privateSpace, Variable::Role::parameter});
  }
  function.body = Block({});
  function.result = {NameOf(sample.program, function.parameters[0])};
  sample.program.functions.push_back(function);
  const TypeId type = TypeOf(Scalar::longType);
  sample.Answer({&callConstruct, type, {sample.Input(type, 0), sample.Input(type, 2)}, {0}});
  return sample.program;
}

std::vector<std::string> LinesOf(const Program& program) {
  std::istringstream text(MakeRunnable(program).text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(text, line);)
    lines.push_back(line.substr(std::min(line.find_first_not_of(' '), line.size())));
  return lines;
}

/// The lines that went, with a '-', and those that came, with a '+'.
std::string Change(const Program& before, const Program& after) {
  const std::vector<std::string> old = LinesOf(before);
  const std::vector<std::string> now = LinesOf(after);
  std::string change;
  for (const std::string& line : old)
    if (std::find(now.begin(), now.end(), line) == now.end()) change += "-" + line + "\n";
  for (const std::string& line : now)
    if (std::find(old.begin(), old.end(), line) == old.end()) change += "+" + line + "\n";
  return change;
}

/// What a pass makes of a program, as far as `kept` stays in its text.
Program After(Program program, const Pass& pass, const std::string& kept) {
  for (std::size_t number = 0;; ++number) {
    const std::optional<Program> next = pass.step(program, number);
    if (!next) return program;
    try {
      const Program tidied = Tidied(*next);
      const Candidate before{program, MakeRunnable(program)};
      const Candidate after{tidied, MakeRunnable(tidied)};
      if (!(SizeOf(after) < SizeOf(before)) || after.runnable.text.find(kept) == std::string::npos)
        continue;
      program = tidied;
      number = static_cast<std::size_t>(-1);
    } catch (const Invalid&) {
    }
  }
}

/// The same for passes whose names stand in a row.
Program After(Program program, std::string_view names, const std::string& kept) {
  for (const Pass& pass : Passes())
    if (names.find(pass.name) != std::string::npos) program = After(program, pass, kept);
  return program;
}

TEST(Passes, TakeOutOneThing) {
  const Program stored = Stored();
  const Program vector = Vector();
  const Program member = ShortIn(Space::privateSpace);
  struct {
    const char* pass;
    Program program;
    const char* kept;
    const char* expected;
  } const cases[] = {
      {"answers", stored, "out[", "-out[1] = in[1];\n"},
      {"work-items", ShortIn(Space::globalSpace), "g1",
       "-in += 1 * get_global_id(0);\n"
       "-out += 1 * get_global_id(0);\n"
       "-g1[get_global_id(0)].s.a = (short)in[0];\n"
       "-out[0] = g1[get_global_id(0)].s.a;\n"
       "+g1[0].s.a = (short)in[0];\n"
       "+out[0] = g1[0].s.a;\n"},
      {"statements", stored, "u1.n =",
       "-out[0] = u1.n;\n"
       "-out[1] = in[1];\n"},
      {"variables", stored, "out[",
       "-struct __attribute__((packed)) S1 {\n"
       "-short a;\n"
       "-int4 b;\n"
       "-};\n"
       "-\n"
       "-union U1 {\n"
       "-struct S1 s;\n"
       "-long n;\n"
       "-int v[3] __attribute__((aligned(8)));\n"
       "-};\n"
       "-\n"
       "-union U1 u1;\n"
       "-u1.n = in[0];\n"
       "-out[0] = u1.n;\n"
       "-out[1] = in[1];\n"
       "+out[0] = in[0];\n"},
      {"helper functions", Called(), "out[0]",
       "-long f1(long x1, long x2)\n"
       "-return x1;\n"
       "-\n"
       "-out[0] = f1(in[0], in[1]);\n"
       "+out[0] = in[0];\n"},
      {"parameters", Called(), "f1(",
       "-long f1(long x1, long x2)\n"
       "-return x1;\n"
       "-out[0] = f1(in[0], in[1]);\n"
       "+long f1()\n"
       "+return 1L;\n"
       "+out[0] = f1();\n"},
      {"members", stored, "u1.n =",
       "-struct __attribute__((packed)) S1 {\n"
       "-short a;\n"
       "-int4 b;\n"
       "-struct S1 s;\n"
       "-int v[3] __attribute__((aligned(8)));\n"},
      {"members by twos", stored, "u1.n =",
       "-struct __attribute__((packed)) S1 {\n"
       "-short a;\n"
       "-int4 b;\n"
       "-struct S1 s;\n"
       "-int v[3] __attribute__((aligned(8)));\n"},
      {"members, records of one member", member, "out[0]",
       "-struct __attribute__((packed)) S1 {\n"
       "-short a;\n"
       "-int4 b;\n"
       "-};\n"
       "-\n"
       "-union U1 {\n"
       "-struct S1 s;\n"
       "-long n;\n"
       "-int v[3] __attribute__((aligned(8)));\n"
       "-};\n"
       "-\n"
       "-union U1 u1;\n"
       "-u1.s.a = (short)in[0];\n"
       "-out[0] = u1.s.a;\n"
       "+short u1;\n"
       "+u1 = (short)in[0];\n"
       "+out[0] = u1;\n"},
      {"work-items, array lengths, arrays of one element", ShortIn(Space::localSpace), "l1",
       "-int v[3] __attribute__((aligned(8)));\n"
       "-in += 1 * get_global_id(0);\n"
       "-out += 1 * get_global_id(0);\n"
       "-__local union U1 l1[2];\n"
       "-l1[get_local_id(0)].s.a = (short)in[0];\n"
       "-out[0] = l1[get_local_id(0)].s.a;\n"
       "+int v[1] __attribute__((aligned(8)));\n"
       "+__local union U1 l1[1];\n"
       "+l1[0].s.a = (short)in[0];\n"
       "+out[0] = l1[0].s.a;\n"},
      {"array lengths", ShortIn(Space::localSpace), "l1",
       "-int v[3] __attribute__((aligned(8)));\n"
       "+int v[1] __attribute__((aligned(8)));\n"},
      {"address spaces", ShortIn(Space::globalSpace), "out[0]",
       "-__kernel void test(__global const long *in, __global long *out, __global union U1 *g1)\n"
       "-g1[get_global_id(0)].s.a = (short)in[0];\n"
       "-out[0] = g1[get_global_id(0)].s.a;\n"
       "+__kernel void test(__global const long *in, __global long *out)\n"
       "+union U1 g1;\n"
       "+g1.s.a = (short)in[0];\n"
       "+out[0] = g1.s.a;\n"},
      {"address spaces", ShortIn(Space::localSpace), "out[0]",
       "-__local union U1 l1[2];\n"
       "-l1[get_local_id(0)].s.a = (short)in[0];\n"
       "-out[0] = l1[get_local_id(0)].s.a;\n"
       "+union U1 l1;\n"
       "+l1.s.a = (short)in[0];\n"
       "+out[0] = l1.s.a;\n"},
      {"attributes", member, "out[0]",
       "-struct __attribute__((packed)) S1 {\n"
       "-int v[3] __attribute__((aligned(8)));\n"
       "+struct S1 {\n"
       "+int v[3];\n"},
      {"vector widths", vector, "out",
       "-int4 b;\n"
       "-u1.s.b = (int4)(5, 6, 7, 8);\n"
       "-vstore4(convert_long4(u1.s.b), 0, out + 0);\n"
       "+int b;\n"
       "+u1.s.b = 5;\n"
       "+out[0] = u1.s.b;\n"},
      {"scalar types", member, "out[0]",
       "-short a;\n"
       "-long n;\n"
       "-u1.s.a = (short)in[0];\n"
       "+int a;\n"
       "+int n;\n"
       "+u1.s.a = (int)in[0];\n"},
      {"expressions", stored, "= u1.n",
       "-u1.n = in[0];\n"
       "-out[1] = in[1];\n"
       "+u1.n = 1L;\n"
       "+out[1] = 1L;\n"},
      {"answers, places", member, "(short)",
       "-u1.s.a = (short)in[0];\n"
       "-out[0] = u1.s.a;\n"
       "+short a1;\n"
       "+a1 = (short)in[0];\n"},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.pass);
    EXPECT_EQ(Change(Tidied(one.program), After(one.program, one.pass, one.kept)), one.expected);
  }
}

TEST(Passes, MakeNumbersPlainAndKeepThemApart) {
  EXPECT_EQ(After(Stored(), "inputs", "").inputs, (std::vector<std::vector<std::int64_t>>{{1, 2}}));
  const Program zeros = After(ShortIn(Space::globalSpace), "buffers", "");
  EXPECT_EQ(zeros.buffers.at(0).bytes, std::vector<std::uint8_t>(48));
}

// Whatever step is taken on what the generator draws, the outcome is refused or valid; and what a
// pass is there for is gone in the end.
TEST(Passes, TakeOutFeaturesOfWhatIsDrawn) {
  struct {
    const char* passes;
    const char* feature;
    const char* kept;
  } const cases[] = {{"blocks", "loops", ""},
                     {"blocks", "conditionals", ""},
                     {"attributes", "packed", ""},
                     {"attributes", "aligned", ""},
                     {"address spaces", "local-memory", ""}};
  const auto has = [](const Program& program, const std::string& feature) {
    const std::vector<std::string> all = MakeRunnable(program).features;
    return std::find(all.begin(), all.end(), feature) != all.end();
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.feature);
    int found = 0;
    int left = 0;
    for (std::uint64_t number = 0; number < 400 && found < 4; ++number) {
      const Program program = Draw(1, number, {});
      if (!has(program, one.feature) || WeightOf(program) > 150) continue;
      ++found;
      left += has(After(program, one.passes, one.kept), one.feature) ? 1 : 0;
    }
    EXPECT_EQ(found, 4);
    EXPECT_LE(left, 2);
  }
}

/// What an oracle says goes wrong: programs with all of these in their text.
StillWrong Holding(std::vector<std::string> words, int* asked = nullptr) {
  return [words = std::move(words), asked](const std::vector<Candidate>& candidates) {
    std::vector<bool> wrong;
    for (const Candidate& candidate : candidates) {
      const std::string& text = candidate.runnable.text;
      wrong.push_back(std::all_of(words.begin(), words.end(), [&text](const std::string& word) {
        return text.find(word) != std::string::npos;
      }));
      if (asked != nullptr) ++*asked;
    }
    return wrong;
  };
}

/// Programs of the generator whose text holds these.
std::vector<Program> Drawn(const std::vector<std::string>& words, std::size_t count) {
  std::vector<Program> programs;
  const StillWrong holds = Holding(words);
  for (std::uint64_t number = 0; programs.size() < count && number < 2000; ++number) {
    const Program program = Draw(2, number, {});
    if (holds({{program, MakeRunnable(program)}}).front()) programs.push_back(program);
  }
  return programs;
}

// Literals that are no indices stay as they are, wherever they stand.
TEST(Passes, PutInOrderWithoutAnotherAnswer) {
  for (std::uint64_t number = 0; number < 100; ++number) {
    const Program program = Draw(6, number, {});
    const RunnableProgram before = MakeRunnable(program);
    const RunnableProgram after = MakeRunnable(Tidied(program));
    EXPECT_EQ(after.buffers.at(1).expected, before.buffers.at(1).expected) << "6:" << number;
  }
}

TEST(WithoutFeatures, LeavesMostOfTheProgram) {
  int left = 0;
  for (std::uint64_t number = 0; number < 100; ++number) {
    const Program program = Draw(7, number, {});
    const auto without = WithoutFeatures(program, {"conditionals", "packed"});
    if (!without) continue;
    ++left;
    Program before = program;
    Program after = *without;
    EXPECT_GE(2 * StatementsOf(after).size(), StatementsOf(before).size());
    for (const Feature* feature : FeaturesOf(after))
      EXPECT_TRUE(feature->name != "conditionals" && feature->name != "packed") << number;
  }
  EXPECT_GT(left, 50);
}

// The text would have a pointer to the arrays' elements.
TEST(Passes, LeaveNoBufferOfArrays) {
  Sample sample;
  const std::int64_t buffer = sample.AddBuffer("g1", 1);
  EXPECT_NO_THROW(Check(sample.program));
  Program& program = sample.program;
  const TypeId numbers = program.types.ArrayOf(TypeOf(Scalar::intType), 3);
  program.variables[static_cast<std::size_t>(buffer)].type = program.types.ArrayOf(numbers, 1);
  EXPECT_THROW(Check(program), Invalid);
}

TEST(Shrinking, LeavesWhatGoesWrongAndLittleElse) {
  struct {
    std::vector<std::string> words;
    std::size_t lines;
  } const cases[] = {{{"union", "out["}, 10},      {{"packed", "out["}, 11},
                     {{"for (", "union"}, 10},     {{"vload", "out["}, 12},
                     {{"__local", "barrier"}, 10}, {{"return", "union"}, 15}};
  for (const auto& one : cases) {
    SCOPED_TRACE(one.words.front());
    const std::vector<Program> programs = Drawn(one.words, 3);
    EXPECT_EQ(programs.size(), 3U);
    for (const Program& program : programs) {
      ShrinkLimits limits;
      const Shrunk shrunk = Shrink(program, Holding(one.words), limits);
      EXPECT_TRUE(shrunk.isComplete);
      EXPECT_TRUE(Holding(one.words)({shrunk.smallest}).front());
      EXPECT_EQ(MakeRunnable(shrunk.smallest.program).text, shrunk.smallest.runnable.text);
      EXPECT_LE(LinesOf(shrunk.smallest.program).size(), one.lines)
          << shrunk.smallest.runnable.text;
      limits.atOnce = 7;
      const Shrunk inParallel = Shrink(program, Holding(one.words), limits);
      EXPECT_EQ(inParallel.smallest.runnable.text, shrunk.smallest.runnable.text);
      EXPECT_EQ(inParallel.tries, shrunk.tries);
    }
  }
}

TEST(Shrinking, AsksNoMoreThanItMay) {
  const Program program = Drawn({"union", "out["}, 1).at(0);
  ShrinkLimits limits;
  limits.tries = 10;
  int asked = 0;
  const Shrunk shrunk = Shrink(program, Holding({"union", "out["}, &asked), limits);
  EXPECT_FALSE(shrunk.isComplete);
  EXPECT_LE(asked, 10 + limits.confirmations);
  limits.tries = 0;
  const Shrunk same = Shrink(program, Holding({"union"}), limits);
  EXPECT_EQ(same.smallest.runnable.text, MakeRunnable(program).text);
}

// What goes wrong the first time alone is no step: back to the smallest program that does so
// always.
TEST(Shrinking, GoesBackToWhatIsSteady) {
  const Program program = Drawn({"union", "out["}, 1).at(0);
  const std::size_t enough = MakeRunnable(program).text.size() * 2 / 3;
  std::set<std::string> seen;
  const StillWrong now = [&](const std::vector<Candidate>& candidates) {
    std::vector<bool> wrong;
    for (const Candidate& candidate : candidates) {
      const std::string& text = candidate.runnable.text;
      wrong.push_back(seen.insert(text).second || text.size() >= enough);
    }
    return wrong;
  };
  const Shrunk shrunk = Shrink(program, now, {});
  EXPECT_GE(shrunk.smallest.runnable.text.size(), enough);
  EXPECT_LT(shrunk.smallest.runnable.text.size(), MakeRunnable(program).text.size());
  EXPECT_FALSE(shrunk.isComplete);
}

}  // namespace
}  // namespace exploration
