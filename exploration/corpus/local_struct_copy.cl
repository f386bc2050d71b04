/* Mesa 22.3.6, Rusticl on llvmpipe: a struct that is copied whole from local memory has other
   bytes, not the same ones in each run. */
struct S1 {
  long a;
};

__kernel void test(__global const long *in, __global long *out)
{
  __local struct S1 l1[1];
  l1[0].a = in[0];
  struct S1 v1;
  v1 = l1[0];
  out[0] = v1.a;
  l1[0].a = 1L;
}

/* Features: members, whole-structs, private-memory, local-memory
Work-items: 1 in groups of 1
in before:
  04 00 00 00 00 00 00 00
out before:
  A5 A5 A5 A5 A5 A5 A5 A5
out after:
  04 00 00 00 00 00 00 00
*/
