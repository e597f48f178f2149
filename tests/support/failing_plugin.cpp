// What makes a plugin of the plugin's own objects whose allocations fail on demand:
//
//   local fail = package.loadlib(plugin, "FailAllocationByScript")
//   local reached = fail(n)  -- the n-th allocation from now on fails, once; fail(n, true): and all after it
//   reached()                -- whether it did; from now on none fails
//
//   package.loadlib(plugin, "KeptByScript")()  -- how much memory, and how many files, were taken and not given back
//
// Before scripts run, the environment's FAIL_ALLOCATION says which fails; "AllocationFailedByScript" is its
// `reached`.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <lua.hpp>
#include <new>

static int64_t failing_allocation = 0;  // 1 is the next; 0: none fails
static bool fails_for_good = false;
static int64_t allocations = 0;
static int64_t kept = 0;  // by the C library's functions, and files

static void FailAllocation(int64_t n, bool for_good = false) {
  failing_allocation = n;
  fails_for_good = for_good;
  allocations = 0;
}

static bool AllocationFailed() { return failing_allocation > 0 && allocations >= failing_allocation; }

// Counts one more allocation; true when it is to fail.
static bool RefuseAllocation() {
  ++allocations;
  return allocations == failing_allocation || (fails_for_good && AllocationFailed());
}

extern "C" __attribute__((visibility("default"))) int AllocationFailedByScript(lua_State* lua) {
  lua_pushboolean(lua, AllocationFailed() ? 1 : 0);
  FailAllocation(0);
  return 1;
}

extern "C" __attribute__((visibility("default"))) int FailAllocationByScript(lua_State* lua) {
  FailAllocation(luaL_checkinteger(lua, 1), lua_toboolean(lua, 2) != 0);
  lua_pushcfunction(lua, AllocationFailedByScript);
  return 1;
}

extern "C" __attribute__((visibility("default"))) int KeptByScript(lua_State* lua) {
  lua_pushinteger(lua, kept);
  return 1;
}

// What was taken, if it was.
template <typename Taken>
static Taken* Keep(Taken* taken) {
  kept += taken != nullptr;
  return taken;
}

__attribute__((constructor)) static void FailFromTheStart() {
  const char* n = std::getenv("FAIL_ALLOCATION");
  FailAllocation(n ? std::strtoll(n, nullptr, 10) : 0);
}

// The plugin is linked so that every allocation of its objects comes by here: the names that the linker's --wrap
// gives to the caller's side and to the C library's. NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
void* __real_calloc(size_t count, size_t size);
void* __real_malloc(size_t size);
void* __real_realloc(void* memory, size_t size);
void __real_free(void* memory);
FILE* __real_fopen(const char* path, const char* mode);
int __real_fclose(FILE* file);
char* __real_strdup(const char* text);
void* __real__Znwm(size_t size);  // operator new
void* __real__ZnwmRKSt9nothrow_t(size_t size, const std::nothrow_t&);
void* __real__ZnamRKSt9nothrow_t(size_t size, const std::nothrow_t&);  // operator new[]

void* __wrap_calloc(size_t count, size_t size) {
  return RefuseAllocation() ? nullptr : Keep(__real_calloc(count, size));
}
void* __wrap_malloc(size_t size) { return RefuseAllocation() ? nullptr : Keep(__real_malloc(size)); }
void* __wrap_realloc(void* memory, size_t size) {
  if (RefuseAllocation()) return nullptr;
  return memory ? __real_realloc(memory, size) : Keep(__real_malloc(size));
}
void __wrap_free(void* memory) {
  kept -= memory != nullptr;
  __real_free(memory);
}
FILE* __wrap_fopen(const char* path, const char* mode) {
  return RefuseAllocation() ? nullptr : Keep(__real_fopen(path, mode));
}
int __wrap_fclose(FILE* file) {
  --kept;
  return __real_fclose(file);
}
char* __wrap_strdup(const char* text) { return RefuseAllocation() ? nullptr : Keep(__real_strdup(text)); }
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
