#pragma once

// Compiled into every file of a mutated tree. mutation::On(n) is whether the environment's MUTANT
// is n; that it was asked is noted in the file that MUTANTS_REACHED names, a byte for each mutant,
// which several processes share and which survives a kill.

#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace mutation {

constexpr int room = 1 << 16;

struct State {
  int chosen = 0;
  unsigned char* reached = nullptr;
};

// A mutant may start itself without end: so deep within each other no processes of a test are.
constexpr int deepest = 10;
inline int depth = 0;

inline void GoDeeper() {
  if (++depth > deepest) _exit(1);
}

inline void CountDepth() {
  if (const char* above = std::getenv("MUTANTS_DEPTH")) depth = std::atoi(above);
  GoDeeper();
  char text[16];
  std::snprintf(text, sizeof text, "%d", depth);
  setenv("MUTANTS_DEPTH", text, 1);
  pthread_atfork(nullptr, nullptr, GoDeeper);
}

inline State Start() {
  CountDepth();
  State state;
  if (const char* chosen = std::getenv("MUTANT")) state.chosen = std::atoi(chosen);
  const char* path = std::getenv("MUTANTS_REACHED");
  const int file = path == nullptr ? -1 : open(path, O_RDWR | O_CLOEXEC);
  if (file < 0) return state;
  void* const shared = mmap(nullptr, room, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  close(file);
  if (shared != MAP_FAILED) state.reached = static_cast<unsigned char*>(shared);
  return state;
}

inline bool On(int n) {
  static const State state = Start();
  if (state.reached != nullptr) state.reached[n] = 1;
  return n == state.chosen;
}

}  // namespace mutation
