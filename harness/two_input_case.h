#pragma once

#include <cmath>
#include <cstdlib>

#include "harness/host_floating_point.h"
#include "harness/test_case.h"
#include "harness/ulp.h"

/// The form of the rows with two inputs: a union array A whose integer member the kernel reads, and
/// a union array B whose float member it reads. `Unions` gives the three union types of the row,
/// which calls it Layout.
template <class Unions>
class TwoInputCase : public TestCase {
 public:
  /// As TestCase; `numElements` elements are filled, computed and compared.
  TwoInputCase(const cl::Program& program, const cl::Context& context,
               std::vector<cl::Device>* devices, int numElements)
      : TestCase(program, context, devices), numElements_(numElements) {}

  void Cleanup() override {
    delete[] inputA_;
    delete[] inputB_;
    delete[] deviceResult_;
    delete[] reference_;
  }

 protected:
  using Layout = Unions;
  using InputA = typename Unions::InputA;
  using InputB = typename Unions::InputB;
  using Result = typename Unions::Result;

  /// Setup for the kernel `name`.
  void SetupKernel(const char* name) {
    kernel_ = cl::Kernel(program_, name);
    localSize_ = 256;
    globalSize_ = RoundUp(numElements_, localSize_);
    inputA_ = new InputA[globalSize_];
    inputB_ = new InputB[globalSize_];
    deviceResult_ = new Result[globalSize_];
    reference_ = new Result[static_cast<std::size_t>(numElements_)];
    bufferA_ = cl::Buffer(context_, CL_MEM_READ_ONLY, globalSize_ * sizeof(InputA));
    bufferB_ = cl::Buffer(context_, CL_MEM_READ_ONLY, globalSize_ * sizeof(InputB));
    bufferResult_ = cl::Buffer(context_, CL_MEM_WRITE_ONLY, globalSize_ * sizeof(Result));
    kernel_.setArg(0, bufferA_);
    kernel_.setArg(1, bufferB_);
    kernel_.setArg(2, bufferResult_);
    kernel_.setArg(3, cl_int{numElements_});
  }

  /// Four draws for each lane, in this order. The stores go one at a time and through both members,
  /// so that a narrow element of a later lane cuts into the float of an earlier one.
  void Fill() {
    for (int i = 0; i < numElements_; ++i) {
      for (int j = 0; j < Unions::lanes; ++j) {
        inputA_[i].a[j] = static_cast<typename Unions::Element>(std::rand());
        inputA_[i].h[j] = static_cast<float>(std::rand());
        inputB_[i].k[j] = static_cast<typename Unions::Element>(std::rand());
        inputB_[i].b[j] = static_cast<float>(std::rand());
      }
    }
  }

  /// The expected results from the bytes as the fill left them: `formula` of the integer view of A,
  /// converted to float, and the float view of B.
  template <class Formula>
  void ReferenceBy(Formula formula) {
    for (int i = 0; i < numElements_; ++i) {
      for (int j = 0; j < Unions::lanes; ++j) {
        reference_[i].r[j] = formula(static_cast<float>(inputA_[i].a[j]), inputB_[i].b[j]);
      }
    }
  }

  /// The device's results from the same bytes.
  void RoundTrip() {
    DeviceRoundTrip({{bufferA_, inputA_}, {bufferB_, inputB_}}, kernel_, globalSize_, bufferResult_,
                    deviceResult_, globalSize_ * sizeof(Result));
  }

  /// Every lane within `tolerance` units in the last place. Where the reference is not finite, any
  /// answer passes.
  bool CheckUlps(std::uint32_t tolerance) const {
    for (int i = 0; i < numElements_; ++i) {
      for (int j = 0; j < Unions::lanes; ++j) {
        const float c = reference_[i].r[j];
        const float d = deviceResult_[i].r[j];
        if (!WithinUlps(c, d, tolerance) && std::isfinite(c)) {
          WriteMismatch("  c:", c, d);
          return false;
        }
      }
    }
    return true;
  }

  int numElements_;
  InputA* inputA_ = nullptr;
  InputB* inputB_ = nullptr;
  Result* deviceResult_ = nullptr;
  Result* reference_ = nullptr;
  cl::Kernel kernel_;
  cl::Buffer bufferA_;
  cl::Buffer bufferB_;
  cl::Buffer bufferResult_;
  std::size_t globalSize_ = 0;
  std::size_t localSize_ = 0;
};
