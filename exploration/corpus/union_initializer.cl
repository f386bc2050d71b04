/* Mesa 22.3.6, Rusticl on llvmpipe: a union that is initialized with another one, whole, does not
   get its bytes. */
union U1 {
  int b;
};

__kernel void test(__global const long *in, __global long *out)
{
  union U1 u1;
  u1.b = 1;
  union U1 w1 = u1;
  u1.b = w1.b;
  out[0] = u1.b;
}

/* Features: members, initializers, private-memory
Work-items: 1 in groups of 1
in before:
  00 00 00 00 00 00 00 00
out before:
  A5 A5 A5 A5 A5 A5 A5 A5
out after:
  01 00 00 00 00 00 00 00
*/
