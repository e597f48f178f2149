// Which names a file can be saved under and opened by, through the way that every FolderItem takes. Runs wherever the
// plugin is built for; argument: a folder to work in, which is left as it is: not every library can remove what has
// such names. Prints each case and whether it went as it must.

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>

#include "entry/folder_item.h"
#include "platform/files.h"
#include "platform/names.h"
#include "tests/platform/refer.h"

namespace {

namespace fs = std::filesystem;

struct Item {
  std::string folder;
  std::u16string leaf;
};

int8_t Refer(REALfolderItemStruct* handle, FSRef* reference, HFSUniStr255* name) {
  const Item& item = *reinterpret_cast<const Item*>(handle);
  if (!name) {
    const auto leaf = Utf8Name(item.leaf);
    if (!leaf) return false;
    const std::string path = item.folder + "/" + *leaf;
    return IsThere(path.c_str()) && SetReference(path, reference);
  }
  name->length = static_cast<uint16_t>(item.leaf.size());
  std::copy_n(item.leaf.begin(), std::min<size_t>(item.leaf.size(), 255), name->unicode);
  return SetReference(item.folder, reference);
}

void* Resolve(const char* name) {
  return std::strcmp(name, "REALFSRefFromFolderItem") == 0 ? reinterpret_cast<void*>(&Refer) : nullptr;
}

// Writes a file and reads it back.
bool Opens(Item item) {
  auto* handle = reinterpret_cast<REALfolderItemStruct*>(&item);
  {
    const auto file = OpenCFILE(handle, "wb");
    if (!file) return false;
    std::fputs("GIF", file.get());
  }
  char text[4] = "";
  const auto file = OpenCFILE(handle, "rb");
  return file && std::fread(text, 1, 3, file.get()) == 3 && std::strcmp(text, "GIF") == 0;
}

// Some are names on one system and none on another: they may open or not.
enum Expected { kNil, kOpens, kEither };

int faults = 0;
void Check(const char* what, const Item& item, Expected expected) {
  const bool opened = Opens(item);
  const bool right = expected == kEither || opened == (expected == kOpens);
  std::printf("%s %s: %s\n", right ? "ok   " : "FAULT", what, opened ? "opens" : "nil");
  faults += !right;
}

}  // namespace

int main(int, char** arguments) {
  gResolver = Resolve;
  fs::create_directories(arguments[1]);
  const std::string folder = fs::absolute(arguments[1]).string();
  const std::u16string composed = u"\u00FC.gif", decomposed = u"u\u0308.gif";

  Check("a plain name", {folder, u"plain.gif"}, kOpens);
  Check("a composed accent", {folder, composed}, kOpens);
  Check("a decomposed accent", {folder, decomposed}, kOpens);
  Check("beyond 16 bits", {folder, u"\U0001F600\U0001D15E.gif"}, kOpens);
  Check("255 units", {folder, std::u16string(255, u'x')}, kOpens);
  Check("255 units, more in form D", {folder, std::u16string(255, u'\u00E4')}, kEither);
  Check("256 units", {folder, std::u16string(256, u'x')}, kNil);
  Check("no name", {folder, u""}, kNil);
  Check("the folder itself", {folder, u"."}, kNil);
  Check("a folder that is not there", {folder, u"nowhere/a.gif"}, kNil);
  Check("a lone surrogate", {folder, u"\xD83D.gif"}, kNil);
  Check("a NUL", {folder, std::u16string(u"a\0b", 3)}, kNil);
  for (const char16_t* name :
       {u"a:b.gif", u"a?b*.gif", u"<|>.gif", u"con", u"NUL.gif", u"dot.", u"blank ", u"\\.gif"}) {
    Check("a name reserved somewhere", {folder, name}, kEither);
  }
  Check("a path too long for a reference", {folder + std::string(4096, 'x'), u"a.gif"}, kNil);
  Check("no folder", {"", u"a.gif"}, kEither);

  std::string deep = folder;
  for (int i = 0; i < 6; ++i) {
    deep += "/" + std::string(60, static_cast<char>('a' + i));
    MakeFolder(deep);
  }
  Check("a path of 400 units", {deep, u"a.gif"}, kOpens);
  Check("a long name in a deep folder", {deep, std::u16string(255, u'x')}, kOpens);
#if defined(_WIN32)
  std::string slashes = folder;
  for (char& c : slashes) c = c == '\\' ? '/' : c;
  Check("a drive and slashes", {slashes, composed}, kOpens);
  Check("the long form", {"\\\\?\\" + folder, u"a.gif"}, kOpens);
  Check("a share that is not there", {"\\\\localhost\\nowhere", u"a.gif"}, kNil);
  Check("a share's long form", {"\\\\?\\UNC\\localhost\\nowhere", u"a.gif"}, kNil);
  Check("a share with a long name", {"\\\\localhost\\" + std::string(300, 'x'), u"a.gif"}, kNil);
  Check("no share", {"\\\\", u"a.gif"}, kNil);
  Check("a device", {"\\\\.", u"nul"}, kEither);
  Check("a drive that is not there", {"Q:\\", u"a.gif"}, kNil);
#endif
  return faults > 0;
}
