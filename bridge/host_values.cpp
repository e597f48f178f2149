#include "bridge/host_values.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>

#include "bridge/exceptions.h"
#include "bridge/unicode.h"

// --- MemoryBlocks
// ----------------------------------------------------------------------------------------------

// The host's implementation of "Operator_Convert() As Ptr"; null until a load succeeds.
static std::atomic<void*> myMemoryBlockGetPtr = nullptr;

static REALmemoryBlockStruct* AsMemoryBlock(REALobjectStruct* object) {
  return reinterpret_cast<REALmemoryBlockStruct*>(object);
}

int64_t MemoryBlockSize(REALmemoryBlockStruct* block) {
  int64_t size = 0;
  if (block && REALGetPropValueInteger(AsObject(block), "Size", &size)) return size;
  return block ? REALMemoryBlockGetSize(block) : 0;
}

void REALNewMemoryBlockWork(void* request_record) {
  auto* request = static_cast<MemoryBlockRequest*>(request_record);
  auto block = ObjectRef::Adopt(REALnewInstance("MemoryBlock"));
  if (!block) return;

  static std::once_flag loaded;
  static void* constructor = nullptr;
  std::call_once(loaded, [&] { constructor = REALLoadObjectMethod(block.get(), "Constructor(bytes as Integer)"); });
  if (!constructor) return;

  CallOrNeutral<void>(constructor, block.get(), request->size);
  if (MemoryBlockSize(AsMemoryBlock(block.get())) >= request->size) request->result = AsMemoryBlock(block.Detach());
}

MemoryBlockRef NewMemoryBlock(int64_t size) {
  if (size < 0x7FFFFFFF) return MemoryBlockRef::Adopt(REALNewMemoryBlock(static_cast<int32_t>(size)));

  MemoryBlockRequest request = {size, nullptr};
  if (REALCallFunctionWithExceptionHandler) {
    // What comes back is an exception that the host caught, or nothing.
    const auto caught = ObjectRef::Adopt(REALCallFunctionWithExceptionHandler(REALNewMemoryBlockWork, &request));
  } else {
    REALNewMemoryBlockWork(&request);
  }
  return MemoryBlockRef::Adopt(request.result);
}

static void* LoadMemoryBlockGetPtr(REALmemoryBlockStruct* block) {
  const auto temporary = MemoryBlockRef::Adopt(REALNewMemoryBlock(4));
  REALobjectStruct* asked = AsObject(temporary ? temporary.get() : block);
  void* method = REALLoadObjectMethod(asked, "Operator_Convert() As Ptr");
  myMemoryBlockGetPtr.store(method, std::memory_order_release);
  return method;
}

void* MyREALMemoryBlockGetPtr(REALmemoryBlockStruct* block) {
  if (!block) return nullptr;
  void* method = myMemoryBlockGetPtr.load(std::memory_order_acquire);
  if (!method) method = LoadMemoryBlockGetPtr(block);
  return method ? CallOrNeutral<void*>(method, block) : REALMemoryBlockGetPtr(block);
}

static MemoryBlockRef CopyIntoMemoryBlock(const void* bytes, int64_t size) {
  MemoryBlockRef block = NewMemoryBlock(size);
  void* target = MyREALMemoryBlockGetPtr(block.get());
  if (!target) return MemoryBlockRef();
  std::memcpy(target, bytes, static_cast<size_t>(size));
  return block;
}

REALmemoryBlockStruct* REALBuildMemoryblock(const void* bytes, int64_t size) {
  if (!bytes || size < 1) return nullptr;
  try {
    MemoryBlockRef block = CopyIntoMemoryBlock(bytes, size);
    if (block) return block.Detach();
  } catch (const std::bad_alloc&) {
    // Told below, as every other failure is.
  }
  RaiseOutOfMemoryException(size);
  return nullptr;
}

// --- Strings
// ---------------------------------------------------------------------------------------------------

int64_t StringByteLength(REALstringStruct* string) {
  static std::once_flag loaded;
  static void* len_b = nullptr;
  if (!string) return 0;
  std::call_once(loaded, [] { len_b = REALLoadFrameworkMethod(nullptr, "LenB( s as string ) as integer"); });
  return CallOrNeutral<int64_t>(len_b, string);
}

StringContents::StringContents(REALstringStruct* string) : string_(StringRef::Share(string)) {
  if (!string) return;
  length_ = StringByteLength(string);
  bytes_ = REALGetCString(string);
  if (!bytes_ || length_ < 0) length_ = 0;
}

static REALstringStruct* ConvertToUtf8(const StringRef& text) {
  return text ? REALConvertString(text.get(), kEncodingUtf8) : nullptr;
}

REALstringStruct* REALBuildUnicodeStringUTF16(const char* bytes, int64_t byte_length) {
  const auto length = static_cast<int32_t>(byte_length);
  if (HostIsAtLeast(2012.0)) {
    return ConvertToUtf8(StringRef::Adopt(REALBuildStringWithEncoding(bytes, length, kEncodingUtf16)));
  }
  auto text = StringRef::Adopt(REALBuildString(bytes, length));
  if (text) REALSetStringEncoding(text.get(), kEncodingUtf16);
  return ConvertToUtf8(text);
}

static REALstringStruct* BuildFromUtf32(const char* bytes, int64_t length) {
  if (HostIsAtLeast(2013.0)) {
    return ConvertToUtf8(
        StringRef::Adopt(REALBuildStringWithEncoding(bytes, static_cast<int32_t>(length), kEncodingUtf32)));
  }
  constexpr size_t kShort = 800;  // bytes below which nothing is allocated
  const auto size = static_cast<size_t>(length);
  uint16_t few[Utf16Room(kShort)];
  std::unique_ptr<uint16_t[]> many;
  if (size >= kShort) many.reset(new (std::nothrow) uint16_t[Utf16Room(size)]);
  if (size >= kShort && !many) return nullptr;
  uint16_t* units = many ? many.get() : few;
  const size_t count = Utf32ToUtf16(bytes, size, units);
  return REALBuildUnicodeStringUTF16(reinterpret_cast<const char*>(units), static_cast<int64_t>(count) * 2);
}

static bool IsAscii(const char* bytes, int64_t length) {
  return std::all_of(bytes, bytes + length, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

static REALstringStruct* BuildWithEncoding(const char* bytes, int64_t length, TextEncoding encoding) {
  auto text = StringRef::Adopt(REALBuildString(bytes, static_cast<int32_t>(length)));
  if (text) REALSetStringEncoding(text.get(), encoding);
  return text.Detach();
}

REALstringStruct* REALBuildUnicodeString(const char* bytes, int64_t length, TextEncoding encoding) {
  if (!bytes || length < 1 || length > 0x7FFFFFFF) return nullptr;
  try {
    switch (encoding) {
      case kEncodingUtf16:
        return REALBuildUnicodeStringUTF16(bytes, length);
      case kEncodingUtf32:
        return BuildFromUtf32(bytes, length);
      case kEncodingMacRoman:
      case kEncodingWindowsLatin1:
      case kEncodingUnknown:
        // Text that is ASCII in any of these is known to be ASCII.
        return BuildWithEncoding(bytes, length, IsAscii(bytes, length) ? kEncodingAscii : encoding);
      default:
        return BuildWithEncoding(bytes, length, encoding);
    }
  } catch (...) {
    RaiseCaughtException();
    return nullptr;
  }
}
