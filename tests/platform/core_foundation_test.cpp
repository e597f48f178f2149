#include "platform/core_foundation.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

struct Path {
  char bytes[4096];
};

// The way of a path: from its reference, through the calls, to UTF-8 again; "failed" where a call fails.
std::string RoundTrip(const std::string& path, bool normalize) {
  Path reference = {};
  std::memcpy(reference.bytes, path.data(), path.size());
  CFURLRef url = CFURLCreateFromFSRef(nullptr, reinterpret_cast<const FSRef*>(&reference));
  if (!url) return "failed";
  CFStringRef string = CFURLCopyFileSystemPath(url, kCFURLPOSIXPathStyle);
  CFMutableStringRef copy = CFStringCreateMutableCopy(nullptr, 0, string);
  if (normalize) CFStringNormalize(copy, kCFStringNormalizationFormD);
  std::vector<char> text(CFStringGetLength(copy) * 6 + 10);
  const bool converted =
      CFStringGetCString(copy, text.data(), static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8);
  CFRelease(url);
  CFRelease(string);
  CFRelease(copy);
  return converted ? text.data() : "failed";
}

TEST(CoreFoundation, KeepsAndNormalizesPaths) {
  const struct {
    const char* what;
    std::string path;
    std::string form_d;
  } cases[] = {
      {"an accent", "/caf\u00E9", "/cafe\u0301"},
      {"marks out of order", "/s\u0307\u0323x\u0307\u0323", "/s\u0323\u0307x\u0323\u0307"},
      {"the ligature stays: not canonical", "/\uFB01", "/\uFB01"},
      {"beyond 16 bits", "/\U0001F600\U0001D15E", "/\U0001F600\U0001D157\U0001D165"},
      {"bytes that are not UTF-8", "/\x80\xC3(\xF0\x9F\xFF", "/\x80\xC3(\xF0\x9F\xFF"},
      {"odd bytes before a mark", "/\xFFs\u0307\u0323", "/\xFFs\u0323\u0307"},
      {"longest", "/" + std::string(4094, 'x'), "/" + std::string(4094, 'x')},
      {"no path", "", "failed"},
      {"no end", "/" + std::string(4095, 'x'), "failed"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(RoundTrip(c.path, true), c.form_d) << c.what;
    EXPECT_EQ(RoundTrip(c.path, false), c.form_d == "failed" ? c.form_d : c.path) << c.what;
  }
}

TEST(CoreFoundation, RefusesWhatIsNoText) {
  const struct {
    std::u16string units;
    CFIndex room;
    bool converted;
  } cases[] = {{u"\u00FCa", 4, true}, {u"\u00FCa", 3, false}, {u"\xD83D\xDE00", 5, true},
               {u"\xD83D", 9, false}, {u"\xDC01", 9, false},  {{u'a', u'\0', u'b'}, 9, false}};
  for (const auto& c : cases) {
    CFStringRef string = CFStringCreateWithCharacters(nullptr, reinterpret_cast<const UniChar*>(c.units.data()),
                                                      static_cast<CFIndex>(c.units.size()));
    char text[9];
    EXPECT_EQ(CFStringGetCString(string, text, c.room, kCFStringEncodingUTF8) != 0, c.converted) << c.room;
    CFRelease(CFRetain(string));
    CFRelease(string);
  }
}

}  // namespace
