// What a driver that is not well does when the loader loads it.

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

__attribute__((constructor)) static void AtLoad() {
#if defined(AT_LOAD_ABORT)
  std::abort();
#elif defined(AT_LOAD_EXIT)
  std::exit(AT_LOAD_EXIT);
#elif defined(AT_LOAD_HANG)
  // As if somebody had waited a minute.
  alarm(1);
  for (;;) pause();
#else
  std::puts("banner, or what looks like an answer");
  std::fflush(stdout);
  std::fputs("banner\n", stderr);
#endif
}
