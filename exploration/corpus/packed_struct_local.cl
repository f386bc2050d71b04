/* Mesa 22.3.6, Rusticl on llvmpipe: a packed struct that is copied whole from global to local
   memory loses bytes. */
struct __attribute__((packed)) S5 {
  char b;
  int d[1];
};

__kernel void test(__global const long *in, __global long *out, __global struct S5 *g1)
{
  __local struct S5 l1[1];
  l1[0] = g1[0];
  barrier(CLK_LOCAL_MEM_FENCE | CLK_GLOBAL_MEM_FENCE);
  {
    event_t event = async_work_group_copy((__global uchar *)g1, (const __local uchar *)l1, 1 * sizeof(struct S5), 0);
    wait_group_events(1, &event);
  }
  barrier(CLK_LOCAL_MEM_FENCE | CLK_GLOBAL_MEM_FENCE);
}

/* Features: arrays, packed, whole-structs, local-memory, global-memory, async-copies
Work-items: 1 in groups of 1
in before:
  00 00 00 00 00 00 00 00
out before:
  A5 A5 A5 A5 A5 A5 A5 A5
out after:
  A5 A5 A5 A5 A5 A5 A5 A5
g1 before:
  24 00 00 00 00
g1 after:
  24 00 00 00 00
*/
