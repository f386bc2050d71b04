#include "tests/fixture.h"

#include <iostream>

#include "tests/host_arrays.h"

namespace {

// Collects what a stream writes, and looks at the machine when the text "ERROR: " arrives.
class Collector : public std::stringbuf {
 public:
  int aliveAtError = -1;

 protected:
  std::streamsize xsputn(const char* text, std::streamsize size) override {
    if (std::string_view(text, static_cast<std::size_t>(size)).starts_with("ERROR: ") &&
        aliveAtError < 0) {
      aliveAtError = LiveObjects();
    }
    return std::stringbuf::xsputn(text, size);
  }
};

// Turns a stream's output into a buffer for as long as it lives.
class Redirection {
 public:
  Redirection(std::ostream& stream, std::streambuf& buffer)
      : stream_(stream), old_(stream.rdbuf(&buffer)) {}
  ~Redirection() { stream_.rdbuf(old_); }
  Redirection(const Redirection&) = delete;
  Redirection& operator=(const Redirection&) = delete;

 private:
  std::ostream& stream_;
  std::streambuf* old_;
};

}  // namespace

SuiteTest::SuiteTest() {
  ResetMachine();
  ResetRand();
  std::fesetround(FE_TONEAREST);
}

SuiteTest::~SuiteTest() { std::fesetround(FE_TONEAREST); }

Outcome SuiteTest::Collect(int (*function)()) {
  Collector out;
  Collector err;
  Outcome outcome;
  {
    const Redirection toOut(std::cout, out);
    const Redirection toErr(std::cerr, err);
    const int drawsBefore = Draws();
    const int arraysBefore = LiveHostArrays();
    outcome.result = function();
    outcome.draws = Draws() - drawsBefore;
    outcome.hostArrays = LiveHostArrays() - arraysBefore;
  }
  outcome.out = out.str();
  outcome.err = err.str();
  outcome.aliveAtError = err.aliveAtError;
  return outcome;
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
