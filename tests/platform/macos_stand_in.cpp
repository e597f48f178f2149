// What of Core Foundation the plugin calls on macOS, so far as its code for macOS can run elsewhere: opaque
// references, strings and URLs with a count each, of which none may be left.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "platform/host_platform.h"
#include "platform/names.h"
#include "tests/platform/refer.h"

struct CFText {
  std::u16string units;
  int references = 1;
};

namespace {

int alive = 0;
struct CheckAtEnd {
  ~CheckAtEnd() {
    if (alive == 0) return;
    std::printf("FAULT %d objects are left\n", alive);
    std::_Exit(1);
  }
} check_at_end;

// Strings and URLs are counted alike: a URL is a string here.
CFText* Make(std::u16string units) {
  ++alive;
  return new CFText{std::move(units)};
}

std::vector<std::string> referred;

}  // namespace

bool SetReference(const std::string& path, FSRef* reference) {
  if (path.empty() || path.size() > 1024) return false;  // the system's own limit
  const size_t index = referred.size();
  referred.push_back(path);
  std::memset(reference, 0xEE, sizeof *reference);
  std::memcpy(reference->hidden + 8, &index, sizeof index);
  return true;
}

extern "C" {

CFTypeRef CFRetain(CFTypeRef object) {
  ++const_cast<CFText*>(static_cast<const CFText*>(object))->references;
  return object;
}
void CFRelease(CFTypeRef object) {
  auto* text = const_cast<CFText*>(static_cast<const CFText*>(object));
  if (--text->references > 0) return;
  delete text;
  --alive;
}
CFStringRef CFStringCreateWithCharacters(CFAllocatorRef, const UniChar* units, CFIndex count) {
  return Make(std::u16string(units, units + count));
}
CFMutableStringRef CFStringCreateMutableCopy(CFAllocatorRef, CFIndex, CFStringRef string) {
  return Make(string->units);
}
void CFStringNormalize(CFMutableStringRef string, CFStringNormalizationForm form) {
  if (form == kCFStringNormalizationFormD) string->units = FormD(string->units);
}
CFIndex CFStringGetLength(CFStringRef string) { return static_cast<CFIndex>(string->units.size()); }
Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex size, CFStringEncoding encoding) {
  const auto text = Utf8Name(string->units);
  if (!text || encoding != kCFStringEncodingUTF8 || static_cast<CFIndex>(text->size()) >= size) return false;
  std::memcpy(buffer, text->c_str(), text->size() + 1);
  return true;
}
CFURLRef CFURLCreateFromFSRef(CFAllocatorRef, const FSRef* reference) {
  size_t index;
  std::memcpy(&index, reference->hidden + 8, sizeof index);
  return Make(*Utf16Name(referred.at(index)));
}
CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef, CFURLRef url, CFStringRef component, Boolean) {
  return Make(url->units + u"/" + component->units);
}
CFStringRef CFURLCopyFileSystemPath(CFURLRef url, CFURLPathStyle) { return Make(url->units); }
}
