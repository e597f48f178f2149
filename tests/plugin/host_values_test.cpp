#include "plugin/host_values.h"

#include <gtest/gtest.h>

#include <cstring>
#include <deque>
#include <new>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

#include "plugin/exceptions.h"
#include "plugin/unicode.h"

// A host of one kind of thing: text with an encoding, counted. Exceptions are things whose text is their class.
struct Thing {
  std::string text;
  TextEncoding encoding = kEncodingUnknown;
  int references = 1;
};
static std::deque<Thing> things;
static std::vector<std::string> raised;
static std::string message;
static std::vector<std::string> classes;  // that the host can make

template <typename Handle>
static Thing* ThingOf(Handle* handle) {
  return reinterpret_cast<Thing*>(handle);
}

template <typename Handle>
static Handle* New(std::string text, TextEncoding encoding = kEncodingUnknown) {
  return reinterpret_cast<Handle*>(&things.emplace_back(Thing{std::move(text), encoding}));
}

static REALstringStruct* BuildString(const char* bytes, int32_t length) {
  return New<REALstringStruct>(std::string(bytes, static_cast<size_t>(length)));
}
static REALstringStruct* BuildStringWithEncoding(const char* bytes, int32_t length, TextEncoding encoding) {
  return New<REALstringStruct>(std::string(bytes, static_cast<size_t>(length)), encoding);
}
static void SetStringEncoding(REALstringStruct* s, TextEncoding encoding) { ThingOf(s)->encoding = encoding; }
static REALstringStruct* ConvertString(REALstringStruct* s, TextEncoding encoding) {
  return New<REALstringStruct>("converted:" + ThingOf(s)->text, encoding);
}
static void Lock(void* thing) { ++ThingOf(thing)->references; }
static void Unlock(void* thing) { --ThingOf(thing)->references; }
static int64_t LenB(REALstringStruct* s) { return static_cast<int64_t>(ThingOf(s)->text.size()); }
static const char* GetCString(REALstringStruct* s) { return ThingOf(s)->text.data(); }
static void* LoadGlobal(const char* module, const char* declaration) {
  const bool known = !module && std::strcmp(declaration, "LenB( s as string ) as integer") == 0;
  return known ? reinterpret_cast<void*>(LenB) : nullptr;
}
static REALobjectStruct* NewInstanceOf(const char* name) {
  for (const std::string& known : classes) {
    if (known == name) return New<REALobjectStruct>(name);
  }
  return nullptr;
}
static HostBoolean SetString(REALobjectStruct*, const char*, REALstringStruct* s) {
  message = s ? ThingOf(s)->text : "(nil)";
  return 1;
}
static void Raise(REALobjectStruct* exception) { raised.push_back(ThingOf(exception)->text); }

// MemoryBlocks below 1000 bytes come from "newMemoryBlock"; the class makes them only 8 bytes too small.
static REALmemoryBlockStruct* NewBlock(int32_t size) {
  return size < 1000 ? New<REALmemoryBlockStruct>(std::string(static_cast<size_t>(size), '?')) : nullptr;
}
static void* BlockPointer(REALmemoryBlockStruct* block) { return ThingOf(block)->text.data(); }
static int64_t BlockSize(REALmemoryBlockStruct* block) { return static_cast<int64_t>(ThingOf(block)->text.size()); }
static int64_t constructed_size;
static void Construct(REALobjectStruct*, int64_t bytes) { constructed_size = bytes; }
static void* LoadMethod(REALobjectStruct*, const char* declaration) {
  return std::strcmp(declaration, "Constructor(bytes as Integer)") == 0 ? reinterpret_cast<void*>(Construct)
                                                                        : nullptr;
}

static void* Resolve(const char* name) {
  const struct {
    const char* name;
    void* address;
  } table[] = {{"REALBuildString", reinterpret_cast<void*>(BuildString)},
               {"REALBuildStringWithEncoding", reinterpret_cast<void*>(BuildStringWithEncoding)},
               {"REALSetStringEncoding", reinterpret_cast<void*>(SetStringEncoding)},
               {"REALConvertString", reinterpret_cast<void*>(ConvertString)},
               {"REALLockString", reinterpret_cast<void*>(Lock)},
               {"REALUnlockString", reinterpret_cast<void*>(Unlock)},
               {"REALLockObject", reinterpret_cast<void*>(Lock)},
               {"REALUnlockObject", reinterpret_cast<void*>(Unlock)},
               {"StringGetCString", reinterpret_cast<void*>(GetCString)},
               {"REALLoadGlobalMethod", reinterpret_cast<void*>(LoadGlobal)},
               {"REALLoadObjectMethod", reinterpret_cast<void*>(LoadMethod)},
               {"PluginNewInstance", reinterpret_cast<void*>(NewInstanceOf)},
               {"REALSetPropValueString", reinterpret_cast<void*>(SetString)},
               {"RuntimeRaiseException", reinterpret_cast<void*>(Raise)},
               {"newMemoryBlock", reinterpret_cast<void*>(NewBlock)},
               {"memoryBlockGetPtr", reinterpret_cast<void*>(BlockPointer)},
               {"memoryBlockGetSize", reinterpret_cast<void*>(BlockSize)}};
  for (const auto& row : table) {
    if (std::strcmp(row.name, name) == 0) return row.address;
  }
  return nullptr;
}

class HostValues : public testing::Test {
 protected:
  void SetUp() override {
    gResolver = Resolve;
    rbversion_rbversion = 2019.01;
    things.clear();
    raised.clear();
    message.clear();
    classes = {"OutOfBoundsException", "OutOfMemoryException", "RuntimeException", "IllegalCastException",
               "MemoryBlock"};
  }
  // Everything made but the result (null for none) was given up.
  void ExpectBalanced(const void* result) {
    for (const Thing& thing : things) EXPECT_EQ(thing.references, &thing == result ? 1 : 0) << thing.text;
  }
};

TEST_F(HostValues, OutOfBoundsMessages) {
  const struct {
    int64_t value, count;
    const char *parameter, *method, *text;
  } rows[] = {
      {300, 256, "index", "red", "Parameter index to method red is too big. Range is 0 to 255, but value is 300."},
      {-1, 256, "index", "value",
       "Parameter index to method value is too small. Range is 0 to 255, but value is -1."},
      {5, 3, nullptr, nullptr, "Parameter ?  is too big. Range is 0 to 2, but value is 5."},
      {0, 0, "index", "Block", "Parameter index to method Block is too big. Range is 0 to -1, but value is 0."},
  };
  for (const auto& row : rows) {
    RaiseOutOfBoundsException(row.value, row.count, row.parameter, row.method);
    EXPECT_EQ(message, row.text);
    EXPECT_EQ(raised.back(), "OutOfBoundsException");
    ExpectBalanced(nullptr);
  }
}

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
  EXPECT_EQ(thrown_as(std::runtime_error("f")), "RuntimeException: f");
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

TEST_F(HostValues, StringContentsHoldTheStringWhileTheyLive) {
  auto* string = New<REALstringStruct>(std::string("a\0b", 3));
  {
    const StringContents contents(string);
    EXPECT_EQ(contents.length(), 3);
    EXPECT_EQ(std::memcmp(contents.bytes(), "a\0b", 3), 0);
    EXPECT_EQ(ThingOf(string)->references, 2);
  }
  EXPECT_EQ(ThingOf(string)->references, 1);
  EXPECT_EQ(StringContents(nullptr).bytes(), nullptr);
}

TEST_F(HostValues, MemoryBlocksAreCopiesOrExceptions) {
  REALmemoryBlockStruct* block = REALBuildMemoryblock("bytes", 5);
  EXPECT_EQ(ThingOf(block)->text, "bytes");
  ExpectBalanced(block);
  EXPECT_EQ(REALBuildMemoryblock("bytes", 0), nullptr);
  EXPECT_EQ(REALBuildMemoryblock(nullptr, 5), nullptr);
  EXPECT_TRUE(raised.empty());

  things.clear();
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
