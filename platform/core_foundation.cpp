#include <cstring>
#include <exception>
#include <optional>
#include <string>

#include "platform/frameworks.h"
#include "platform/host_platform.h"
#include "platform/names.h"

struct CFText {
  std::u16string units;
  mutable int references = 1;
};

namespace {

// Null when there is no such text or no memory for it.
template <typename Make>
CFText* OrNull(Make make) {
  try {
    std::optional<std::u16string> units = make();
    return units ? new CFText{std::move(*units)} : nullptr;
  } catch (const std::exception&) {
    return nullptr;
  }
}

}  // namespace

CFTypeRef CFRetain(CFTypeRef object) {
  ++static_cast<CFStringRef>(object)->references;
  return object;
}

void CFRelease(CFTypeRef object) {
  const auto* text = static_cast<CFStringRef>(object);
  if (--text->references == 0) delete text;
}

CFStringRef CFStringCreateWithCharacters(CFAllocatorRef, const UniChar* units, CFIndex count) {
  return OrNull([&] { return std::u16string(units, units + count); });
}

CFMutableStringRef CFStringCreateMutableCopy(CFAllocatorRef, CFIndex, CFStringRef string) {
  return OrNull([&] { return string->units; });
}

void CFStringNormalize(CFMutableStringRef string, CFStringNormalizationForm) {
  if (CFText* normalized = OrNull([&] { return FormD(string->units); })) {
    string->units.swap(normalized->units);
    CFRelease(normalized);
  }
}

CFIndex CFStringGetLength(CFStringRef string) { return static_cast<CFIndex>(string->units.size()); }

Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex buffer_size, CFStringEncoding) {
  try {
    const std::optional<std::string> text = Utf8Name(string->units);
    if (!text || static_cast<CFIndex>(text->size()) >= buffer_size) return false;
    std::memcpy(buffer, text->c_str(), text->size() + 1);
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

CFURLRef CFURLCreateFromFSRef(CFAllocatorRef, const FSRef* reference) {
  const char* path = reference->path;
  const size_t length = strnlen(path, sizeof reference->path);
  if (length == 0 || length == sizeof reference->path) return nullptr;
  return OrNull([&] { return Utf16Name({path, length}); });
}

CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef, CFURLRef url, CFStringRef component, Boolean) {
  return OrNull([&] { return url->units + (url->units.ends_with(u'/') ? u"" : u"/") + component->units; });
}

CFStringRef CFURLCopyFileSystemPath(CFURLRef url, CFURLPathStyle) {
  return OrNull([&] { return url->units; });
}
