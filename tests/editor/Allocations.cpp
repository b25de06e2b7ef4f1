#include "editor/Allocations.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace vesk::editor {
namespace {

thread_local std::int64_t allocations = 0;

}  // namespace

std::int64_t allocationsOfThisThread() {
  return allocations;
}

}  // namespace vesk::editor

// The forms for arrays call these.

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  ++vesk::editor::allocations;
  return std::malloc(std::max<std::size_t>(size, 1));
}

void* operator new(std::size_t size) {
  if (void* const memory = operator new(size, std::nothrow)) return memory;
  throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
  std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}

void operator delete(void* memory, const std::nothrow_t& /*tag*/) noexcept {
  std::free(memory);
}
