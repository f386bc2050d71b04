/* Mesa 22.3.6, Rusticl on llvmpipe: as union_parameter, with a struct that the caller has from
   __constant data. */
struct S1 {
  int a;
  int c;
};

__constant struct S1 c1 = {1};

int f1(struct S1 v1)
{
  v1.c = 1;
  return 1;
}

__kernel void test(__global const long *in, __global long *out)
{
  struct S1 s1;
  s1 = c1;
  out[0] = f1(s1);
  out[1] = s1.c;
}

/* Features: members, whole-structs, parameters, results, private-memory, constant-data
Work-items: 1 in groups of 1
in before:
  00 00 00 00 00 00 00 00
out before:
  A5*16
out after:
  01 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00
*/
