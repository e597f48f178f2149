// A little host for the GIF plugin, whole in one file: loads the plugin, offers what it needs, and does with each GIF
// what scripts do: opens it, looks at everything in it, makes pictures and masks, clones, saves, opens again. Prints
// a line of facts and checksums for each step; on every system the same.
//
//   host [--console] PLUGIN COPY.gif IN.gif...    COPY.gif is written and removed again
//
// An IN.gif that is @FILE stands for the names in FILE, one a line, in UTF-8. Status 0 when all steps were done (a
// file that is no GIF counts as such), 1 when something stayed alive, 2 when the plugin cannot be loaded, 64 for
// wrong usage.
//
// No licence has been granted to anyone yet: all rights are reserved.

#include <ctype.h>
#include <inttypes.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "gif_plugin_host.h"

static void* Memory(size_t size) {
  void* made = calloc(1, size);
  if (!made) abort();
  return made;
}

// --- What systems have of their own: libraries, files, bitmap contexts ---

typedef void (*Entry)(REALresolver);

#if defined(_WIN32)
#include <direct.h>
#include <windows.h>
#define getcwd _getcwd

static Entry LoadEntry(const char* file) {
  HMODULE library = LoadLibraryA(file);
  return library ? (Entry)(void*)GetProcAddress(library, "REALPluginMain") : NULL;
}
#else
#include <dlfcn.h>
#include <unistd.h>

static Entry LoadEntry(const char* file) {
  void* library = dlopen(file, RTLD_NOW | RTLD_LOCAL);
  if (!library) fprintf(stderr, "%s\n", dlerror());
  return library ? (Entry)dlsym(library, "REALPluginMain") : NULL;
}
#endif

// `Refer` fills in the platform's reference to a file; false when nothing has that name. A context's bytes are alpha,
// red, green, blue.
#if defined(__APPLE__)
static bool Refer(const char* path, FSRef* reference) {
  CFURLRef url = CFURLCreateFromFileSystemRepresentation(NULL, (const uint8_t*)path, (CFIndex)strlen(path), false);
  const bool found = url && CFURLGetFSRef(url, reference);
  if (url) CFRelease(url);
  return found;
}

static void* NewContext(void* pixels, size_t width, size_t height) {
  CGColorSpaceRef space = CGColorSpaceCreateDeviceRGB();
  CGContextRef made =
      CGBitmapContextCreate(pixels, width, height, 8, width * 4, space, kCGImageAlphaPremultipliedFirst);
  CGColorSpaceRelease(space);
  return made;
}

static void FreeContext(void* context) { CGContextRelease(context); }
#else
static bool IsThere(const char* path) {
#if defined(_WIN32)
  wchar_t wide[4096];
  return MultiByteToWideChar(CP_UTF8, 0, path, -1, wide, 4096) > 0 &&
         GetFileAttributesW(wide) != INVALID_FILE_ATTRIBUTES;
#else
  return access(path, F_OK) == 0;
#endif
}

static bool Refer(const char* path, FSRef* reference) {
  if (strlen(path) >= sizeof reference->path) return false;
  strcpy(reference->path, path);
  return IsThere(path);
}

static void* NewContext(void* pixels, size_t width, size_t height) {
  CGContext* made = Memory(sizeof *made);
  *made = (CGContext){pixels, width, height, width * 4, 32, 2};
  return made;
}

static void FreeContext(void* context) { free(context); }
#endif

// --- What handles point at ---

// One record for all kinds of handles. An instance of the plugin's classes has its data behind the record.
typedef struct Object {
  int64_t references;
  REALclassDefinition* type;  // of an instance; else null
  char* bytes;                // of a string or MemoryBlock; a FolderItem's path; a picture's pixels, 4 bytes each
  int64_t size;               // of `bytes`
  int32_t width, height;      // of a picture
  void* platform_object;      // of a picture
  struct Object* mask;        // of a picture
} Object;

static const int64_t kMostPixels = 1 << 22;  // no larger pictures are made here, nor MemoryBlocks for more
static int alive, raised, faults;
static bool is_console;

static Object* New(size_t instance_size) {
  Object* made = Memory(sizeof(Object) + instance_size);
  made->references = 1;
  ++alive;
  return made;
}

static Object* NewBytes(const void* bytes, int64_t size) {
  Object* made = New(0);
  made->size = size;
  made->bytes = Memory((size_t)size + 1);
  if (bytes) memcpy(made->bytes, bytes, (size_t)size);
  return made;
}

static Object* Lock(Object* object) {
  if (object) ++object->references;
  return object;
}

static void Unlock(Object* object) {
  if (!object || --object->references > 0) return;
  if (object->type && object->type->destructor) {
    object->references = 1;  // it may still be looked at
    ((void (*)(Object*))object->type->destructor)(object);
  }
  Unlock(object->mask);
  if (object->platform_object && !is_console) FreeContext(object->platform_object);
  if (is_console) free(object->platform_object);
  free(object->bytes);
  free(object);
  --alive;
}

// --- What the plugin registers ---

enum { kMost = 16 };
static REALclassDefinition* classes[kMost];
static REALmethodDefinition* methods[kMost];  // of FolderItem, and global ones
static int class_count, method_count;

static void TakeClass(REALclassDefinition* definition) {
  definition->instance_offset = sizeof(Object);
  if (class_count < kMost) classes[class_count++] = definition;
}

static void TakeMethod(REALmethodDefinition* method) {
  if (method_count < kMost) methods[method_count++] = method;
}

static void TakeExtension(REALclassDefinition* definition) {
  for (int64_t i = 0; i < definition->method_count; ++i) TakeMethod(&definition->methods[i]);
}

static double HostVersion(void) { return 3000.0; }  // methods come one by one, not in modules

static Object* NewInstance(const char* name) {
  for (int i = 0; i < class_count; ++i) {
    if (strcmp(classes[i]->name, name) != 0) continue;
    Object* made = New((size_t)classes[i]->instance_size);
    made->type = classes[i];
    return made;
  }
  return New(0);  // an exception
}

static void Raise(Object* exception) { ++raised, (void)exception; }  // the plugin gives its reference back itself

// --- Strings, MemoryBlocks, files ---

static char* Bytes(Object* object) { return object->bytes; }
static int64_t Size(Object* object) { return object->size; }
static Object* BuildString(const char* bytes, int32_t length) { return NewBytes(bytes, length); }
static Object* NewMemoryBlock(int32_t size) {
  return size < 0 || size > 4 * kMostPixels ? NULL : NewBytes(NULL, size);
}

// The units of UTF-8 text; -1 when there are more than `room`, or a byte is none of UTF-8.
static int ToUtf16(const char* text, uint16_t* units, int room) {
  int count = 0;
  for (const uint8_t* at = (const uint8_t*)text; *at;) {
    const int more = *at < 0x80 ? 0 : *at < 0xC0 ? -1 : *at < 0xE0 ? 1 : *at < 0xF0 ? 2 : 3;
    if (more < 0 || count + (more == 3) >= room) return -1;
    uint32_t point = more > 0 ? *at & (0x3F >> more) : *at;
    ++at;
    for (int i = 0; i < more; ++i, ++at) {
      if ((*at & 0xC0) != 0x80) return -1;
      point = point << 6 | (*at & 0x3F);
    }
    if (more == 3) units[count++] = (uint16_t)(0xD7C0 + (point >> 10));
    units[count++] = (uint16_t)(more == 3 ? 0xDC00 + (point & 0x3FF) : point);
  }
  return count;
}

// Without a name the item itself; with one the folder around it, and the item's name.
static int8_t FSRefFromFolderItem(Object* item, FSRef* reference, HFSUniStr255* name) {
  if (!name) return Refer(item->bytes, reference);
  char* leaf = strrchr(item->bytes, '/');
  const int units = leaf ? ToUtf16(leaf + 1, name->unicode, 255) : -1;
  if (units < 0) return false;
  name->length = (uint16_t)units;
  *leaf = 0;
  const bool found = Refer(leaf == item->bytes ? "/" : item->bytes, reference);
  *leaf = '/';
  return found;
}

// --- Pictures ---

// The rows' addresses stand behind the image.
static REALgdImage* NewImage(char* pixels, int width, int height) {
  REALgdImage* image = Memory(sizeof *image + (size_t)height * sizeof(int*));
  image->sx = width;
  image->sy = height;
  image->trueColor = 1;
  image->tpixels = (int**)(void*)(image + 1);
  for (int y = 0; y < height; ++y) image->tpixels[y] = (int*)(void*)pixels + (ptrdiff_t)y * width;
  return image;
}

static Object* NewPicture(int32_t width, int32_t height, int32_t depth) {
  if (width < 1 || height < 1 || depth != 32 || (int64_t)width * height > kMostPixels) return NULL;
  Object* made = NewBytes(NULL, (int64_t)width * height * 4);
  made->width = width;
  made->height = height;
  made->platform_object =
      is_console ? (void*)NewImage(made->bytes, width, height) : NewContext(made->bytes, width, height);
  return made;
}

static int64_t PictureType(Object* picture) { return (void)picture, 2; }

static int8_t LockDescription(Object* picture, REALpictureDescription* description, int32_t kind) {
  if (kind != (is_console ? kPictureKindGDImage : kPictureKindCGBitmapContext)) return false;
  *description =
      (REALpictureDescription){(uint32_t)kind, picture->platform_object, picture->width, picture->height, {0}};
  return true;
}

static Object* Mask(Object* picture, int32_t create) {
  if (!picture->mask && create) picture->mask = NewPicture(picture->width, picture->height, 32);
  return Lock(picture->mask);
}

// --- What the plugin finds by name ---

// What is not offered is not missed: a mask is copied where it cannot be drawn, encodings are not looked at.
static void* GlobalMethod(const char* module, const char* declaration) {
  return !module && strcmp(declaration, "LenB( s as string ) as integer") == 0 ? (void*)Size : NULL;
}

static void* ClassReference(const char* name) {
  return strcmp(name, is_console ? "ConsoleApplication" : "Application") == 0 ? classes : NULL;
}

static void* Resolve(const char* name) {
  static const struct {
    const char* name;
    void* function;
  } table[] = {
      {"REALGetRBVersion", (void*)HostVersion},
      {"PluginRegisterClass", (void*)TakeClass},
      {"PluginRegisterClassExtension", (void*)TakeExtension},
      {"PluginRegisterMethod", (void*)TakeMethod},
      {"PluginNewInstance", (void*)NewInstance},
      {"REALLockObject", (void*)Lock},
      {"REALUnlockObject", (void*)Unlock},
      {"REALLoadGlobalMethod", (void*)GlobalMethod},
      {"pluginObjectType", (void*)ClassReference},
      {"RuntimeRaiseException", (void*)Raise},
      {"REALLockString", (void*)Lock},
      {"REALUnlockString", (void*)Unlock},
      {"StringGetCString", (void*)Bytes},
      {"REALBuildString", (void*)BuildString},
      {"newMemoryBlock", (void*)NewMemoryBlock},
      {"memoryBlockGetPtr", (void*)Bytes},
      {"memoryBlockGetSize", (void*)Size},
      {"REALFSRefFromFolderItem", (void*)FSRefFromFolderItem},
      {"newPicture", (void*)NewPicture},
      {"PluginPictureGetType", (void*)PictureType},
      {"REALLockPictureDescription", (void*)LockDescription},
      {"REALGetPictureMask", (void*)Mask},
  };
  for (size_t i = 0; i < sizeof table / sizeof *table; ++i) {
    if (strcmp(table[i].name, name) == 0) return table[i].function;
  }
  return NULL;
}

// --- Calling the plugin ---

// A handler's form is told by its declaration; these are all that occur here.
typedef int64_t (*IntegerForm)(Object*, int64_t);
typedef int8_t (*BooleanForm)(Object*, int64_t);
typedef uint32_t (*ColorForm)(Object*, int64_t);
typedef Object* (*ObjectForm)(Object*, int64_t);
typedef Object* (*MakeForm)(Object*);
typedef int8_t (*SaveForm)(Object* item, Object* document);

static int64_t Integer(Object* object, const char* name) {
  const REALproperty* property = object->type->properties;
  while (strcmp(property->name, name) != 0) ++property;
  return ((IntegerForm)property->getter)(object, 0);
}

// A method of the object's, or, without one, of FolderItem or a global one.
static REALproc Method(const Object* object, const char* declaration) {
  for (int i = 0; i < (object ? object->type->method_count : method_count); ++i) {
    const REALmethodDefinition* method = object ? &object->type->methods[i] : methods[i];
    if (strcmp(method->declaration, declaration) == 0) return method->handler;
  }
  fprintf(stderr, "no method %s\n", declaration);
  exit(2);
}

// --- Looking at everything ---

static struct {
  uint64_t sum, picture_sum;
  int objects, pictures;
  bool too_large;  // for copies: some image was not looked at
} seen;

static void Mix(uint64_t* sum, uint64_t value) { *sum = (*sum ^ value) * 0x100000001B3u; }

static void MixBytes(const Object* bytes) {
  Mix(&seen.sum, (uint64_t)bytes->size);
  for (int64_t i = 0; i < bytes->size; ++i) Mix(&seen.sum, (uint8_t)bytes->bytes[i]);
}

static void MixPicture(const Object* picture) {  // the same colours give the same sum on both kinds
  ++seen.pictures;
  Mix(&seen.picture_sum, (uint64_t)picture->width << 32 | (uint32_t)picture->height);
  const uint8_t* at = (const uint8_t*)picture->bytes;
  for (int64_t i = 0; i < picture->size / 4; ++i, at += 4) {
    Mix(&seen.picture_sum,
        is_console ? (uint32_t)(at[2] << 16 | at[1] << 8 | at[0]) : (uint32_t)(at[1] << 16 | at[2] << 8 | at[3]));
  }
  if (picture->mask) MixPicture(picture->mask);
}

static void MixInstance(Object* object);

static void MixObject(Object* object) {  // takes the reference
  if (!object) return;
  if (object->type) {
    MixInstance(object);
  } else if (object->platform_object) {
    MixPicture(object);
  } else {
    MixBytes(object);
  }
  Unlock(object);
}

// What a getter gives, or a method with one number.
static void MixResult(const char* type, REALproc handler, Object* object, int64_t argument) {
  const int initial = tolower(type[0]);
  if (initial == 'i') {
    Mix(&seen.sum, (uint64_t)((IntegerForm)handler)(object, argument));
  } else if (initial == 'b') {
    Mix(&seen.sum, (uint64_t)((BooleanForm)handler)(object, argument));
  } else if (initial == 'c') {
    Mix(&seen.sum, ((ColorForm)handler)(object, argument));
  } else {
    MixObject(((ObjectForm)handler)(object, argument));
  }
}

static void MixMethod(Object* object, const REALmethodDefinition* method) {
  const char* result = strstr(method->declaration, " as integer) as ");
  if (result) {
    int64_t last = 0;  // one too many: it raises, or gives nil
    if (strstr(method->declaration, "(index ")) last = Integer(object, "Count");
    if (strstr(method->declaration, "(row ")) last = Integer(object, "Height");
    result += strlen(" as integer) as ");
    for (int64_t at = 0; at <= last; ++at) MixResult(result, method->handler, object, at);
  } else if (!strchr(method->declaration, '(') && strncmp(method->declaration, "Clone ", 6) != 0) {
    MixObject(((MakeForm)method->handler)(object));
  }
}

// Every property, whatever is behind an index, and all that asks for nothing, but clones: they hold the same again.
static void MixInstance(Object* object) {
  const REALclassDefinition* type = object->type;
  ++seen.objects;
  if (strcmp(type->name, "GifPictureZKV") == 0 &&
      Integer(object, "Width") * Integer(object, "Height") > kMostPixels) {
    seen.too_large = true;
    return;
  }
  for (int64_t i = 0; i < type->property_count; ++i) {
    MixResult(type->properties[i].type, type->properties[i].getter, object, 0);
  }
  for (int64_t i = 0; i < type->method_count; ++i) MixMethod(object, &type->methods[i]);
}

// --- The steps ---

static Object* FolderItem(const char* path) {
  char folder[4096] = "", whole[8192];
  const bool is_absolute = *path == '/' || *path == '\\' || (*path && path[1] == ':');
  if (!is_absolute && getcwd(folder, sizeof folder)) strcat(folder, "/");
  snprintf(whole, sizeof whole, "%s%s", folder, path);
  return NewBytes(whole, (int64_t)strlen(whole));
}

static Object* Open(const char* path) {
  Object* item = FolderItem(path);
  Object* document = ((MakeForm)Method(NULL, "OpenAsGIFZKV as GIFZKV"))(item);
  Unlock(item);
  return document;
}

static bool Save(Object* document, const char* path) {
  Object* item = FolderItem(path);
  const bool saved = ((SaveForm)Method(NULL, "SaveAsGIFZKV(data as GIFZKV) as boolean"))(item, document);
  Unlock(item);
  return saved;
}

static Object* ReadAll(const char* path) {
  FILE* file = fopen(path, "rb");
  Object* bytes = NewBytes(NULL, file && fseek(file, 0, SEEK_END) == 0 ? ftell(file) : 0);
  if (!file) return bytes;
  rewind(file);
  bytes->size = (int64_t)fread(bytes->bytes, 1, (size_t)bytes->size, file);
  fclose(file);
  return bytes;
}

static void Look(const char* step, Object* document) {
  memset(&seen, 0, sizeof seen);
  raised = 0;
  MixObject(Lock(document));
  printf("  %-6s  %016" PRIx64 "  pictures %016" PRIx64, step, seen.sum, seen.picture_sum);
  printf("  %d objects, %d pictures, raised %d times", seen.objects, seen.pictures, raised);
}

// What must hold the same as the document that was opened. Takes the reference.
static void LookAgain(const char* step, Object* copy, uint64_t expected) {
  Look(step, copy);
  printf(": %s\n", seen.sum == expected ? "same" : "differs");
  Unlock(copy);
}

static void Try(const char* path, const char* copy) {
  const int before = alive;
  Object* document = Open(path);
  printf("%s\n", path);
  Look("open", document);
  printf(seen.too_large ? ", too large for copies\n" : "\n");
  if (document && !seen.too_large) {
    const uint64_t sum = seen.sum;
    LookAgain("clone", ((MakeForm)Method(document, "Clone as GIFZKV"))(document), sum);
    const bool saved = Save(document, copy);
    LookAgain("copy", saved ? Open(copy) : NULL, sum);
    Object* string = ReadAll(copy);
    LookAgain("string", ((MakeForm)Method(NULL, "GifStringToGifZKV(data as string) as GIFZKV"))(string), sum);
    seen.sum = 0;
    MixBytes(string);
    printf("  saved   %016" PRIx64 "  %" PRId64 " bytes\n", seen.sum, string->size);
    Unlock(string);
    remove(copy);
  }
  Unlock(document);
  faults += alive != before;
  if (alive != before) printf("  %d objects are left\n", alive - before);
}

// --- The program ---

static void TryAll(const char* list, const char* copy) {
  char path[4096];
  FILE* file = fopen(list, "rb");
  faults += !file;
  while (file && fgets(path, sizeof path, file)) {
    path[strcspn(path, "\r\n")] = 0;
    if (*path) Try(path, copy);
  }
  if (file) fclose(file);
}

int main(int count, char** arguments) {
  is_console = count > 1 && strcmp(arguments[1], "--console") == 0;
  char** at = arguments + 1 + is_console;
  if (arguments + count - at < 3) {
    fprintf(stderr, "usage: host [--console] PLUGIN COPY.gif IN.gif...\n");
    return 64;
  }
  const Entry entry = LoadEntry(at[0]);
  if (!entry) {
    fprintf(stderr, "%s cannot be loaded\n", at[0]);
    return 2;
  }
  entry(Resolve);
  printf("%d classes, %d methods, %s\n", class_count, method_count, is_console ? "console" : "desktop");
  const char* copy = at[1];
  for (at += 2; *at; ++at) {
    if (**at == '@') {
      TryAll(*at + 1, copy);
    } else {
      Try(*at, copy);
    }
  }
  return faults > 0;
}
