#pragma once

// The host function table. The plugin links against no host library: every host function is asked for by name,
// through the resolver that the host handed to `REALPluginMain`, on first use.
//
// Each function of the catalogue below is one line: the access operation's name, the form, and the name that the
// host knows it by. Calling one that the host lacks does nothing and gives the neutral result of its form: a null
// handle or pointer, 0, false. Callers test results; nothing here ever fails otherwise.
//
// References: what a creating function returns carries one reference for the caller; handles are borrowed as
// arguments. Hold them with the scoped holders of bridge/host_reference.h.

#include <atomic>
#include <mutex>

#include "bridge/gif_plugin_host.h"

// Set once by `REALPluginMain`, before any handler runs.
extern REALresolver gResolver;
extern double rbversion_rbversion;  // the host's version, such as 2019.01; 0.0 when the host does not tell

// The host's version as it stands at these thresholds.
inline bool HostIsAtLeast(double version) { return rbversion_rbversion >= version; }

// The address of the host function of that name; null when the host has none.
inline void* ResolveHostFunction(const char* name) { return gResolver ? gResolver(name) : nullptr; }

// Calls through an address of unknown form; the neutral result when there is none.
template <typename Result, typename... Arguments>
Result CallOrNeutral(void* address, Arguments... arguments) {
  if (!address) return Result();
  return reinterpret_cast<Result (*)(Arguments...)>(address)(arguments...);
}

template <typename Form>
class HostFunction;

// Looked up once: whatever the first look-up gave, null included, stays. Safe when two threads meet in it.
template <typename Result, typename... Arguments>
class HostFunction<Result(Arguments...)> {
 public:
  constexpr explicit HostFunction(const char* name) : name_(name) {}

  Result operator()(Arguments... arguments) { return CallOrNeutral<Result>(Address(), arguments...); }
  explicit operator bool() { return Address() != nullptr; }

 private:
  void* Address() {
    if (!looked_up_.load(std::memory_order_acquire)) LookUp();
    return address_;
  }
  void LookUp() {
    std::call_once(once_, [this] {
      address_ = ResolveHostFunction(name_);
      looked_up_.store(true, std::memory_order_release);
    });
  }

  const char* name_;
  void* address_ = nullptr;
  std::atomic<bool> looked_up_ = false;
  std::once_flag once_;
};

template <typename Form>
class HostFunctionUntilFound;

// Looked up until found: asked for again at each use while the host has none.
template <typename Result, typename... Arguments>
class HostFunctionUntilFound<Result(Arguments...)> {
 public:
  constexpr explicit HostFunctionUntilFound(const char* name) : name_(name) {}

  Result operator()(Arguments... arguments) { return CallOrNeutral<Result>(Address(), arguments...); }
  explicit operator bool() { return Address() != nullptr; }

 private:
  void* Address() {
    void* address = address_.load(std::memory_order_acquire);
    if (!address) {
      address = ResolveHostFunction(name_);
      address_.store(address, std::memory_order_release);
    }
    return address;
  }

  const char* name_;
  std::atomic<void*> address_ = nullptr;
};

// --- The catalogue -------------------------------------------------------------------------------------------

using HostBoolean = int8_t;     // 0 false, else true
using TextEncoding = uint32_t;  // the codes below

constexpr TextEncoding kEncodingMacRoman = 0;
constexpr TextEncoding kEncodingUtf16 = 0x100;
constexpr TextEncoding kEncodingWindowsLatin1 = 0x500;
constexpr TextEncoding kEncodingAscii = 0x600;
constexpr TextEncoding kEncodingUnknown = 0xFFFF;  // raw bytes
constexpr TextEncoding kEncodingUtf8 = 0x8000100;
constexpr TextEncoding kEncodingUtf32 = 0xC000100;

// clang-format off
// Registration
inline HostFunction<void(REALclassDefinition*)>  REALRegisterClass         {"PluginRegisterClass"};
inline HostFunction<void(REALclassDefinition*)>  REALRegisterClassExtension{"PluginRegisterClassExtension"};
inline HostFunction<void(REALmoduleDefinition*)> REALRegisterModule        {"PluginRegisterModule"};
inline HostFunction<void(REALmethodDefinition*)> REALRegisterMethod        {"PluginRegisterMethod"};

// Objects and methods
inline HostFunction<REALobjectStruct*(const char* class_name)>         REALnewInstance{"PluginNewInstance"};
inline HostFunction<void(REALobjectStruct*)>                           REALLockObject{"REALLockObject"};
inline HostFunction<void(REALobjectStruct*)>                           REALUnlockObject{"REALUnlockObject"};
inline HostFunction<void*(REALobjectStruct*, const char* declaration)> REALLoadObjectMethod{"REALLoadObjectMethod"};
inline HostFunction<void*(const char* module, const char* declaration)> REALLoadFrameworkMethod{"REALLoadGlobalMethod"};
inline HostFunctionUntilFound<HostBoolean(REALobjectStruct*, const char* property, int64_t*)>     REALGetPropValueInteger{"REALGetPropValueInteger"};
inline HostFunctionUntilFound<HostBoolean(REALobjectStruct*, const char* property, HostBoolean*)> REALGetPropValueBoolean{"REALGetPropValueBool"};
inline HostFunctionUntilFound<HostBoolean(REALobjectStruct*, const char* property, REALstringStruct*)> REALSetPropValueString{"REALSetPropValueString"};
inline HostFunctionUntilFound<HostBoolean(REALobjectStruct*, const char* property, int64_t)>      REALSetPropValueInteger{"REALSetPropValueInteger"};
inline HostFunction<void*(const char* class_name)>                     REALGetClassRef{"pluginObjectType"};
inline HostFunction<REALobjectStruct*(void (*work)(void*), void* data)> REALCallFunctionWithExceptionHandler{"PluginCallFunctionWithExceptionHandler"};
inline HostFunction<void(REALobjectStruct* exception)>                 REALRaiseException{"RuntimeRaiseException"};

// Strings
inline HostFunction<void(REALstringStruct*)>        REALLockString{"REALLockString"};
inline HostFunction<void(REALstringStruct*)>        REALUnlockString{"REALUnlockString"};
inline HostFunction<const char*(REALstringStruct*)> REALGetCString{"StringGetCString"};
inline HostFunction<REALstringStruct*(const char* bytes, int32_t length)> REALBuildString{"REALBuildString"};
inline HostFunction<REALstringStruct*(const char* bytes, int32_t length, TextEncoding)> REALBuildStringWithEncoding{"REALBuildStringWithEncoding"};
inline HostFunction<void(REALstringStruct*, TextEncoding)>              REALSetStringEncoding{"REALSetStringEncoding"};
inline HostFunction<REALstringStruct*(REALstringStruct*, TextEncoding)> REALConvertString{"REALConvertString"};

// MemoryBlocks
inline HostFunctionUntilFound<REALmemoryBlockStruct*(int32_t bytes)> REALNewMemoryBlock{"newMemoryBlock"};
inline HostFunction<void*(REALmemoryBlockStruct*)>   REALMemoryBlockGetPtr{"memoryBlockGetPtr"};
inline HostFunction<int64_t(REALmemoryBlockStruct*)> REALMemoryBlockGetSize{"memoryBlockGetSize"};

// Files
inline HostFunction<HostBoolean(REALfolderItemStruct*, FSRef*, HFSUniStr255*)> REALFSRefFromFolderItem{"REALFSRefFromFolderItem"};

// Pictures
inline HostFunction<REALpictureStruct*(int32_t width, int32_t height, int32_t depth)> REALNewPicture{"newPicture"};
inline HostFunction<int64_t(REALpictureStruct*)> REALGetPictureType{"PluginPictureGetType"};
inline HostFunctionUntilFound<HostBoolean(REALpictureStruct*, REALpictureDescription*, int32_t kind)> REALLockPictureDescription{"REALLockPictureDescription"};
inline HostFunction<void(REALpictureStruct*)>    REALUnlockPictureDescription{"unlockPictureDescription"};
inline HostFunction<void(REALpictureStruct*)>    REALPictureClearCache{"REALPictureClearCache"};
inline HostFunction<REALpictureStruct*(REALpictureStruct*, int32_t create)> REALGetPictureMask{"REALGetPictureMask"};
inline HostFunction<REALobjectStruct*(REALpictureStruct*)> REALGetPictureGraphics{"pluginPictureGraphicsGetter"};
// clang-format on
