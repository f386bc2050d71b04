#include "tests/scripted_rand.h"

#include <cstdlib>
#include <deque>

namespace {

std::deque<int> script;
int draws = 0;

}  // namespace

void ResetRand() {
  script.clear();
  draws = 0;
  srandom(1);
}

void ScriptRand(const std::vector<int>& numbers, int times) {
  for (int i = 0; i < times; ++i) script.insert(script.end(), numbers.begin(), numbers.end());
}

int Draws() { return draws; }

extern "C" int rand() noexcept {
  ++draws;
  if (script.empty()) return static_cast<int>(random());
  const int number = script.front();
  script.pop_front();
  return number;
}
