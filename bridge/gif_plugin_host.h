#pragma once

// The plain C records that the plugin and a host share, and the forms in which they call each other.
//
// This is the one file to replace when the plugin is built for a host with another layout. It holds no
// functions. 64-bit, little-endian, natural alignment, C calling convention; the sizes are checked below.
//
// Handler forms (what a `REALproc` really points at; Integer is int64, Boolean int8, color uint32, every
// other type a handle):
//
//   property getter   value  (*)(object, int64 parameter)
//   property setter   void   (*)(object, int64 parameter, value)
//   method            result (*)(object, declared parameters...)
//   method setter     void   (*)(object, declared parameters..., value)
//   destructor        void   (*)(object)
//   extension method  result (*)(extended object, declared parameters...)
//   global method     result (*)(declared parameters...)

#include <cstddef>
#include <cstdint>

// Handles: opaque, owned and reference counted by the host.
struct REALobjectStruct;
struct REALstringStruct;
struct REALmemoryBlockStruct;
struct REALpictureStruct;
struct REALfolderItemStruct;

// A function of a form that only the text beside it (declaration or type name) tells.
using REALproc = void (*)();

// Gives a host function's address by its name, or null when the host has no function of that name.
using REALresolver = void* (*)(const char* name);

// Flags of classes, properties and methods.
constexpr uint32_t kEverywhere = 4;     // console and web hosts offer it, too
constexpr uint32_t kModuleMethod = 16;  // on every method of a module

// Markers in the plugin's own tables, which no host gets to see: hosts that have pictures everywhere get the flag in
// their place, older ones nothing. No table has the second.
constexpr uint32_t kPictureMember = 0x40000;
constexpr uint32_t kOtherMarker = 0x80000, kOtherMarked = 8;

// The version of the records below that a current host takes.
constexpr uint32_t kClassRecordVersion = 13;

struct REALproperty {
  void* reserved_first;  // always null
  const char* name;
  const char* type;
  uint32_t flags;
  REALproc getter;
  REALproc setter;      // null: read-only
  int64_t parameter;    // handed to getter and setter; 0 throughout
  void* reserved_last;  // always null
};

struct REALmethodDefinition {
  REALproc handler;
  REALproc setter;  // called for `object.Name(arguments) = value`; null when that is not allowed
  const char* declaration;
  uint32_t flags;
  int64_t reserved_first;  // always 0
  int64_t reserved_last;   // always 0
};

struct REALclassDefinition {
  uint32_t version;
  const char* name;
  const char* superclass;
  int64_t instance_size;    // bytes of instance data
  int64_t instance_offset;  // written by the host at registration: instance data = object address + this
  REALproc constructor;
  REALproc destructor;
  REALproperty* properties;
  int64_t property_count;
  REALmethodDefinition* methods;
  int64_t method_count;
  uint32_t flags;
  REALproperty* properties2;
  int64_t property_count2;
  REALmethodDefinition* methods2;
  int64_t method_count2;
};

struct REALmoduleDefinition {
  uint32_t version;
  const char* name;
  REALmethodDefinition* methods;
  int64_t method_count;
};

// What "REALLockPictureDescription" fills in.
struct REALpictureDescription {
  uint32_t kind;          // one of the kinds below
  void* platform_object;  // kind 8: a CGContextRef; kind 10: libgd's gdImage
  int32_t width;          // pixels
  int32_t height;         // pixels
  uint8_t reserved[8];
};

constexpr int32_t kPictureKindCGBitmapContext = 8;
constexpr int32_t kPictureKindGDImage = 10;

// A file-system reference where the platform has none of its own: a NUL-terminated absolute path in UTF-8.
struct FSRef {
  char path[4096];
};

// A leaf name in UTF-16 units, not terminated.
struct HFSUniStr255 {
  uint16_t length;
  uint16_t unicode[255];
};

static_assert(sizeof(void*) == 8, "the records are laid out for 64-bit hosts");
static_assert(sizeof(REALproperty) == 64 && offsetof(REALproperty, getter) == 32);
static_assert(sizeof(REALmethodDefinition) == 48 && offsetof(REALmethodDefinition, flags) == 24);
static_assert(sizeof(REALclassDefinition) == 128 && offsetof(REALclassDefinition, flags) == 88);
static_assert(sizeof(REALmoduleDefinition) == 32);
static_assert(sizeof(REALpictureDescription) == 32 && offsetof(REALpictureDescription, width) == 16);
static_assert(sizeof(FSRef) == 4096 && sizeof(HFSUniStr255) == 512);
