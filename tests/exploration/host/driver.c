// Runs the kernels of a batch on this machine: each work-item of a group is a thread. Reads the
// file of cases that write_programs made, and says which programs answer something else.
#define _POSIX_C_SOURCE 200809L
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>

enum { mostBuffers = 8 };
typedef void Kernel(void *, void *, void *, void *, void *, void *, void *, void *);
extern Kernel *const kernels[];

static _Thread_local int ids[3];
static pthread_barrier_t group;

int host_id(int which) { return ids[which]; }
void host_barrier(void) { pthread_barrier_wait(&group); }

struct Item {
  Kernel *kernel;
  void *buffers[mostBuffers];
  int ids[3];
};

static void *Run(void *argument) {
  const struct Item *item = argument;
  void *const *b = item->buffers;
  for (int i = 0; i < 3; ++i) ids[i] = item->ids[i];
  item->kernel(b[0], b[1], b[2], b[3], b[4], b[5], b[6], b[7]);
  return NULL;
}

static FILE *file;

static unsigned long Number(void) {
  unsigned long number = 0;
  if (fscanf(file, "%lu", &number) != 1) exit(2);
  return number;
}

static unsigned char *Bytes(unsigned long count) {
  unsigned char *bytes = aligned_alloc(128, (count + 127) / 128 * 128);
  for (unsigned long i = 0; i < count; ++i) {
    unsigned byte = 0;
    if (fscanf(file, "%2x", &byte) != 1) exit(2);
    bytes[i] = (unsigned char)byte;
  }
  return bytes;
}

int main(int argc, char **argv) {
  file = argc == 2 ? fopen(argv[1], "r") : NULL;
  if (file == NULL) return 2;
  const unsigned long programs = Number();
  unsigned long wrong = 0;
  for (unsigned long program = 0; program < programs; ++program) {
    const unsigned long name = Number();
    const int globalSize = (int)Number();
    const int localSize = (int)Number();
    const unsigned long count = Number();
    unsigned char *buffers[mostBuffers] = {0};
    unsigned char *expected[mostBuffers] = {0};
    unsigned char *known[mostBuffers] = {0};
    unsigned long sizes[mostBuffers] = {0};
    for (unsigned long b = 0; b < count; ++b) {
      const unsigned long isAnswer = Number();
      sizes[b] = Number();
      buffers[b] = Bytes(sizes[b]);
      if (isAnswer) expected[b] = Bytes(sizes[b]);
      if (isAnswer) known[b] = Bytes(sizes[b]);
    }
    pthread_barrier_init(&group, NULL, (unsigned)localSize);
    for (int first = 0; first < globalSize; first += localSize) {
      struct Item items[64];
      pthread_t threads[64];
      for (int i = 0; i < localSize; ++i) {
        items[i].kernel = kernels[program];
        for (int b = 0; b < mostBuffers; ++b) items[i].buffers[b] = buffers[b];
        items[i].ids[0] = first + i;
        items[i].ids[1] = i;
        items[i].ids[2] = first / localSize;
        if (localSize == 1) {
          Run(&items[i]);
        } else {
          pthread_create(&threads[i], NULL, Run, &items[i]);
        }
      }
      for (int i = 0; i < localSize && localSize > 1; ++i) pthread_join(threads[i], NULL);
    }
    pthread_barrier_destroy(&group);
    int isWrong = 0;
    for (unsigned long b = 0; b < count; ++b) {
      for (unsigned long i = 0; i < sizes[b] && known[b] != NULL; ++i) {
        if (((buffers[b][i] ^ expected[b][i]) & known[b][i]) == 0) continue;
        if (!isWrong)
          printf("program %lu: byte %lu of buffer %lu is %02x, not %02x\n", name, i, b,
                 buffers[b][i], expected[b][i]);
        isWrong = 1;
      }
      free(buffers[b]);
      free(expected[b]);
      free(known[b]);
    }
    wrong += (unsigned long)isWrong;
  }
  printf("%lu programs, %lu wrong\n", programs, wrong);
  return wrong != 0;
}
