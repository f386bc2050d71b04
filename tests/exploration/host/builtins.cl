// OpenCL C's functions for this machine, as far as the programs call them: slow and plain.
#pragma OPENCL EXTENSION cl_khr_fp64 : enable
#pragma OPENCL EXTENSION cl_khr_fp16 : enable
#define OVERLOADED __attribute__((overloadable))

#define LOAD(T, N, SPACE)                                       \
  T##N OVERLOADED vload##N(size_t offset, const SPACE T *p) {   \
    T##N v;                                                     \
    for (int i = 0; i < N; ++i) ((T *)&v)[i] = p[offset * N + i]; \
    return v;                                                   \
  }
#define STORE(T, N, SPACE)                                      \
  void OVERLOADED vstore##N(T##N v, size_t offset, SPACE T *p) { \
    for (int i = 0; i < N; ++i) p[offset * N + i] = ((T *)&v)[i]; \
  }
#define WIDTHS(DO, T, SPACE) DO(T, 2, SPACE) DO(T, 3, SPACE) DO(T, 4, SPACE) DO(T, 8, SPACE) DO(T, 16, SPACE)
#define WRITABLE(DO, T) WIDTHS(DO, T, __global) WIDTHS(DO, T, __local) WIDTHS(DO, T, __private)
#define MEMORY(T) WRITABLE(LOAD, T) WIDTHS(LOAD, T, __constant) WRITABLE(STORE, T)
MEMORY(char)
MEMORY(uchar)
MEMORY(short)
MEMORY(ushort)
MEMORY(int)
MEMORY(uint)
MEMORY(long)
MEMORY(ulong)
MEMORY(float)
MEMORY(double)
MEMORY(half)

// Of ordinary numbers: the exponent has another bias, and the fraction 13 bits more.
float float_of(ushort half_bits) {
  uint magnitude = ((half_bits & 0x7FFFu) << 13) + ((127u - 15u) << 23);
  return as_float((half_bits & 0x8000u) << 16 | magnitude);
}
ushort half_of(float number) {
  uint bits = as_uint(number);
  return (bits >> 16 & 0x8000u) | ((bits & 0x7FFFFFFFu) - ((127u - 15u) << 23)) >> 13;
}
#define LOAD_HALF(N, SPACE)                                                   \
  float##N OVERLOADED vload_half##N(size_t offset, const SPACE half *p) {     \
    float##N v;                                                               \
    const int n = sizeof(#N) > 1 ? #N[0] - '0' : 1;                           \
    for (int i = 0; i < n; ++i)                                               \
      ((float *)&v)[i] = float_of(((const SPACE ushort *)p)[offset * n + i]); \
    return v;                                                                 \
  }
#define STORE_HALF(N, ROUNDING)                                                       \
  void OVERLOADED vstore_half##N##ROUNDING(float##N v, size_t offset, __global half *p) { \
    const int n = sizeof(#N) > 1 ? #N[0] - '0' : 1;                                   \
    for (int i = 0; i < n; ++i)                                                       \
      ((__global ushort *)p)[offset * n + i] = half_of(((float *)&v)[i]);             \
  }
#define STORES_HALF(N) \
  STORE_HALF(N, ) STORE_HALF(N, _rte) STORE_HALF(N, _rtz) STORE_HALF(N, _rtp) STORE_HALF(N, _rtn)
#define HALVES(N) LOAD_HALF(N, __global) LOAD_HALF(N, __constant) STORES_HALF(N)
HALVES()
HALVES(2)
HALVES(3)
HALVES(4)
HALVES(8)

#define CONVERT(TO, FROM)                                                                      \
  TO OVERLOADED convert_##TO(FROM v) { return (TO)v; }                                         \
  TO##2 OVERLOADED convert_##TO##2(FROM##2 v) { return __builtin_convertvector(v, TO##2); }    \
  TO##3 OVERLOADED convert_##TO##3(FROM##3 v) { return __builtin_convertvector(v, TO##3); }    \
  TO##4 OVERLOADED convert_##TO##4(FROM##4 v) { return __builtin_convertvector(v, TO##4); }    \
  TO##8 OVERLOADED convert_##TO##8(FROM##8 v) { return __builtin_convertvector(v, TO##8); }    \
  TO##16 OVERLOADED convert_##TO##16(FROM##16 v) { return __builtin_convertvector(v, TO##16); }
#define CONVERT_TO(TO)                                                                 \
  CONVERT(TO, char) CONVERT(TO, uchar) CONVERT(TO, short) CONVERT(TO, ushort)          \
  CONVERT(TO, int) CONVERT(TO, uint) CONVERT(TO, long) CONVERT(TO, ulong)              \
  CONVERT(TO, float) CONVERT(TO, double)
CONVERT_TO(char)
CONVERT_TO(uchar)
CONVERT_TO(short)
CONVERT_TO(ushort)
CONVERT_TO(int)
CONVERT_TO(uint)
CONVERT_TO(long)
CONVERT_TO(ulong)
CONVERT_TO(float)
CONVERT_TO(double)

// In the driver.
int host_id(int which);
void host_barrier(void);

size_t OVERLOADED get_global_id(uint dimension) { return dimension == 0 ? host_id(0) : 0; }
size_t OVERLOADED get_local_id(uint dimension) { return dimension == 0 ? host_id(1) : 0; }
size_t OVERLOADED get_group_id(uint dimension) { return dimension == 0 ? host_id(2) : 0; }
void OVERLOADED barrier(cl_mem_fence_flags flags) { host_barrier(); }
// Clang declares it for a pointer to any address space, which this version of the language can't write.
void wait_for_events(void) __asm__("_Z17wait_group_eventsiPU9CLgeneric9ocl_event");
void wait_for_events(void) {}

#define COPY(TO, FROM)                                                                          \
  event_t OVERLOADED async_work_group_copy(TO uchar *to, const FROM uchar *from, size_t count,  \
                                           event_t event) {                                     \
    if (host_id(1) == 0)                                                                        \
      for (size_t i = 0; i < count; ++i) to[i] = from[i];                                       \
    return event;                                                                               \
  }
COPY(__local, __global)
COPY(__global, __local)

#define ATOMIC(NAME, T, SPACE)                                  \
  T OVERLOADED atomic_##NAME(volatile SPACE T *p, T v) {        \
    return __sync_fetch_and_##NAME(p, v);                       \
  }
#define ATOMICS(T, SPACE)                                                          \
  ATOMIC(add, T, SPACE) ATOMIC(sub, T, SPACE) ATOMIC(and, T, SPACE)                \
  ATOMIC(or, T, SPACE) ATOMIC(xor, T, SPACE)
ATOMICS(int, __global)
ATOMICS(uint, __global)
ATOMICS(int, __local)
ATOMICS(uint, __local)
