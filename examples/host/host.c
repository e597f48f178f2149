// A little host for the GIF plugin, whole in one file: loads the plugin, offers what it needs, and does with each GIF
// what scripts do: opens it, walks everything in it, renders pictures and masks, clones, saves, opens again. Prints a
// line of facts and a checksum for each step; on every system the same.
//
//   host [--console] [--save FILE] PLUGIN GIF...      a GIF @FILE stands for the names in FILE, one a line, in UTF-8
//
// Status 0 when all steps were done (a file that is no GIF counts as such), 1 when something stayed alive or a clone
// or copy differs, 2 when the plugin cannot be loaded, 64 for wrong usage.
//
// No licence has been granted to anyone yet: all rights are reserved.

#include <inttypes.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "gif_plugin_host.h"

#if defined(_WIN32)
#include <direct.h>
#include <windows.h>
#define getcwd _getcwd
#else
#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

// --- What handles point at
// --------------------------------------------------------------------------------------------

// One record for all kinds of handles. An instance of the plugin's classes has its data behind the record.
typedef struct Object {
  int64_t references;
  REALclassDefinition* type;  // of an instance; else null
  char* bytes;                // of a string or MemoryBlock; a FolderItem's path; a picture's pixels, 4 bytes each
  int64_t size;               // of a string or MemoryBlock
  int32_t width, height;      // of a picture
  struct Object* other;       // a picture's mask, a drawing surface's picture
  void* platform_object;      // of a picture
} Object;

#define HANDLE(type, object) ((REAL##type##Struct*)(void*)(object))

static int64_t alive, raised, faults;
static bool is_console;

static Object* New(size_t data) {
  Object* made = calloc(1, sizeof(Object) + data);
  if (!made) abort();
  made->references = 1;
  ++alive;
  return made;
}

static void Lock(Object* object) {
  if (object) ++object->references;
}

#if defined(__APPLE__)
static void FreePlatformObject(Object* picture) {
  if (!is_console) CGContextRelease(picture->platform_object);
  if (is_console) free(picture->platform_object);
}
#else
static void FreePlatformObject(Object* picture) { free(picture->platform_object); }
#endif

static void Unlock(Object* object) {
  if (!object || --object->references > 0) return;
  if (object->type && object->type->destructor) {
    object->references = 1;  // it may still be looked at
    ((void (*)(Object*))object->type->destructor)(object);
  }
  Unlock(object->other);
  if (object->platform_object) FreePlatformObject(object);
  free(object->bytes);
  free(object);
  --alive;
}

static Object* NewBytes(const void* bytes, int64_t size) {
  Object* made = New(0);
  made->size = size;
  made->bytes = calloc((size_t)size + 1, 1);
  if (!made->bytes) abort();
  if (bytes) memcpy(made->bytes, bytes, (size_t)size);
  return made;
}

// --- What the plugin registers
// ----------------------------------------------------------------------------------------

static REALclassDefinition* classes[16];
static REALmethodDefinition* methods[16];  // of FolderItem, and global ones
static size_t class_count, method_count;

static void RegisterClass_(REALclassDefinition* definition) {
  definition->instance_offset = sizeof(Object);
  if (class_count < 16) classes[class_count++] = definition;
}

static void RegisterMethod(REALmethodDefinition* method) {
  if (method_count < 16) methods[method_count++] = method;
}

static void RegisterClassExtension(REALclassDefinition* definition) {
  for (int64_t i = 0; i < definition->method_count; ++i) RegisterMethod(&definition->methods[i]);
}

static double HostVersion(void) { return 3000.0; }  // methods come one by one, not in modules

static Object* NewInstance(const char* name) {
  for (size_t i = 0; i < class_count; ++i) {
    if (strcmp(classes[i]->name, name) != 0) continue;
    Object* made = New((size_t)classes[i]->instance_size);
    made->type = classes[i];
    return made;
  }
  return New(0);  // an exception
}

static void Raise(Object* exception) {  // the plugin keeps its reference, and gives it back itself
  (void)exception;
  ++raised;
}

// --- Strings, MemoryBlocks, files
// -------------------------------------------------------------------------------------

static char* Bytes(Object* object) { return object->bytes; }
static int64_t Size(Object* object) { return object->size; }
static Object* BuildString(const char* bytes, int32_t length) { return NewBytes(bytes, length); }
static Object* NewMemoryBlock(int32_t size) { return size < 0 ? NULL : NewBytes(NULL, size); }
static void SetEncoding(Object* string, uint32_t encoding) { (void)string, (void)encoding; }

static Object* Converted(Object* string, uint32_t encoding) {
  (void)encoding;
  Lock(string);
  return string;
}

// The units of UTF-8 text; -1 when there are more than `room`, or a byte is none of UTF-8.
static int ToUtf16(const char* text, uint16_t* units, int room) {
  int count = 0;
  for (const unsigned char* at = (const unsigned char*)text; *at;) {
    const int more = *at < 0x80 ? 0 : *at < 0xC0 ? -1 : *at < 0xE0 ? 1 : *at < 0xF0 ? 2 : 3;
    uint32_t point = more > 0 ? *at & (0x3F >> more) : *at;
    if (more < 0 || count + (more == 3) >= room) return -1;
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

// Fills in the platform's reference; false when nothing has that name.
#if defined(__APPLE__)
static bool Refer(const char* path, FSRef* reference) {
  CFURLRef url = CFURLCreateFromFileSystemRepresentation(NULL, (const uint8_t*)path, (CFIndex)strlen(path), false);
  const bool found = url && CFURLGetFSRef(url, reference);
  if (url) CFRelease(url);
  return found;
}
#else
static bool Refer(const char* path, FSRef* reference) {
  if (strlen(path) >= sizeof reference->path) return false;
  strcpy(reference->path, path);
#if defined(_WIN32)
  uint16_t wide[sizeof reference->path + 1] = {0};
  return ToUtf16(path, wide, sizeof reference->path) >= 0 &&
         GetFileAttributesW((const wchar_t*)wide) != INVALID_FILE_ATTRIBUTES;
#else
  struct stat status;
  return stat(path, &status) == 0;
#endif
}
#endif

// Without a name the item itself; with one the folder around it, and the item's name.
static int8_t FSRefFromFolderItem(Object* item, FSRef* reference, HFSUniStr255* name) {
  if (!name) return Refer(item->bytes, reference);
  char* leaf = strrchr(item->bytes, '/');
  if (!leaf) return false;
  const int units = ToUtf16(leaf + 1, name->unicode, 255);
  if (units < 0) return false;
  name->length = (uint16_t)units;
  *leaf = 0;
  const bool found = Refer(leaf == item->bytes ? "/" : item->bytes, reference);
  *leaf = '/';
  return found;
}

// --- Pictures
// ---------------------------------------------------------------------------------------------------------

static void* NewPlatformObject(Object* picture) {
  const size_t width = (size_t)picture->width, height = (size_t)picture->height;
  if (is_console) {  // the rows' addresses stand behind the image
    REALgdImage* image = calloc(1, sizeof *image + height * sizeof(int*));
    if (!image) abort();
    image->sx = picture->width;
    image->sy = picture->height;
    image->trueColor = 1;
    image->tpixels = (int**)(void*)(image + 1);
    for (size_t y = 0; y < height; ++y) image->tpixels[y] = (int*)(void*)picture->bytes + y * width;
    return image;
  }
#if defined(__APPLE__)
  CGColorSpaceRef space = CGColorSpaceCreateDeviceRGB();
  CGContextRef context =
      CGBitmapContextCreate(picture->bytes, width, height, 8, width * 4, space, kCGImageAlphaPremultipliedFirst);
  CGColorSpaceRelease(space);
#else
  CGContext* context = calloc(1, sizeof *context);
  if (context) *context = (CGContext){picture->bytes, width, height, width * 4, 32, 2};
#endif
  if (!context) abort();
  return context;
}

static Object* NewPicture(int32_t width, int32_t height, int32_t depth) {
  if (width < 1 || height < 1 || depth != 32) return NULL;
  Object* made = NewBytes(NULL, (int64_t)width * height * 4);
  made->width = width;
  made->height = height;
  made->platform_object = NewPlatformObject(made);
  return made;
}

static int8_t LockDescription(Object* picture, REALpictureDescription* description, int32_t kind) {
  const int32_t own = is_console ? kPictureKindGDImage : kPictureKindCGBitmapContext;
  if (kind != own) return false;
  *description = (REALpictureDescription){.kind = (uint32_t)kind,
                                          .platform_object = picture->platform_object,
                                          .width = picture->width,
                                          .height = picture->height};
  return true;
}

static int64_t PictureType(Object* picture) { return (void)picture, 2; }
static void Nothing(Object* object) { (void)object; }

static Object* Mask(Object* picture, int32_t create) {
  if (!picture->other && create) picture->other = NewPicture(picture->width, picture->height, 32);
  Lock(picture->other);
  return picture->other;
}

static Object* Surface(Object* picture) {
  Object* made = New(0);
  Lock(picture);
  made->other = picture;
  return made;
}

static void DrawPicture(Object* surface,
                        Object* picture) {  // as large as the surface, all of it: nothing else is asked
  if (surface->other->size == picture->size) memcpy(surface->other->bytes, picture->bytes, (size_t)picture->size);
}

static void* ObjectMethod(Object* object, const char* declaration) {
  (void)object;
  return strncmp(declaration, "DrawPicture(", 12) == 0 ? (void*)DrawPicture : NULL;
}

static void* GlobalMethod(const char* module, const char* declaration) {
  return !module && strcmp(declaration, "LenB( s as string ) as integer") == 0 ? (void*)Size : NULL;
}

static void* ClassReference(const char* name) {
  return strcmp(name, is_console ? "ConsoleApplication" : "Application") == 0 ? &class_count : NULL;
}

static void* Resolve(const char* name) {
  static const struct {
    const char* name;
    void* function;
  } table[] = {
      {"REALGetRBVersion", (void*)HostVersion},
      {"PluginRegisterClass", (void*)RegisterClass_},
      {"PluginRegisterClassExtension", (void*)RegisterClassExtension},
      {"PluginRegisterMethod", (void*)RegisterMethod},
      {"PluginNewInstance", (void*)NewInstance},
      {"REALLockObject", (void*)Lock},
      {"REALUnlockObject", (void*)Unlock},
      {"REALLoadObjectMethod", (void*)ObjectMethod},
      {"REALLoadGlobalMethod", (void*)GlobalMethod},
      {"pluginObjectType", (void*)ClassReference},
      {"RuntimeRaiseException", (void*)Raise},
      {"REALLockString", (void*)Lock},
      {"REALUnlockString", (void*)Unlock},
      {"StringGetCString", (void*)Bytes},
      {"REALBuildString", (void*)BuildString},
      {"REALSetStringEncoding", (void*)SetEncoding},
      {"REALConvertString", (void*)Converted},
      {"newMemoryBlock", (void*)NewMemoryBlock},
      {"memoryBlockGetPtr", (void*)Bytes},
      {"memoryBlockGetSize", (void*)Size},
      {"REALFSRefFromFolderItem", (void*)FSRefFromFolderItem},
      {"newPicture", (void*)NewPicture},
      {"PluginPictureGetType", (void*)PictureType},
      {"REALLockPictureDescription", (void*)LockDescription},
      {"unlockPictureDescription", (void*)Nothing},
      {"REALPictureClearCache", (void*)Nothing},
      {"REALGetPictureMask", (void*)Mask},
      {"pluginPictureGraphicsGetter", (void*)Surface},
  };
  for (size_t i = 0; i < sizeof table / sizeof *table; ++i) {
    if (strcmp(table[i].name, name) == 0) return table[i].function;
  }
  return NULL;
}

// --- Calling the plugin
// -----------------------------------------------------------------------------------------------

static REALproc Getter(const Object* object, const char* name) {
  for (int64_t i = 0; i < object->type->property_count; ++i) {
    if (strcmp(object->type->properties[i].name, name) == 0) return object->type->properties[i].getter;
  }
  fprintf(stderr, "%s has no property %s\n", object->type->name, name);
  exit(2);
}

static REALproc Handler(const Object* object, const char* declaration) {
  const int64_t count = object ? object->type->method_count : (int64_t)method_count;
  for (int64_t i = 0; i < count; ++i) {
    const REALmethodDefinition* method = object ? &object->type->methods[i] : methods[i];
    if (strcmp(method->declaration, declaration) == 0) return method->handler;
  }
  fprintf(stderr, "no method %s\n", declaration);
  exit(2);
}

static int64_t Integer(Object* object, const char* name) {
  return ((int64_t(*)(Object*, int64_t))Getter(object, name))(object, 0);
}
static int64_t Boolean_(Object* object, const char* name) {
  return ((int8_t(*)(Object*, int64_t))Getter(object, name))(object, 0);
}
static Object* Child(Object* object, const char* name) {
  return ((Object * (*)(Object*, int64_t)) Getter(object, name))(object, 0);
}
static Object* At(Object* object, const char* declaration, int64_t index) {
  return ((Object * (*)(Object*, int64_t)) Handler(object, declaration))(object, index);
}
static Object* Call(Object* object, const char* declaration) {
  return ((Object * (*)(Object*)) Handler(object, declaration))(object);
}

// --- Walking, with a checksum of all that is seen
// ---------------------------------------------------------------------

static const int64_t kMostPixels = 1 << 26;  // of larger images some rows are looked at, and no picture is made

static uint64_t sum;
static struct { int64_t images, extensions, pixels; } seen;

static void Mix(uint64_t value) { sum = (sum ^ value) * 0x100000001B3u; }

static void MixBytes(Object* bytes) {  // takes the reference
  Mix(bytes ? (uint64_t)bytes->size + 1 : 0);
  for (int64_t i = 0; bytes && i < bytes->size; ++i) Mix((uint8_t)bytes->bytes[i]);
  Unlock(bytes);
}

static void MixIntegers(Object* object, const char* const* names) {
  for (; *names; ++names) Mix((uint64_t)Integer(object, *names));
}

static void WalkPalette(Object* palette) {  // takes the reference, like those below
  const int64_t count = palette ? Integer(palette, "Count") : -1;
  Mix((uint64_t)count);
  for (int64_t i = 0; i < count; ++i) {
    Mix(((uint32_t(*)(Object*, int64_t))Handler(palette, "Value(index as integer) as color"))(palette, i));
  }
  Unlock(palette);
}

static void WalkScreen(Object* screen) {
  static const char* const names[] = {"Width",  "Height", "ColorResolution", "PaletteDepth", "BackgroundColor",
                                      "Aspect", 0};
  if (!screen) return;
  MixIntegers(screen, names);
  Mix((uint64_t)(2 * Boolean_(screen, "HasPalette") + Boolean_(screen, "Sorted")));
  WalkPalette(Child(screen, "Palette"));
  Unlock(screen);
}

static void WalkImage(Object* image) {
  static const char* const names[] = {"Left", "Top", "Width", "Height", "PaletteDepth", 0};
  if (!image) return;
  const int64_t height = Integer(image, "Height"), pixels = Integer(image, "Width") * height;
  ++seen.images;
  seen.pixels += pixels;
  MixIntegers(image, names);
  Mix((uint64_t)(4 * Boolean_(image, "HasPalette") + 2 * Boolean_(image, "Sorted") + Boolean_(image, "Interlace")));
  WalkPalette(Child(image, "Palette"));
  if (pixels <= kMostPixels) MixBytes(Child(image, "Data"));
  for (int64_t row = 0; row <= height;
       row += pixels <= kMostPixels ? 1 : height / 64 + 1) {  // one too many gives nil
    MixBytes(At(image, "PixelData(row as integer) as memoryblock", row));
  }
  Unlock(image);
}

static void WalkExtension(Object* extension) {
  if (!extension) return;
  const int64_t count = Integer(extension, "Count");
  ++seen.extensions;
  Mix((uint64_t)(Integer(extension, "Marker") << 32 | count));
  for (int64_t i = 0; i <= count; ++i) {  // one too many raises
    Object* data = At(extension, "Data(index as integer) as GifDataZKV", i);
    if (!data) continue;
    Mix((uint64_t)Integer(data, "Length"));
    MixBytes(Child(data, "DataString"));
    MixBytes(Child(data, "DataMemory"));
    Unlock(data);
  }
  Unlock(extension);
}

static uint64_t Walk(Object* document) {
  sum = 0xCBF29CE484222325u;
  memset(&seen, 0, sizeof seen);
  MixBytes(Child(document, "Header"));
  WalkScreen(Child(document, "Screen"));
  for (int64_t i = 0, count = Integer(document, "Count"); i < count; ++i) {
    Object* block = At(document, "Block(index as integer) as GifBlockZKV", i);
    Mix((uint64_t)Integer(block, "Intro"));
    WalkImage(Child(block, "Picture"));
    WalkExtension(Child(block, "Extension"));
    Unlock(block);
  }
  return sum;
}

// --- The steps
// --------------------------------------------------------------------------------------------------------

static bool MixPicture(Object* picture) {  // takes the reference; the same colours give the same sum on both kinds
  const bool made = picture != NULL;
  Mix(made ? (uint64_t)picture->width << 32 | (uint32_t)picture->height : 0);
  const uint8_t* at = made ? (const uint8_t*)picture->bytes : NULL;
  for (int64_t i = 0; made && i < picture->size / 4; ++i, at += 4) {
    Mix(is_console ? (uint32_t)(at[2] << 16 | at[1] << 8 | at[0]) : (uint32_t)(at[1] << 16 | at[2] << 8 | at[3]));
  }
  if (made && picture->other) {
    Lock(picture->other);
    MixPicture(picture->other);
  }
  Unlock(picture);
  return made;
}

static void Render(Object* document) {
  int made = 0;
  sum = 0;
  for (int64_t i = 0, count = Integer(document, "Count"); i < count; ++i) {
    Object* block = At(document, "Block(index as integer) as GifBlockZKV", i);
    Object* image = Child(block, "Picture");
    if (image && Integer(image, "Width") * Integer(image, "Height") <= kMostPixels) {
      made += MixPicture(Call(image, "MakePicture as picture")) + MixPicture(Call(image, "MakeMask as picture"));
    }
    Unlock(image);
    Unlock(block);
  }
  printf("  render  %016" PRIx64 "  pictures=%d\n", sum, made);
  sum = 0;
  const bool first = seen.pixels <= kMostPixels && MixPicture(Call(document, "MakeFirstPictureWithMask as picture"));
  printf("  first   %016" PRIx64 "  picture=%d\n", sum, first);
}

static Object* FolderItem(const char* path) {  // an absolute one
  char folder[4096] = "", whole[8192];
  const bool is_absolute = *path == '/' || *path == '\\' || path[1] == ':';
  if (!is_absolute && getcwd(folder, sizeof folder)) strcat(folder, "/");
  snprintf(whole, sizeof whole, "%s%s", folder, path);
  return NewBytes(whole, (int64_t)strlen(whole));
}

static Object* Open(const char* path) {
  Object* item = FolderItem(path);
  Object* document = ((Object * (*)(Object*)) Handler(NULL, "OpenAsGIFZKV as GIFZKV"))(item);
  Unlock(item);
  return document;
}

static void WalkAnew(const char* step, Object* document, uint64_t expected) {  // takes the reference
  if (document) Walk(document);
  printf("  %s  %016" PRIx64 "  %s\n", step, sum, !document ? "nil" : sum == expected ? "same" : "differs");
  Unlock(document);
}

static void Save(Object* document, const char* path, uint64_t expected) {
  Object* item = FolderItem(path);
  const bool saved =
      ((int8_t(*)(Object*, Object*))Handler(NULL, "SaveAsGIFZKV(data as GIFZKV) as boolean"))(item, document);
  Unlock(item);
  Object* again = saved ? Open(path) : NULL;
  WalkAnew("reopen", again, expected);

  sum = 0;
  FILE* file = saved ? fopen(path, "rb") : NULL;
  if (file) fseek(file, 0, SEEK_END);
  Object* bytes = NewBytes(NULL, file ? ftell(file) : 0);
  if (file) rewind(file);
  if (file) bytes->size = (int64_t)fread(bytes->bytes, 1, (size_t)bytes->size, file);
  if (file) fclose(file);
  remove(path);
  const int64_t size = bytes->size;
  for (int64_t i = 0; i < size; ++i) Mix((uint8_t)bytes->bytes[i]);
  printf("  save    %016" PRIx64 "  bytes=%" PRId64 "\n", sum, size);
  WalkAnew("string", ((Object * (*)(Object*)) Handler(NULL, "GifStringToGifZKV(data as string) as GIFZKV"))(bytes),
           expected);
  Unlock(bytes);
}

static void Try(const char* path, const char* saved) {
  const int64_t before = alive;
  printf("%s\n", path);
  raised = 0;
  Object* document = Open(path);
  if (!document) {
    printf("  open    nil\n");
    return;
  }
  const uint64_t walked = Walk(document);
  printf("  open    %016" PRIx64 "  blocks=%" PRId64 " images=%" PRId64 " extensions=%" PRId64 " pixels=%" PRId64
         " raised=%" PRId64 "\n",
         walked, Integer(document, "Count"), seen.images, seen.extensions, seen.pixels, raised);
  Render(document);
  WalkAnew("clone ", Call(document, "Clone as GIFZKV"), walked);
  Save(document, saved, walked);
  Unlock(document);
  if (alive != before) printf("  alive   %" PRId64 "\n", alive - before);
  faults += alive != before;
}

// --- The program
// ------------------------------------------------------------------------------------------------------

static void* LoadEntry(const char* file) {
#if defined(_WIN32)
  HMODULE library = LoadLibraryA(file);
  return library ? (void*)GetProcAddress(library, "REALPluginMain") : NULL;
#else
  void* library = dlopen(file, RTLD_NOW | RTLD_LOCAL);
  if (!library) fprintf(stderr, "%s\n", dlerror());
  return library ? dlsym(library, "REALPluginMain") : NULL;
#endif
}

static void TryAll(const char* list, const char* saved) {
  char path[8192];
  FILE* file = fopen(list, "rb");
  if (!file) ++faults;
  while (file && fgets(path, sizeof path, file)) {
    path[strcspn(path, "\r\n")] = 0;
    if (*path) Try(path, saved);
  }
  if (file) fclose(file);
}

int main(int count, char** arguments) {
  const char* saved = "host-saved.gif";
  int at = 1;
  for (; at < count && arguments[at][0] == '-'; ++at) {
    if (strcmp(arguments[at], "--console") == 0) {
      is_console = true;
    } else if (strcmp(arguments[at], "--save") == 0 && at + 1 < count) {
      saved = arguments[++at];
    } else {
      at = count;
    }
  }
  if (at + 1 >= count) {
    fprintf(stderr, "usage: host [--console] [--save FILE] PLUGIN GIF...\n");
    return 64;
  }
  void* entry = LoadEntry(arguments[at]);
  if (!entry) {
    fprintf(stderr, "%s cannot be loaded\n", arguments[at]);
    return 2;
  }
  ((void (*)(REALresolver))entry)(Resolve);
  printf("%zu classes, %zu methods, %s\n", class_count, method_count, is_console ? "console" : "desktop");
  for (++at; at < count; ++at) {
    if (arguments[at][0] == '@') {
      TryAll(arguments[at] + 1, saved);
    } else {
      Try(arguments[at], saved);
    }
  }
  return faults > 0;
}
