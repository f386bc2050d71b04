/* An OpenCL for reproducers. It writes the name of each call on standard output as a line of its
 * own, "> NAME", and the program's text into the file that SCRIPTED_TEXT names. The call that
 * SCRIPTED_FAILURE names fails with -5. A read gives the bytes of the file that SCRIPTED_ANSWERS
 * names, and zeros behind them. The device's floats can do what SCRIPTED_FLOATS says in bits, and
 * it does not tell if that is not set. The first platform has no device, the second a GPU, or a
 * processor if SCRIPTED_PROCESSOR is set. */

#define CL_TARGET_OPENCL_VERSION 120
#include <CL/cl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static int object;
static int noDevice;

static cl_int Called(const char* name) {
  const char* failure = getenv("SCRIPTED_FAILURE");
  printf("> %s\n", name);
  return failure != NULL && strcmp(failure, name) == 0 ? -5 : CL_SUCCESS;
}

static void* Made(const char* name, cl_int* error) {
  *error = Called(name);
  return *error == CL_SUCCESS ? &object : NULL;
}

cl_int clGetPlatformIDs(cl_uint wanted, cl_platform_id* platforms, cl_uint* count) {
  if (wanted < 2) abort();
  platforms[0] = (cl_platform_id)(void*)&noDevice;
  platforms[1] = (cl_platform_id)(void*)&object;
  *count = 2;
  return Called("clGetPlatformIDs");
}

cl_context clCreateContextFromType(const cl_context_properties* properties, cl_device_type type,
                                   void(CL_CALLBACK* notify)(const char*, const void*, size_t,
                                                             void*),
                                   void* data, cl_int* error) {
  const int processor = getenv("SCRIPTED_PROCESSOR") != NULL;
  (void)notify, (void)data;
  if (properties[1] == (cl_context_properties)&noDevice ||
      (processor && type == CL_DEVICE_TYPE_GPU)) {
    *error = CL_DEVICE_NOT_FOUND;
    return NULL;
  }
  if (properties[1] != (cl_context_properties)&object) abort();
  if (type != (processor ? CL_DEVICE_TYPE_ALL : CL_DEVICE_TYPE_GPU)) abort();
  return Made("clCreateContextFromType", error);
}

cl_int clGetContextInfo(cl_context context, cl_context_info name, size_t size, void* value,
                        size_t* returned) {
  (void)context, (void)name, (void)size;
  *(cl_device_id*)value = (cl_device_id)(void*)&object;
  *returned = sizeof(cl_device_id);
  return Called("clGetContextInfo");
}

cl_int clGetDeviceInfo(cl_device_id device, cl_device_info name, size_t size, void* value,
                       size_t* returned) {
  (void)device, (void)returned;
  if (name == CL_DEVICE_SINGLE_FP_CONFIG) {
    const char* floats = getenv("SCRIPTED_FLOATS");
    if (size != sizeof(cl_device_fp_config)) abort();
    if (floats == NULL) return CL_INVALID_VALUE;
    *(cl_device_fp_config*)value = strtoul(floats, NULL, 0);
    return CL_SUCCESS;
  }
  strcpy(value, "scripted");
  return Called("clGetDeviceInfo");
}

cl_program clCreateProgramWithSource(cl_context context, cl_uint count, const char** texts,
                                     const size_t* lengths, cl_int* error) {
  const char* path = getenv("SCRIPTED_TEXT");
  FILE* file = path != NULL ? fopen(path, "wb") : NULL;
  (void)context, (void)count;
  if (file != NULL) {
    fwrite(texts[0], 1, lengths[0], file);
    fclose(file);
  }
  return Made("clCreateProgramWithSource", error);
}

cl_int clBuildProgram(cl_program built, cl_uint count, const cl_device_id* devices,
                      const char* options, void(CL_CALLBACK* notify)(cl_program, void*),
                      void* data) {
  (void)built, (void)count, (void)devices, (void)notify, (void)data;
  if (options != NULL) printf("options: %s\n", options);
  return Called("clBuildProgram");
}

cl_int clGetProgramBuildInfo(cl_program built, cl_device_id device, cl_program_build_info name,
                             size_t size, void* value, size_t* returned) {
  (void)built, (void)device, (void)name, (void)size, (void)returned;
  strcpy(value, "the build log");
  return Called("clGetProgramBuildInfo");
}

cl_kernel clCreateKernel(cl_program built, const char* name, cl_int* error) {
  (void)built;
  printf("kernel: %s\n", name);
  return Made("clCreateKernel", error);
}

cl_mem clCreateBuffer(cl_context context, cl_mem_flags flags, size_t size, void* host,
                      cl_int* error) {
  (void)context, (void)flags, (void)host;
  printf("buffer: %lu\n", (unsigned long)size);
  return Made("clCreateBuffer", error);
}

cl_int clSetKernelArg(cl_kernel kernel, cl_uint index, size_t size, const void* value) {
  (void)kernel, (void)index, (void)size, (void)value;
  return Called("clSetKernelArg");
}

cl_command_queue clCreateCommandQueue(cl_context context, cl_device_id device,
                                      cl_command_queue_properties properties, cl_int* error) {
  (void)context, (void)device, (void)properties;
  return Made("clCreateCommandQueue", error);
}

cl_int clEnqueueWriteBuffer(cl_command_queue queue, cl_mem buffer, cl_bool blocking, size_t offset,
                            size_t size, const void* bytes, cl_uint count, const cl_event* events,
                            cl_event* event) {
  (void)queue, (void)buffer, (void)offset, (void)count, (void)events, (void)event;
  if (blocking) abort();
  printf("first bytes: %d %d\n", *(const unsigned char*)bytes,
         ((const unsigned char*)bytes)[size / 256]);
  return Called("clEnqueueWriteBuffer");
}

cl_int clEnqueueNDRangeKernel(cl_command_queue queue, cl_kernel kernel, cl_uint dimensions,
                              const size_t* offset, const size_t* global, const size_t* local,
                              cl_uint count, const cl_event* events, cl_event* event) {
  (void)queue, (void)kernel, (void)offset, (void)count, (void)events, (void)event;
  if (dimensions != 1 || *global != 256) abort();
  if (local != NULL) printf("local size: %lu\n", (unsigned long)*local);
  return Called("clEnqueueNDRangeKernel");
}

cl_int clEnqueueReadBuffer(cl_command_queue queue, cl_mem buffer, cl_bool blocking, size_t offset,
                           size_t size, void* bytes, cl_uint count, const cl_event* events,
                           cl_event* event) {
  const char* path = getenv("SCRIPTED_ANSWERS");
  FILE* file = path != NULL ? fopen(path, "rb") : NULL;
  (void)queue, (void)buffer, (void)offset, (void)count, (void)events, (void)event;
  if (!blocking) abort();
  memset(bytes, 0, size);
  if (file != NULL) {
    if (fread(bytes, 1, size, file) == 0) abort();
    fclose(file);
  }
  return Called("clEnqueueReadBuffer");
}

cl_int clReleaseCommandQueue(cl_command_queue queue) {
  (void)queue;
  return Called("clReleaseCommandQueue");
}

cl_int clReleaseMemObject(cl_mem buffer) {
  (void)buffer;
  return Called("clReleaseMemObject");
}

cl_int clReleaseKernel(cl_kernel kernel) {
  (void)kernel;
  return Called("clReleaseKernel");
}

cl_int clReleaseProgram(cl_program built) {
  (void)built;
  return Called("clReleaseProgram");
}

cl_int clReleaseContext(cl_context context) {
  (void)context;
  return Called("clReleaseContext");
}
