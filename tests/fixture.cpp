#include "tests/fixture.h"

#include <iostream>
#include <new>
#include <streambuf>
#include <string_view>

namespace {

// Collects what a stream writes, counts the lines that were not flushed when the next text or the
// end came, and looks at the machine when the text "ERROR: " arrives.
class Collector : public std::streambuf {
 public:
  ~Collector() override {
    Write("");
    EXPECT_EQ(unflushed_, 0) << "of the lines of " << text_;
  }

  const std::string& Text() const { return text_; }
  int AliveAtError() const { return aliveAtError_; }

 protected:
  std::streamsize xsputn(const char* text, std::streamsize size) override {
    Write({text, static_cast<std::size_t>(size)});
    return size;
  }

  int_type overflow(int_type c) override {
    const char character = traits_type::to_char_type(c);
    Write({&character, 1});
    return c;
  }

  int sync() override {
    flushed_ = text_.size();
    return 0;
  }

 private:
  void Write(std::string_view text) {
    if (text_.ends_with('\n') && flushed_ < text_.size()) ++unflushed_;
    if (text.starts_with("ERROR: ") && aliveAtError_ < 0) aliveAtError_ = LiveObjects();
    text_ += text;
  }

  std::string text_;
  std::size_t flushed_ = 0;
  int unflushed_ = 0;
  int aliveAtError_ = -1;
};

// Turns a stream's output into a buffer for as long as it lives, and leaves every flush to the
// writer, of which std::cerr would else make its own.
class Redirection {
 public:
  Redirection(std::ostream& stream, std::streambuf& buffer)
      : stream_(stream), flags_(stream.flags()), old_(stream.rdbuf(&buffer)) {
    stream << std::nounitbuf;
  }
  ~Redirection() {
    stream_.rdbuf(old_);
    stream_.flags(flags_);
  }
  Redirection(const Redirection&) = delete;
  Redirection& operator=(const Redirection&) = delete;

 private:
  std::ostream& stream_;
  std::ios::fmtflags flags_;
  std::streambuf* old_;
};

}  // namespace

SuiteTest::SuiteTest() {
  ResetMachine();
  ResetRand();
  std::fesetround(FE_TONEAREST);
}

SuiteTest::~SuiteTest() { std::fesetround(FE_TONEAREST); }

Outcome SuiteTest::Collect(const std::function<int()>& function) {
  Collector out;
  Collector err;
  Outcome outcome;
  {
    const Redirection toOut(std::cout, out);
    const Redirection toErr(std::cerr, err);
    const int drawsBefore = Draws();
    StartHostArrays();
    outcome.result = function();
    outcome.draws = Draws() - drawsBefore;
    outcome.hostArrays = MadeHostArrays();
  }
  outcome.out = out.Text();
  outcome.err = err.Text();
  outcome.aliveAtError = err.AliveAtError();
  return outcome;
}

Outcome SuiteTest::CollectUntilBadAlloc(int (*function)()) {
  return Collect([function] {
    EXPECT_THROW(function(), std::bad_alloc);
    return -1;
  });
}

std::string Lines(const std::string& announcement, const std::vector<std::string>& words) {
  std::ostringstream lines;
  lines << announcement << '\n';
  int repetition = 0;
  for (const std::string& word : words) lines << "RUN " << ++repetition << ": " << word << '\n';
  return lines.str();
}

std::vector<std::string> Words(int count, const std::string& word) {
  return {static_cast<std::size_t>(count), word};
}
