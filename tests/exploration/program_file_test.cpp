// A program that is kept in a file is the same when it is read again.

#include "exploration/program/program_file.h"

#include <gtest/gtest.h>

#include <string>

#include "common/text/bad_use.h"
#include "exploration/generator/generator.h"
#include "exploration/program/corpus.h"

namespace exploration {
namespace {

// Bytes of which nothing is known are not kept.
std::vector<std::uint8_t> KnownOf(const RunnableBuffer& buffer) {
  std::vector<std::uint8_t> bytes = buffer.expected;
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] &= buffer.known[i];
  return bytes;
}

TEST(ProgramFile, HoldsAllThatAProgramIsRunWith) {
  Options options;
  options.hasDouble = true;
  options.hasHalf = true;
  options.hasAnonymousMembers = true;
  int withUnknown = 0;
  int withSeveralBuffers = 0;
  for (std::uint64_t number = 1; number <= 300; ++number) {
    SCOPED_TRACE(number);
    const RunnableProgram program = MakeRunnable(Draw(11, number, options));
    const std::string file = FileOf(program);
    const RunnableProgram read = FromFile("file", "/* Kept for a test. */\n" + file);
    EXPECT_EQ(read.text, "/* Kept for a test. */\n" + program.text);
    EXPECT_EQ(read.needsDouble, program.needsDouble);
    EXPECT_EQ(read.needsHalf, program.needsHalf);
    EXPECT_EQ(read.kernel, program.kernel);
    EXPECT_EQ(read.globalSize, program.globalSize);
    EXPECT_EQ(read.localSize, program.localSize);
    EXPECT_EQ(read.features, program.features);
    ASSERT_EQ(read.buffers.size(), program.buffers.size());
    for (std::size_t i = 0; i < read.buffers.size(); ++i) {
      const RunnableBuffer& buffer = program.buffers[i];
      EXPECT_EQ(read.buffers[i].name, buffer.name);
      EXPECT_EQ(read.buffers[i].bytes, buffer.bytes);
      ASSERT_EQ(read.buffers[i].isAnswer, buffer.isAnswer);
      if (!buffer.isAnswer) continue;
      EXPECT_EQ(read.buffers[i].known, buffer.known);
      EXPECT_EQ(read.buffers[i].expected, KnownOf(buffer));
      withUnknown += KnownOf(buffer) != buffer.expected ? 1 : 0;
    }
    withSeveralBuffers += program.buffers.size() > 2 ? 1 : 0;
    EXPECT_TRUE(FileOf(FromFile("file", file)) == file);
  }
  EXPECT_GT(withUnknown, 0);
  EXPECT_GT(withSeveralBuffers, 50);
}

TEST(ProgramFile, IsRefusedWhereItSaysSomethingElse) {
  const std::string text = "__kernel void test(__global long *out)\n{\n}\n";
  const std::string head = "\n/* Features: members\nWork-items: 2 in groups of 1\n";
  const std::string bytes = "out before:\n  00*16\nout after:\n  01 ?\? 00*14\n";
  EXPECT_EQ(FromFile("file", text + head + bytes + "*/\n").buffers.at(0).known.at(1), 0);
  struct {
    std::string file;
    const char* says;
  } const cases[] = {
      {"", "file is no program: it ends in no comment with buffers"},
      {text, "file is no program: it ends in no comment with buffers"},
      {text + head + bytes, "file is no program: its comment doesn't end"},
      {text + head + "*/\n", "file is no program: it has no buffers, or no whole work-groups"},
      {text + head + "  00\n*/\n", "file is no program: bytes of no buffer"},
      {text + head + "out before:\n  0\n*/\n", "file is no program: '0' is no byte"},
      {text + head + "out before:\n  ?\?\n*/\n", "file is no program: '?\?' is no byte"},
      {text + head + "out before:\n  0G\n*/\n", "file is no program: '0G' is no byte"},
      {text + head + "out before:\n  00*\n*/\n", "file is no program: '00*' is no byte"},
      {text + head + "out before:\n  00*99999\n*/\n", "file is no program: '00*99999' is no byte"},
      {text + head + "out before:\n  00\nout after:\n  00 00\n*/\n",
       "file is no program: before and after, out is not of one size"},
      {text + head + "out after:\n  00\n*/\n", "file is no program: it says 'out after:'"},
      {text + head + "hello\n*/\n", "file is no program: it says 'hello'"},
      {text + "\n/* Features: members\nWork-items: 3 in groups of 2\n" + bytes + "*/\n",
       "file is no program: it has no buffers, or no whole work-groups"},
      {text + "\n/* Features: members\nWork-items: 3 in groups of 0\n" + bytes + "*/\n",
       "file is no program: it says 'Work-items: 3 in groups of 0'"},
  };
  for (const auto& refused : cases) {
    SCOPED_TRACE(refused.file);
    try {
      FromFile("file", refused.file);
      ADD_FAILURE() << "was taken";
    } catch (const text::BadUse& error) {
      EXPECT_STREQ(error.what(), refused.says);
    }
  }
}

// Whoever opens one is told what went wrong where.
TEST(Corpus, SaysOfEachProgramWhoGotItWrong) {
  const std::vector<KeptProgram> corpus = KeptIn(CORPUS);
  EXPECT_GE(corpus.size(), 15U);
  for (const KeptProgram& kept : corpus) {
    SCOPED_TRACE(kept.name);
    EXPECT_TRUE(kept.program.text.starts_with("/*"));
    EXPECT_FALSE(kept.program.features.empty());
  }
}

}  // namespace
}  // namespace exploration
