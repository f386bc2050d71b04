/* Mesa 22.3.6, Rusticl on llvmpipe: of a packed union in a union in local memory the bytes are not
   found through the other member. */
union __attribute__((packed)) U1 {
  int a;
  short b[3];
};

union U2 {
  uchar a;
  union U1 b;
};

__kernel void test(__global const long *in, __global long *out)
{
  __local union U2 l1[1];
  l1[0].b.a = 1;
  out[0] = l1[0].a;
}

/* Features: members, arrays, nested-unions, packed, local-memory
Work-items: 1 in groups of 1
in before:
  00 00 00 00 00 00 00 00
out before:
  A5 A5 A5 A5 A5 A5 A5 A5
out after:
  01 00 00 00 00 00 00 00
*/
