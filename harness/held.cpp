#include "harness/held.h"

#include "harness/opencl.h"

template <class Type>
Held<Type>::Held() {
  static_assert(sizeof(Type) == sizeof storage_ && alignof(Type) == alignof(void*));
  new (storage_) Type;
}

template <class Type>
Held<Type>::Held(const Type& object) {
  new (storage_) Type(object);
}

template <class Type>
Held<Type>::~Held() {
  (**this).~Type();
}

template class Held<cl::Program>;
template class Held<cl::Context>;
template class Held<cl::Kernel>;
template class Held<cl::Buffer>;
