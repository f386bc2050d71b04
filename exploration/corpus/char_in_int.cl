/* Oclgrind 21.10: nothing is stored ("Unsupported ... int size"): LLVM has made integers of a
   width that no type of the text has, which the interpreter does not know. */
union U1 {
  char a;
  int b;
};

__kernel void test(__global const long *in, __global long *out, __constant union U1 *k1)
{
  union U1 w1;
  w1.b = (int)k1[0].a;
  out[0] = w1.b;
  out[1] = w1.a;
}

/* Features: members, constant-indices, conversions, private-memory, constant-memory
Work-items: 1 in groups of 1
in before:
  00 00 00 00 00 00 00 00
out before:
  A5*16
out after:
  00*16
k1 before:
  00 00 00 00
*/
