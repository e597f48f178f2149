// Paths and texts that no FolderItem gives; the rest is tested by saving under names.

#include "platform/frameworks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace {

TEST(CoreFoundation, RefusesWhatIsNoPath) {
  for (const size_t length : {0, 1, 4095, 4096}) {
    char path[4096] = {};
    std::fill_n(path, length, 'x');
    CFURLRef url = CFURLCreateFromFSRef(nullptr, reinterpret_cast<const FSRef*>(path));
    EXPECT_EQ(url != nullptr, length > 0 && length < 4096) << length;
    if (url) CFRelease(url);
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
