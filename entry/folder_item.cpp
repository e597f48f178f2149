#include "entry/folder_item.h"

#include <cstdlib>
#include <exception>
#include <iterator>
#include <memory>
#include <string>
#include <utility>

#include "bridge/host_reference.h"
#include "platform/files.h"
#include "platform/frameworks.h"

namespace {

struct Release {
  void operator()(char* text) const { std::free(text); }
};
using Text = std::unique_ptr<char, Release>;

// What the way from a FolderItem to a path holds: the item, kept alive meanwhile, and the path's two
// spellings, in UTF-8.
struct rbPath {
  FolderItemRef item;
  Text as_it_stands;
  Text form_d;
};

// The one reference that a Create or Copy call gave; may be empty.
template <typename Ref>
class Created {
 public:
  explicit Created(Ref object = nullptr) : object_(object) {}
  Created(Created&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  Created& operator=(Created other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~Created() {
    if (object_) CFRelease(object_);
  }
  Ref get() const { return object_; }
  explicit operator bool() const { return object_ != nullptr; }

 private:
  Ref object_;
};
using Url = Created<CFURLRef>;
using String = Created<CFStringRef>;

// The string with characters taken apart (Unicode normalisation form D), as Mac file systems keep names; the
// string itself when no copy can be made.
String FormD(String string) {
  CFMutableStringRef copy = CFStringCreateMutableCopy(nullptr, 0, string.get());
  if (!copy) return string;
  CFStringNormalize(copy, kCFStringNormalizationFormD);
  return String(copy);
}

Url UrlOfExistingItem(REALfolderItemStruct* item) {
  FSRef reference = {};
  if (!REALFSRefFromFolderItem(item, &reference, nullptr)) return Url();
  return Url(CFURLCreateFromFSRef(nullptr, &reference));
}

// For an item that does not exist yet, the host tells the parent folder and the item's leaf name.
Url UrlOfNewItem(REALfolderItemStruct* item) {
  FSRef parent = {};
  HFSUniStr255 name = {};
  if (!REALFSRefFromFolderItem(item, &parent, &name)) return Url();
  const Url folder(CFURLCreateFromFSRef(nullptr, &parent));
  if (!folder || name.length == 0 || name.length > std::size(name.unicode)) return Url();
  String leaf(CFStringCreateWithCharacters(nullptr, name.unicode, name.length));
  if (!leaf) return Url();
  leaf = FormD(std::move(leaf));
  return Url(CFURLCreateCopyAppendingPathComponent(nullptr, folder.get(), leaf.get(), false));
}

Text ToUtf8(CFStringRef string) {
  const CFIndex units = CFStringGetLength(string);
  if (units < 1) return nullptr;
  Text text(static_cast<char*>(std::calloc(static_cast<size_t>(units) * 6 + 20, 1)));
  if (text && !CFStringGetCString(string, text.get(), units * 6 + 10, kCFStringEncodingUTF8)) return nullptr;
  return text;
}

// Fills in both spellings of the URL's path.
bool FindPath(const Url& url, rbPath& path) {
  String string(CFURLCopyFileSystemPath(url.get(), kCFURLPOSIXPathStyle));
  if (!string) return false;
  path.as_it_stands = ToUtf8(string.get());
  path.form_d = ToUtf8(FormD(std::move(string)).get());
  return path.as_it_stands && path.form_d;
}

// Which spelling of a path names something. Some file systems tell names apart that others take for the same:
// form D is tried first; where nothing is there but the item, or a folder on its way, exists as it stands,
// that name is used. A new item gets its name in form D, in the folder that exists.
std::string SpellingInUse(const std::string& as_it_stands, const std::string& form_d) {
  if (IsThere(form_d.c_str())) return form_d;
  if (IsThere(as_it_stands.c_str())) return as_it_stands;
  const size_t leaf = as_it_stands.find_last_of(kPathSeparators);
  const size_t leaf_d = form_d.find_last_of(kPathSeparators);
  if (leaf == std::string::npos || leaf == 0 || leaf_d == std::string::npos) return form_d;
  const std::string folder = SpellingInUse(as_it_stands.substr(0, leaf), form_d.substr(0, leaf_d));
  const std::string kept = folder + as_it_stands.substr(leaf);
  return IsThere(kept.c_str()) ? kept : folder + form_d.substr(leaf_d);
}

FILE* OpenInUse(const rbPath& path, const char* mode) {
  try {
    return OpenPath(SpellingInUse(path.as_it_stands.get(), path.form_d.get()).c_str(), mode);
  } catch (const std::exception&) {  // no memory for the path
    return nullptr;
  }
}

}  // namespace

BufferedFile OpenCFILE(REALfolderItemStruct* item, const char* mode) {
  if (!item) return BufferedFile();
  rbPath path;
  path.item = FolderItemRef::Share(item);
  Url url = UrlOfExistingItem(item);
  if (!url) url = UrlOfNewItem(item);
  if (!url || !FindPath(url, path)) return BufferedFile();
  return BufferedFile(OpenInUse(path, mode));
}
