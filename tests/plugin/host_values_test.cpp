#include "plugin/host_values.h"

#include <gtest/gtest.h>

#include <cstring>
#include <deque>
#include <new>
#include <set>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

#include "plugin/exceptions.h"
#include "plugin/unicode.h"
#include "tests/support/lending.h"

// A host of one kind of thing: text with an encoding, counted. Exceptions are things whose text is their class.
struct Thing {
  std::string text;
  TextEncoding encoding = kEncodingUnknown;
  int references = 1;
};
static std::deque<Thing> things;
static std::vector<std::string> raised;
static std::string message;
static std::set<std::string> classes;  // that the host can make

static Thing* ThingOf(void* handle) { return static_cast<Thing*>(handle); }

template <typename Handle>
static Handle* New(std::string text, TextEncoding encoding = kEncodingUnknown) {
  return reinterpret_cast<Handle*>(&things.emplace_back(Thing{std::move(text), encoding}));
}

static REALobjectStruct* NewInstanceOf(const char* name) {
  return classes.contains(name) ? New<REALobjectStruct>(name) : nullptr;
}
static void* LoadGlobal(const char* module, const char* declaration) {
  int64_t (*lenb)(REALstringStruct*) = [](REALstringStruct* s) { return std::ssize(ThingOf(s)->text); };
  const bool known = !module && std::strcmp(declaration, "LenB( s as string ) as integer") == 0;
  return known ? reinterpret_cast<void*>(lenb) : nullptr;
}
static int64_t constructed_size;
static void* LoadMethod(REALobjectStruct*, const char* declaration) {
  void (*construct)(REALobjectStruct*, int64_t) = [](REALobjectStruct*, int64_t bytes) { constructed_size = bytes; };
  const bool known = std::strcmp(declaration, "Constructor(bytes as Integer)") == 0;
  return known ? reinterpret_cast<void*>(construct) : nullptr;
}

class HostValues : public testing::Test {
 protected:
  HostValues() {
    StartLending();
    Lend("REALBuildString", [](const char* bytes, int32_t length) {
      return New<REALstringStruct>(std::string(bytes, static_cast<size_t>(length)));
    });
    Lend("REALBuildStringWithEncoding", [](const char* bytes, int32_t length, TextEncoding encoding) {
      return New<REALstringStruct>(std::string(bytes, static_cast<size_t>(length)), encoding);
    });
    Lend("REALSetStringEncoding",
         [](REALstringStruct* s, TextEncoding encoding) { ThingOf(s)->encoding = encoding; });
    Lend("REALConvertString", [](REALstringStruct* s, TextEncoding encoding) {
      return New<REALstringStruct>("converted:" + ThingOf(s)->text, encoding);
    });
    for (const char* name : {"REALLockString", "REALLockObject"})
      Lend(name, [](void* t) { ++ThingOf(t)->references; });
    for (const char* name : {"REALUnlockString", "REALUnlockObject"})
      Lend(name, [](void* t) { --ThingOf(t)->references; });
    Lend("StringGetCString", [](REALstringStruct* s) -> const char* { return ThingOf(s)->text.data(); });
    Lend("REALLoadGlobalMethod", LoadGlobal);
    Lend("REALLoadObjectMethod", LoadMethod);
    Lend("PluginNewInstance", NewInstanceOf);
    Lend("REALSetPropValueString", [](REALobjectStruct*, const char*, REALstringStruct* s) -> HostBoolean {
      message = s ? ThingOf(s)->text : "(nil)";
      return 1;
    });
    Lend("RuntimeRaiseException", [](REALobjectStruct* exception) { raised.push_back(ThingOf(exception)->text); });
    // MemoryBlocks below 1000 bytes; the class makes them only 8 bytes too small.
    Lend("newMemoryBlock", [](int32_t size) {
      return size < 1000 ? New<REALmemoryBlockStruct>(std::string(static_cast<size_t>(size), '?')) : nullptr;
    });
    Lend("memoryBlockGetPtr", [](REALmemoryBlockStruct* block) -> void* { return ThingOf(block)->text.data(); });
    Lend("memoryBlockGetSize",
         [](REALmemoryBlockStruct* block) -> int64_t { return std::ssize(ThingOf(block)->text); });
    rbversion_rbversion = 2019.01;
    things = {};
    raised = {};
    classes = {"OutOfBoundsException", "OutOfMemoryException", "RuntimeException", "IllegalCastException",
               "MemoryBlock"};
  }
  // Everything made but the result (null for none) was given up.
  void ExpectBalanced(const void* result) {
    for (const Thing& thing : things) EXPECT_EQ(thing.references, &thing == result ? 1 : 0) << thing.text;
  }
};

TEST_F(HostValues, ExceptionsFallBackToWhatTheHostCanMake) {
  classes = {"RuntimeException"};
  RaiseException("OutOfBoundsException", "text");
  EXPECT_EQ(raised, std::vector<std::string>{"RuntimeException"});
  EXPECT_EQ(message, "text");
  RaiseException("RuntimeException", nullptr);
  EXPECT_EQ(message, "(nil)");
  classes.clear();
  RaiseException("RuntimeException", "text");
  EXPECT_EQ(raised.size(), 2U);
  classes = {"OutOfBoundsException"};
  RaiseOutOfBoundsException(5, 3, nullptr, nullptr);  // scripts meet it with names
  EXPECT_EQ(message, "Parameter ?  is too big. Range is 0 to 2, but value is 5.");
  ExpectBalanced(nullptr);
}

TEST_F(HostValues, CaughtExceptionsBecomeHostExceptions) {
  const auto thrown_as = [](auto exception) {
    try {
      throw exception;
    } catch (...) {
      RaiseCaughtException();
    }
    return raised.back() + ": " + message;
  };
  EXPECT_EQ(thrown_as(std::bad_alloc()), "OutOfMemoryException: Failed to allocate memory.");
  EXPECT_EQ(thrown_as(std::range_error("a")), "OutOfBoundsException: a");
  EXPECT_EQ(thrown_as(std::out_of_range("b")), "OutOfBoundsException: b");
  EXPECT_EQ(thrown_as(std::overflow_error("c")), "OutOfBoundsException: c");
  EXPECT_EQ(thrown_as(std::underflow_error("d")), "OutOfBoundsException: d");
  EXPECT_EQ(thrown_as(std::length_error("e")), "RuntimeException: e");
  EXPECT_EQ(thrown_as(std::bad_cast()), std::string("IllegalCastException: ") + std::bad_cast().what());
  EXPECT_EQ(thrown_as(std::exception()), std::string("RuntimeException: ") + std::exception().what());
  EXPECT_EQ(thrown_as(5), "RuntimeException: Sorry, but there was an unnamed C++ Exception.");
}

TEST_F(HostValues, StringsTakeTheirEncoding) {
  const std::string high = "caf\xE9";
  const struct {
    std::string bytes;
    TextEncoding asked, got;
  } rows[] = {{"abc", kEncodingUnknown, kEncodingAscii},       {high, kEncodingUnknown, kEncodingUnknown},
              {"abc", kEncodingMacRoman, kEncodingAscii},      {high, kEncodingWindowsLatin1, kEncodingWindowsLatin1},
              {high, kEncodingAscii, kEncodingAscii},          {"abc", kEncodingUtf8, kEncodingUtf8},
              {std::string("a\0b", 3), 0xFFFF, kEncodingAscii}};
  for (const auto& row : rows) {
    REALstringStruct* made =
        REALBuildUnicodeString(row.bytes.data(), static_cast<int64_t>(row.bytes.size()), row.asked);
    EXPECT_EQ(ThingOf(made)->text, row.bytes);
    EXPECT_EQ(ThingOf(made)->encoding, row.got);
  }
  EXPECT_EQ(REALBuildUnicodeString("", 0, kEncodingUtf8), nullptr);
  EXPECT_EQ(REALBuildUnicodeString(nullptr, 3, kEncodingUtf8), nullptr);
  EXPECT_EQ(REALBuildUnicodeString("abc", 0x80000000LL, kEncodingUtf8), nullptr);
}

static std::string Units(const std::vector<uint16_t>& units) {
  return std::string(reinterpret_cast<const char*>(units.data()), units.size() * 2);
}

TEST_F(HostValues, WideTextBecomesUtf8ThroughTheHost) {
  const uint32_t code_points[] = {0x41, 0x1F600, 0xD800, 0xDFFF, 0x110000, 0x10FFFF, 0xFFFF};
  const std::string utf32(reinterpret_cast<const char*>(code_points), sizeof code_points);
  const std::string utf16 = Units({0x41, 0xD83D, 0xDE00, 0xFFFD, 0xDBFF, 0xDFFF, 0xFFFF});
  // A rest below four bytes is ignored when the plugin itself converts; 800 bytes and more are converted elsewhere.
  std::string long32, long16;
  for (int i = 0; i < 300; ++i) {
    long32 += utf32.substr(0, 8);
    long16 += utf16.substr(0, 6);
  }
  const struct {
    double host;
    std::string bytes;
    TextEncoding encoding;
    std::string handed_over;
  } rows[] = {{2013.0, utf32, kEncodingUtf32, utf32}, {2012.0, utf32 + "xyz", kEncodingUtf32, utf16},
              {2011.0, utf32, kEncodingUtf32, utf16}, {2011.0, long32, kEncodingUtf32, long16},
              {2012.0, utf16, kEncodingUtf16, utf16}, {2011.0, utf16, kEncodingUtf16, utf16}};
  for (const auto& row : rows) {
    things.clear();
    rbversion_rbversion = row.host;
    REALstringStruct* made =
        REALBuildUnicodeString(row.bytes.data(), static_cast<int64_t>(row.bytes.size()), row.encoding);
    EXPECT_EQ(ThingOf(made)->text, "converted:" + row.handed_over) << row.host;
    EXPECT_EQ(ThingOf(made)->encoding, kEncodingUtf8);
    const bool as_utf32 = row.host >= 2013.0 && row.encoding == kEncodingUtf32;
    EXPECT_EQ(things.front().encoding, as_utf32 ? kEncodingUtf32 : kEncodingUtf16);
    ExpectBalanced(made);
  }
}

TEST_F(HostValues, MemoryBlocksAreCopiesOrExceptions) {
  EXPECT_EQ(REALBuildMemoryblock("bytes", 0), nullptr);
  EXPECT_EQ(REALBuildMemoryblock(nullptr, 5), nullptr);
  EXPECT_TRUE(raised.empty());
  const struct {
    int64_t size, constructed;
  } rows[] = {{1000, 0}, {0x7FFFFFFE, 0}, {0x7FFFFFFF, 0x7FFFFFFF}, {5000000000, 5000000000}};
  for (const auto& row : rows) {
    constructed_size = 0;
    EXPECT_EQ(REALBuildMemoryblock("", row.size), nullptr);
    EXPECT_EQ(constructed_size, row.constructed);
    EXPECT_EQ(raised.back(), "OutOfMemoryException");
    EXPECT_EQ(message, "Failed to allocate a memoryblock with " + std::to_string(row.size) + " bytes in size.");
    ExpectBalanced(nullptr);
  }
}
