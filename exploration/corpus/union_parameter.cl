/* Mesa 22.3.6, Rusticl on llvmpipe: what the function stores into its parameter changes the union
   that the caller has passed. */
union U1 {
  int a;
};

void f1(union U1 v1)
{
  v1.a = 1;
}

__kernel void test(__global const long *in, __global long *out)
{
  union U1 u1;
  u1.a = (int)in[0];
  f1(u1);
  out[0] = u1.a;
}

/* Features: members, parameters, private-memory
Work-items: 1 in groups of 1
in before:
  04 00 00 00 00 00 00 00
out before:
  A5 A5 A5 A5 A5 A5 A5 A5
out after:
  04 00 00 00 00 00 00 00
*/
