#include "bridge/strings.h"

#include <mutex>

int64_t StringByteLength(REALstringStruct* string) {
  static std::once_flag loaded;
  static void* len_b = nullptr;
  if (!string) return 0;
  std::call_once(loaded, [] { len_b = REALLoadFrameworkMethod(nullptr, "LenB( s as string ) as integer"); });
  return CallOrNeutral<int64_t>(len_b, string);
}

StringContents::StringContents(REALstringStruct* string) : string_(StringRef::Share(string)) {
  if (!string) return;
  const bool readable{REALGetCString};  // looked up before the length is
  length_ = StringByteLength(string);
  if (readable) bytes_ = REALGetCString(string);
  if (!bytes_ || length_ < 0) length_ = 0;
}

REALstringStruct* BuildEncodedString(const char* bytes, int64_t length, TextEncoding encoding) {
  if (!bytes || length < 1 || length > INT32_MAX) return nullptr;
  auto text = StringRef::Adopt(REALBuildString(bytes, static_cast<int32_t>(length)));
  if (text) REALSetStringEncoding(text.get(), encoding);
  return text.Detach();
}
