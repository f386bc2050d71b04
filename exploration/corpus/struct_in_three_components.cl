/* Oclgrind 21.10: clCreateKernel fails ("Unsupported ... int size"): LLVM has made integers of a
   width that no type of the text has, which the interpreter does not know. */
struct S2 {
  int a;
  int2 b;
};

union U1 {
  int3 a;
  struct S2 b;
};

__kernel void test(__global const long *in, __global long *out, __constant union U1 *k1)
{
  union U1 w3 = {(int3)((int)in[0], (int)in[1], (int)in[2])};
  w3.b = k1[0].b;
  vstore2(convert_long2(w3.b.b), 0, out + 0);
  ((__private uchar *)&w3.b)[1] = (uchar)1;
}

/* Features: members, nested-structs, vectors, three-components, bytes, whole-structs, initializers, private-memory, constant-memory
Work-items: 1 in groups of 1
in before:
  01 00 00 00 00 00 00 00 02 00 00 00 00 00 00 00
  03 00 00 00 00 00 00 00
out before:
  A5*16
out after:
  00*16
k1 before:
  00*16
*/
