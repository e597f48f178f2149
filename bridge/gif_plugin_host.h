#pragma once

// What a host and the GIF plugin share: plain C records, and the forms in which the two call each other. For C from
// C11 on and for C++.
//
// This is the one file to replace when the plugin is built for a host with another layout. It holds no functions.
// 64-bit, little-endian, natural alignment, C calling convention; the sizes are checked below.
//
// The plugin is a shared library with one exported function. The host calls it once, before anything else:
//
//   void REALPluginMain(REALresolver resolver);
//
// Through the resolver the plugin finds the host's functions by their names; docs/host-interface.md lists them. It
// hands over the records below, which stay where they are for the life of the process, and the host calls what they
// point at:
//
//   property getter   value  (*)(object, int64 parameter)
//   property setter   void   (*)(object, int64 parameter, value)
//   method            result (*)(object, declared parameters...)
//   method setter     void   (*)(object, declared parameters..., value)
//   destructor        void   (*)(object)
//   extension method  result (*)(extended object, declared parameters...)
//   global method     result (*)(declared parameters...)
//
// Integer is int64_t, Boolean int8_t, Color uint32_t (0x00RRGGBB); every other type is a handle, null for nil.
//
// No licence has been granted to anyone yet: all rights are reserved.

#include <assert.h>
#include <stddef.h>
#include <stdint.h>

#include "platform/host_platform.h"

// Handles: opaque, owned and reference counted by the host.
typedef struct REALobjectStruct REALobjectStruct;
typedef struct REALstringStruct REALstringStruct;
typedef struct REALmemoryBlockStruct REALmemoryBlockStruct;
typedef struct REALpictureStruct REALpictureStruct;
typedef struct REALfolderItemStruct REALfolderItemStruct;

#if defined(__cplusplus)
extern "C" {
#endif

// A function of a form that only the text beside it (declaration or type name) tells.
typedef void (*REALproc)(void);

// Gives a host function's address by its name, or null when the host has no function of that name.
typedef void* (*REALresolver)(const char* name);

#if defined(__cplusplus)
}
#endif

enum {
  kClassRecordVersion = 13,  // of the records below, as a current host takes it
  // Flags of classes, properties and methods.
  kEverywhere = 4,     // console and web hosts offer it, too
  kModuleMethod = 16,  // on every method of a module
};

typedef struct REALproperty {
  void* reserved_first;  // always null
  const char* name;      // as scripts write it
  const char* type;      // "Integer", "Boolean", "String", "Memoryblock", or a class
  uint32_t flags;        // 4
  REALproc getter;
  REALproc setter;      // null: read-only
  int64_t parameter;    // handed to getter and setter; 0 throughout
  void* reserved_last;  // always null
} REALproperty;

typedef struct REALmethodDefinition {
  REALproc handler;
  REALproc setter;          // called for `object.Name(arguments) = value`; null when that is not allowed
  const char* declaration;  // "Name(parameter as Type, ...) as Type"; in a module "Name(extends ref as Class, ...)"
  uint32_t flags;           // 4, or 0 for what this kind of host is not to offer; 16 more in a module
  int64_t reserved_first;   // always 0
  int64_t reserved_last;    // always 0
} REALmethodDefinition;

// A class of the plugin's, or ("PluginRegisterClassExtension") methods for a class that the host has.
typedef struct REALclassDefinition {
  uint32_t version;  // of this record, 9 to 13; it says nothing about the layout
  const char* name;
  const char* superclass;   // null
  int64_t instance_size;    // bytes of instance data, zeros when an instance is made
  int64_t instance_offset;  // written by the host at registration: instance data = object address + this
  REALproc constructor;     // null: nothing is called
  REALproc destructor;      // called when the last reference goes, the instance still whole; null: nothing is called
  REALproperty* properties;
  int64_t property_count;
  REALmethodDefinition* methods;
  int64_t method_count;
  uint32_t flags;             // 4
  REALproperty* properties2;  // more properties; null
  int64_t property_count2;
  REALmethodDefinition* methods2;  // more methods; null
  int64_t method_count2;
} REALclassDefinition;

// Methods that are found without an object (flag 16), extension methods among them.
typedef struct REALmoduleDefinition {
  uint32_t version;  // as of a class
  const char* name;
  REALmethodDefinition* methods;
  int64_t method_count;
} REALmoduleDefinition;

// What "REALLockPictureDescription" fills in. It holds until "unlockPictureDescription".
typedef struct REALpictureDescription {
  uint32_t kind;          // one of the kinds below
  void* platform_object;  // kind 8: a CGContextRef; kind 10: a REALgdImage
  int32_t width;          // pixels
  int32_t height;         // pixels
  uint8_t reserved[8];    // not looked at
} REALpictureDescription;

enum {
  kPictureKindCGBitmapContext = 8,  // desktop hosts
  kPictureKindGDImage = 10,         // console and web hosts
};

// The beginning of libgd's record of an image; the plugin reads no more of it.
typedef struct REALgdImage {
  uint8_t** pixels;          // rows of an image with a palette; null in a true-colour one, as the plugin wants it
  int sx;                    // width in pixels
  int sy;                    // height in pixels
  int palette[4 * 256 + 2];  // not looked at, like all that follows to `trueColor`
  int* poly_ints;
  int poly_allocated;
  struct REALgdImage* brush;
  struct REALgdImage* tile;
  int brush_and_tile[2 * 256];
  int style_length;
  int style_position;
  int* style;
  int interlace;
  int thick;
  int alpha[256];
  int trueColor;  // not 0
  int** tpixels;  // `sy` rows of `sx` pixels, 0xAARRGGBB with an alpha of 0 for opaque
} REALgdImage;

static_assert(sizeof(void*) == 8, "the records are laid out for 64-bit hosts");
static_assert(sizeof(REALproperty) == 64 && offsetof(REALproperty, getter) == 32, "property");
static_assert(sizeof(REALmethodDefinition) == 48 && offsetof(REALmethodDefinition, flags) == 24, "method");
static_assert(sizeof(REALclassDefinition) == 128 && offsetof(REALclassDefinition, flags) == 88, "class");
static_assert(sizeof(REALmoduleDefinition) == 32 && offsetof(REALmoduleDefinition, methods) == 16, "module");
static_assert(sizeof(REALpictureDescription) == 32 && offsetof(REALpictureDescription, width) == 16, "picture");
