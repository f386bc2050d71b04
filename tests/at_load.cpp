// What a driver that is not well does when the loader loads it.

#include <cstdio>
#include <cstdlib>

__attribute__((constructor)) static void AtLoad() {
#if defined(AT_LOAD_ABORT)
  std::abort();
#elif defined(AT_LOAD_EXIT)
  std::exit(AT_LOAD_EXIT);
#else
  std::puts("banner, or what looks like an answer");
  std::fputs("banner\n", stderr);
#endif
}
