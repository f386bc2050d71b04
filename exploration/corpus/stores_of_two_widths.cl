/* Oclgrind 21.10: a store into global memory is lost ("Unsupported ... int size"): LLVM has made
   integers of a width that no type of the text has, which the interpreter does not know. */
union U1 {
  short a;
  long b;
};

union U1 f2(union U1 v2, long x6, long x7)
{
  for (int i4 = 0; i4 < x7; ++i4) {
    v2.b = 1L;
  }
  for (int i5 = 0; i5 < x6; ++i5) {
    v2.a = (short)1;
  }
  return v2;
}

__kernel void test(__global const long *in, __global long *out, __global union U1 *g1)
{
  in += 1 * get_global_id(0);
  union U1 l1;
  g1[get_global_id(0)].b = 1L;
  union U1 v1b;
  short x1b;
  x1b = (short)1;
  long x3b;
  x3b = in[0];
  v1b.a = x1b;
  v1b.b = x3b;
  l1 = v1b;
  l1 = f2(l1, 1L, 1L);
}

/* Features: members, whole-unions, parameters, results, loops, work-items, private-memory, global-memory
Work-items: 2 in groups of 2
in before:
  02 00 00 00 00 00 00 00 04 00 00 00 00 00 00 00
out before:
  A5 A5 A5 A5 A5 A5 A5 A5
out after:
  A5 A5 A5 A5 A5 A5 A5 A5
g1 before:
  00*16
g1 after:
  01 00 00 00 00 00 00 00 01 00 00 00 00 00 00 00
*/
