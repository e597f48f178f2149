// What makes a plugin of the plugin's own objects whose allocations fail on demand:
//
//   local fail = package.loadlib(plugin, "FailAllocationByScript")
//   local reached = fail(n)  -- the n-th allocation from now on fails, once
//   reached()                -- whether it did; from now on none fails
//
// Before scripts run, the environment's FAIL_ALLOCATION says which fails.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <lua.hpp>
#include <new>

#include "tests/support/failing_allocation.h"

static int Reached(lua_State* lua) {
  lua_pushboolean(lua, AllocationFailed() ? 1 : 0);
  FailAllocation(0);
  return 1;
}

extern "C" __attribute__((visibility("default"))) int FailAllocationByScript(lua_State* lua) {
  lua_pushcfunction(lua, Reached);
  FailAllocation(luaL_checkinteger(lua, 1));
  return 1;
}

__attribute__((constructor)) static void FailFromTheStart() {
  const char* n = std::getenv("FAIL_ALLOCATION");
  FailAllocation(n ? std::atoll(n) : 0);
}

// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
FILE* __real_fopen(const char* path, const char* mode);
char* __real_strdup(const char* text);
void* __real__Znwm(size_t size);  // operator new
void* __real__ZnwmRKSt9nothrow_t(size_t size, const std::nothrow_t&);
void* __real__ZnamRKSt9nothrow_t(size_t size, const std::nothrow_t&);  // operator new[]

FILE* __wrap_fopen(const char* path, const char* mode) {
  return RefuseAllocation() ? nullptr : __real_fopen(path, mode);
}
char* __wrap_strdup(const char* text) { return RefuseAllocation() ? nullptr : __real_strdup(text); }
void* __wrap__Znwm(size_t size) {
  if (RefuseAllocation()) throw std::bad_alloc();
  return __real__Znwm(size);
}
void* __wrap__ZnwmRKSt9nothrow_t(size_t size, const std::nothrow_t& tag) {
  return RefuseAllocation() ? nullptr : __real__ZnwmRKSt9nothrow_t(size, tag);
}
void* __wrap__ZnamRKSt9nothrow_t(size_t size, const std::nothrow_t& tag) {
  return RefuseAllocation() ? nullptr : __real__ZnamRKSt9nothrow_t(size, tag);
}
}
// NOLINTEND(bugprone-reserved-identifier)
