/* PoCL 3.1 on a processor with AVX-512: of the vector that is passed beside a union, the function gets bytes
   of what it was converted from. */
union U1 {
  char16 a;
  int b;
};

union U1 f1(union U1 v1, short8 x1)
{
  v1.a = as_char16(as_long2(x1));
  return v1;
}

__kernel void test(__global const long *in, __global long *out, __global union U1 *g1)
{
  g1[0] = f1(g1[0], convert_short8(vload8(0, in + 0)));
}

/* Features: members, vectors, as-type, parameters, results, global-memory
Work-items: 1 in groups of 1
in before:
  01 00 00 00 00 00 00 00 02 00 00 00 00 00 00 00
  03 00 00 00 00 00 00 00 04 00 00 00 00 00 00 00
  05 00 00 00 00 00 00 00 06 00 00 00 00 00 00 00
  07 00 00 00 00 00 00 00 08 00 00 00 00 00 00 00
out before:
  A5 A5 A5 A5 A5 A5 A5 A5
out after:
  A5 A5 A5 A5 A5 A5 A5 A5
g1 before:
  00*16
g1 after:
  01 00 02 00 03 00 04 00 05 00 06 00 07 00 08 00
*/
