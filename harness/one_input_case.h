#pragma once

#include <cstdlib>

#include "harness/host_floating_point.h"
#include "harness/test_case.h"

/// The form of the rows with one input: a union array A whose integer member the kernel reads.
/// `Unions` gives the union types of the row, which calls it Layout.
template <class Unions>
class OneInputCase : public TestCase {
 public:
  /// As TestCase; `numElements` elements are filled, computed and compared.
  OneInputCase(const cl::Program& program, const cl::Context& context,
               std::vector<cl::Device>* devices, int numElements)
      : TestCase(program, context, devices), numElements_(numElements) {}

  void Cleanup() override {
    delete[] inputA_;
    delete[] deviceResult_;
    delete[] reference_;
  }

 protected:
  using Layout = Unions;
  using InputA = typename Unions::InputA;
  using Result = typename Unions::Result;

  /// Setup for the kernel `name`.
  void SetupKernel(const char* name) {
    kernel_ = cl::Kernel(program_, name);
    localSize_ = 256;
    globalSize_ = RoundUp(numElements_, localSize_);
    inputA_ = new InputA[globalSize_];
    deviceResult_ = new Result[globalSize_];
    reference_ = new Result[static_cast<std::size_t>(numElements_)];
    bufferA_ = cl::Buffer(context_, CL_MEM_READ_ONLY, globalSize_ * sizeof(InputA));
    bufferResult_ = cl::Buffer(context_, CL_MEM_WRITE_ONLY, globalSize_ * sizeof(Result));
    kernel_.setArg(0, bufferA_);
    kernel_.setArg(1, bufferResult_);
    kernel_.setArg(2, cl_int{numElements_});
  }

  /// Two draws into lane `j` of element `i`, through both members in this order.
  void FillLane(int i, int j) {
    inputA_[i].a[j] = static_cast<typename Unions::Element>(std::rand());
    inputA_[i].h[j] = static_cast<float>(std::rand());
  }

  /// Each lane once. The stores go one at a time, so that a narrow element of a later lane cuts
  /// into the float of an earlier one.
  void Fill() {
    for (int i = 0; i < numElements_; ++i) {
      for (int j = 0; j < Unions::lanes; ++j) FillLane(i, j);
    }
  }

  /// The expected results where the kernel has nothing to add to the conversion: the integer view
  /// of A as the fill left it, converted to float.
  void Reference() {
    for (int i = 0; i < numElements_; ++i) {
      for (int j = 0; j < Unions::lanes; ++j) {
        reference_[i].r[j] = static_cast<float>(inputA_[i].a[j]);
      }
    }
  }

  /// The device's results from the same bytes.
  void RoundTrip() {
    DeviceRoundTrip({{bufferA_, inputA_}}, kernel_, globalSize_, bufferResult_, deviceResult_,
                    globalSize_ * sizeof(Result));
  }

  /// Every lane equal to its reference. `label` opens the mismatch line.
  bool CheckEveryLane(const char* label) const {
    for (int i = 0; i < numElements_; ++i) {
      for (int j = 0; j < Unions::lanes; ++j) {
        const float c = reference_[i].r[j];
        const float d = deviceResult_[i].r[j];
        if (d != c) {
          WriteMismatch(label, c, d);
          return false;
        }
      }
    }
    return true;
  }

  /// In every element at least one lane equal to its reference. `label` opens the mismatch line,
  /// which shows lane 0.
  bool CheckAnyLane(const char* label) const {
    for (int i = 0; i < numElements_; ++i) {
      int j = 0;
      while (j < Unions::lanes && deviceResult_[i].r[j] != reference_[i].r[j]) ++j;
      if (j == Unions::lanes) {
        WriteMismatch(label, reference_[i].r[0], deviceResult_[i].r[0]);
        return false;
      }
    }
    return true;
  }

  int numElements_;
  InputA* inputA_ = nullptr;
  Result* deviceResult_ = nullptr;
  Result* reference_ = nullptr;
  cl::Kernel kernel_;
  cl::Buffer bufferA_;
  cl::Buffer bufferResult_;
  std::size_t globalSize_ = 0;
  std::size_t localSize_ = 0;
};
