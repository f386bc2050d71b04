/* Oclgrind 21.10: clCreateKernel fails ("Undefined external function: llvm.assume"): the optimizer
   tells what a condition must have been, and the interpreter does not know how it says so. */
__kernel void test(__global const long *in, __global long *out)
{
  long2 s2;
  if (in[0]) {
    s2 = (long2)(in[1], in[2]);
  }
  vstore2(s2, 0, out + 0);
}

/* Features: conditionals, private-memory
Work-items: 1 in groups of 1
in before:
  01 00 00 00 00 00 00 00 02 00 00 00 00 00 00 00
  03 00 00 00 00 00 00 00
out before:
  A5*16
out after:
  02 00 00 00 00 00 00 00 03 00 00 00 00 00 00 00
*/
