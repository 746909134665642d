// The replaced global allocation functions behind AllocationScope. Sanitizer runtimes bring their
// own, so a sanitized build (ZIV_TORTURE_REPLACES_NEW off) counts nothing and says so.
#include "tools/torture/allocation_counter.h"

#include <cstdlib>
#include <new>

namespace {

thread_local bool tCounting = false;
thread_local long long tCount = 0;

}  // namespace

#if ZIV_TORTURE_REPLACES_NEW
namespace {

void* allocate(std::size_t size) {
  if (tCounting) ++tCount;
  if (void* p = std::malloc(size > 0 ? size : 1)) return p;
  throw std::bad_alloc();
}

void* allocateNoThrow(std::size_t size) noexcept {
  if (tCounting) ++tCount;
  return std::malloc(size > 0 ? size : 1);
}

}  // namespace

void* operator new(std::size_t size) {
  return allocate(size);
}
void* operator new[](std::size_t size) {
  return allocate(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return allocateNoThrow(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return allocateNoThrow(size);
}
void operator delete(void* p) noexcept {
  std::free(p);
}
void operator delete[](void* p) noexcept {
  std::free(p);
}
void operator delete(void* p, std::size_t) noexcept {
  std::free(p);
}
void operator delete[](void* p, std::size_t) noexcept {
  std::free(p);
}
void operator delete(void* p, const std::nothrow_t&) noexcept {
  std::free(p);
}
void operator delete[](void* p, const std::nothrow_t&) noexcept {
  std::free(p);
}
#endif

namespace torture {

bool allocationsOfPluginCounted() {
  // A Windows module links its own C++ runtime and never calls the host's operator new.
#if ZIV_TORTURE_REPLACES_NEW && !defined(_WIN32)
  return true;
#else
  return false;
#endif
}

AllocationScope::AllocationScope() {
  tCount = 0;
  tCounting = true;
}

AllocationScope::~AllocationScope() {
  tCounting = false;
}

long long AllocationScope::count() const {
  return tCount;
}

AllocationPause::AllocationPause() : wasCounting_(tCounting) {
  tCounting = false;
}

AllocationPause::~AllocationPause() {
  tCounting = wasCounting_;
}

}  // namespace torture
