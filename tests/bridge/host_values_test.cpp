#include <cstring>
#include <new>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

#include "bridge/exceptions.h"
#include "bridge/memory_blocks.h"
#include "bridge/strings.h"
#include "bridge/unicode_strings.h"
#include "host/core/encoding.h"
#include "host/host/exception.h"
#include "host/host/memory_block.h"
#include "tests/support/lending.h"

// What the class's constructor was asked for; it makes 8 bytes.
static int64_t constructed_size;
static void Construct(REALobjectStruct* block, int64_t bytes) {
  constructed_size = bytes;
  lender->heap().Find<host::MemoryBlock>(block)->Resize(8);
}
static void* BytesOf(REALobjectStruct* block) { return lender->heap().Find<host::MemoryBlock>(block)->bytes(); }
static void* LoadMethod(REALobjectStruct*, const char* declaration) {
  if (std::strcmp(declaration, "Constructor(bytes as Integer)") == 0) return reinterpret_cast<void*>(Construct);
  if (std::strcmp(declaration, "Operator_Convert() As Ptr") == 0) return reinterpret_cast<void*>(BytesOf);
  return nullptr;
}

class ValueHost : public LendingHost {
 public:
  explicit ValueHost(host::HostOptions options = {}) : LendingHost(std::move(options)) {
    Lend("REALLoadObjectMethod", LoadMethod);
    rbversion_rbversion = 2019.01;
  }
  // "class: message" of what was raised, once.
  std::string Raised() {
    const host::Ref<host::Object> pending = TakePending();
    const auto* exception = dynamic_cast<host::Exception*>(pending.get());
    if (!exception) return "nothing";
    EXPECT_EQ(exception->number, 0);
    return exception->type_name() + ": " + (exception->message ? exception->message->bytes() : "(nil)");
  }
};

TEST(HostValues, ExceptionsFallBackToWhatTheHostCanMake) {
  {
    ValueHost host({.without = {"OutOfBoundsException"}});
    RaiseException("OutOfBoundsException", "text");
    EXPECT_EQ(host.Raised(), "RuntimeException: text");
    RaiseException("RuntimeException", nullptr);
    EXPECT_EQ(host.Raised(), "RuntimeException: (nil)");
    RaiseOutOfBoundsException(5, 3, nullptr, nullptr);  // scripts meet it with names
    EXPECT_EQ(host.Raised(), "RuntimeException: Parameter ?  is too big. Range is 0 to 2, but value is 5.");
  }
  ValueHost bare({.without = {"RuntimeException"}});
  RaiseException("RuntimeException", "text");
  EXPECT_EQ(bare.Raised(), "nothing");
}

TEST(HostValues, CaughtExceptionsBecomeHostExceptions) {
  ValueHost host;
  const auto raised_for = [&](auto exception) {
    try {
      throw exception;
    } catch (...) {
      RaiseCaughtException();
    }
    return host.Raised();
  };
  EXPECT_EQ(raised_for(std::bad_alloc()), "OutOfMemoryException: Failed to allocate memory.");
  EXPECT_EQ(raised_for(std::range_error("a")), "OutOfBoundsException: a");
  EXPECT_EQ(raised_for(std::out_of_range("b")), "OutOfBoundsException: b");
  EXPECT_EQ(raised_for(std::overflow_error("c")), "OutOfBoundsException: c");
  EXPECT_EQ(raised_for(std::underflow_error("d")), "OutOfBoundsException: d");
  EXPECT_EQ(raised_for(std::length_error("e")), "RuntimeException: e");
  EXPECT_EQ(raised_for(std::bad_cast()), std::string("IllegalCastException: ") + std::bad_cast().what());
  EXPECT_EQ(raised_for(5), "RuntimeException: Sorry, but there was an unnamed C++ Exception.");
}

TEST(HostValues, StringsTakeTheirEncoding) {
  ValueHost host;
  const std::string high = "caf\xE9";
  const struct {
    std::string bytes;
    TextEncoding asked, got;
  } rows[] = {{"abc", kEncodingUnknown, kEncodingAscii},
              {high, kEncodingUnknown, kEncodingUnknown},
              {"abc", 0 /*Mac Roman*/, 0x600},
              {high, kEncodingWindowsLatin1, kEncodingWindowsLatin1},
              {high, kEncodingAscii, kEncodingAscii},
              {"abc", kEncodingUtf8, kEncodingUtf8},
              {std::string("a\0b", 3), 0xFFFF, kEncodingAscii}};
  for (const auto& row : rows) {
    const auto made = StringRef::Adopt(REALBuildUnicodeString(row.bytes.data(), std::ssize(row.bytes), row.asked));
    const host::String& text = *host.heap().Find<host::String>(made.get());
    EXPECT_EQ(text.bytes(), row.bytes);
    EXPECT_EQ(text.encoding(), row.got);
  }
  EXPECT_EQ(REALBuildUnicodeString("", 0, kEncodingUtf8), nullptr);
  EXPECT_EQ(REALBuildUnicodeString(nullptr, 3, kEncodingUtf8), nullptr);
  EXPECT_EQ(REALBuildUnicodeString("abc", 0x80000000LL, kEncodingUtf8), nullptr);
}

template <typename Unit>
static std::string BytesOf(std::initializer_list<Unit> units) {
  return std::string(reinterpret_cast<const char*>(units.begin()), units.size() * sizeof(Unit));
}

TEST(HostValues, WideTextBecomesUtf8ThroughTheHost) {
  ValueHost host;
  const std::string utf32 = BytesOf<uint32_t>({0x41, 0x1F600, 0xD800, 0xDFFF, 0x110000, 0x10FFFF, 0xFFFF});
  const std::string utf16 = BytesOf<uint16_t>({0x41, 0xD83D, 0xDE00, 0xFFFD, 0xDBFF, 0xDFFF, 0xFFFF});
  const std::string by_host = "A\U0001F600???\U0010FFFF\uFFFF", by_plugin = "A\U0001F600\uFFFD\U0010FFFF\uFFFF";
  // A rest below four bytes is ignored when the plugin itself converts; 800 bytes and more are converted elsewhere.
  std::string long32, long8;
  for (int i = 0; i < 300; ++i) {
    long32 += utf32.substr(0, 8);
    long8 += by_plugin.substr(0, 5);
  }
  const struct {
    double version;
    TextEncoding encoding;
    std::string bytes, converted;
  } rows[] = {{2013.0, kEncodingUtf32, utf32, by_host},           {2012.0, kEncodingUtf16, utf16, by_plugin},
              {2012.0, kEncodingUtf32, utf32 + "xyz", by_plugin}, {2011.0, kEncodingUtf16, utf16, by_plugin},
              {2011.0, kEncodingUtf32, utf32, by_plugin},         {2011.0, kEncodingUtf32, long32, long8}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.version);
    rbversion_rbversion = row.version;
    const int64_t before = host.call_count("REALBuildStringWithEncoding").called;
    const auto made = StringRef::Adopt(REALBuildUnicodeString(row.bytes.data(), std::ssize(row.bytes), row.encoding));
    EXPECT_EQ(host.call_count("REALBuildStringWithEncoding").called - before, row.version >= 2012.0);
    EXPECT_EQ(host.heap().Find<host::String>(made.get())->bytes(), row.converted);
  }
}

TEST(HostValues, MemoryBlocksTellWhereTheirBytesAreByAMethod) {
  ValueHost host({.without = {"PluginCallFunctionWithExceptionHandler", "memoryBlockGetPtr"}});
  for (int i = 0; i < 2; ++i) {  // looked up once
    const auto made = MemoryBlockRef::Adopt(REALBuildMemoryblock("bytes", 5));
    ASSERT_TRUE(made);
    EXPECT_EQ(std::memcmp(host.heap().Find<host::MemoryBlock>(made.get())->bytes(), "bytes", 5), 0);
  }
  EXPECT_EQ(asked["memoryBlockGetPtr"], 0);
}

TEST(HostValues, MemoryBlocksAreCopiesOrExceptions) {
  ValueHost host({.without = {"PluginCallFunctionWithExceptionHandler"}, .largest_block = 999});
  EXPECT_EQ(REALBuildMemoryblock("bytes", 0), nullptr);
  EXPECT_EQ(REALBuildMemoryblock(nullptr, 5), nullptr);
  EXPECT_EQ(host.Raised(), "nothing");
  const struct {
    int64_t size, constructed;
  } rows[] = {{1000, 0}, {0x7FFFFFFE, 0}, {0x7FFFFFFF, 0x7FFFFFFF}, {5000000000, 5000000000}};
  for (const auto& row : rows) {
    constructed_size = 0;
    EXPECT_EQ(REALBuildMemoryblock("", row.size), nullptr);
    EXPECT_EQ(constructed_size, row.constructed);
    EXPECT_EQ(host.Raised(), "OutOfMemoryException: Failed to allocate a memoryblock with " +
                                 std::to_string(row.size) + " bytes in size.");
  }
}
