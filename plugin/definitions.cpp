#include "plugin/definitions.h"

#include <type_traits>

#include "classes/block_class.h"
#include "classes/data_class.h"
#include "classes/document_class.h"
#include "classes/extension_class.h"
#include "classes/palette_class.h"
#include "classes/picture_class.h"
#include "classes/screen_class.h"
#include "entry/open.h"
#include "entry/picture_methods.h"
#include "entry/save.h"

// --- Rows ---------------------------------------------------------------------------------------------------------

// A type name as scripts read it, tied to the form in which values of it cross the boundary.
template <typename Value>
struct ValueType {
  const char* name;
};
constexpr ValueType<HostInteger> kInteger = {"Integer"};
constexpr ValueType<HostBoolean> kBoolean = {"Boolean"};
constexpr ValueType<REALstringStruct*> kString = {"String"};
constexpr ValueType<REALmemoryBlockStruct*> kMemoryblock = {"Memoryblock"};
constexpr ValueType<REALobjectStruct*> Object(const char* class_name) { return {class_name}; }

template <typename Function>
static REALproc Handler(Function* function) {
  return reinterpret_cast<REALproc>(function);
}

template <typename Value>
static REALproperty Property(const char* name, ValueType<Value> type, Value (*getter)(REALobjectStruct*, int64_t),
                             void (*setter)(REALobjectStruct*, int64_t, std::type_identity_t<Value>) = nullptr) {
  return {nullptr, name, type.name, kEverywhere, Handler(getter), Handler(setter), 0, nullptr};
}

template <typename Function>
static REALmethodDefinition Method(const char* declaration, Function* handler, uint32_t flags = kEverywhere) {
  return {Handler(handler), nullptr, declaration, flags, 0, 0};
}

// A method that scripts may also assign to: `p.Red(i) = v`.
template <typename Value>
static REALmethodDefinition AssignableMethod(const char* declaration, Value (*handler)(REALobjectStruct*, int64_t),
                                             void (*setter)(REALobjectStruct*, int64_t, Value)) {
  return {Handler(handler), Handler(setter), declaration, kEverywhere, 0, 0};
}

// clang-format off

// --- GIFZKV: the document --------------------------------------------------------------------------------------

static REALproperty documentProperties[] = {
  Property("Count",      kInteger,               document::GetCount),
  Property("Screen",     Object("GifScreenZKV"), document::GetGifScreen,  document::SetGifScreen),
  Property("Header",     kString,                document::GetHeader,     document::SetHeader),
  Property("FirstBlock", Object("GifBlockZKV"),  document::GetFirstBlock),
};
static REALmethodDefinition documentMethods[] = {
  Method("Block(index as integer) as GifBlockZKV", document::GetGifBlock),
  Method("Add(block as GifBlockZKV)",              document::AddGifBlock),
  Method("MakeFirstPicture as picture",            MakeFirstPicture,         kPictureMember),
  Method("MakeFirstMask as picture",               MakeFirstMask,            kPictureMember),
  Method("MakeFirstPictureWithMask as picture",    MakeFirstPictureWithMask, kPictureMember),
  Method("Clone as GIFZKV",                        document::CloneGIFZKV),
};

// --- GifPictureZKV: an image -----------------------------------------------------------------------------------

static REALproperty pictureProperties[] = {
  Property("Left",         kInteger,                picture::GetLeft,       picture::SetLeft),
  Property("Top",          kInteger,                picture::GetTop,        picture::SetTop),
  Property("Width",        kInteger,                picture::GetWidth,      picture::SetWidth),
  Property("Height",       kInteger,                picture::GetHeight,     picture::SetHeight),
  Property("Interlace",    kBoolean,                picture::Getinterlace,  picture::Setinterlace),
  Property("Sorted",       kBoolean,                picture::Getsorted,     picture::Setsorted),
  Property("HasPalette",   kBoolean,                picture::Gethas_cmap,   picture::Sethas_cmap),
  Property("PaletteDepth", kInteger,                picture::Getcmap_depth, picture::Setcmap_depth),
  Property("Palette",      Object("GifPaletteZKV"), picture::GetGifPalette, picture::SetGifPalette),
  Property("Data",         kMemoryblock,            picture::GetData,       picture::SetData),
};
static REALmethodDefinition pictureMethods[] = {
  Method("PixelData(row as integer) as memoryblock",                  picture::GetPixelData),
  Method("MakePicture as picture",                                    MakePicture, kPictureMember),
  Method("MakeMask as picture",                                       MakeMask,    kPictureMember),
  Method("MakeMask(TransparentColorIndex as integer) as picture",     MakeMask2,   kPictureMember),
  Method("Clone as GifPictureZKV",                                    picture::CloneGifPictureZKV),
  Method("CopyData as memoryblock",                                   picture::CopyData),
};

// --- GifDataZKV: a data sub-block ------------------------------------------------------------------------------

static REALproperty dataProperties[] = {
  Property("Length",     kInteger,     data::GetLength),
  Property("DataString", kString,      data::CopyDString, data::SetDString),
  Property("DataMemory", kMemoryblock, data::CopyDMemory, data::SetDMemory),
};
static REALmethodDefinition dataMethods[] = {
  Method("Clone as GifDataZKV", data::CloneGifDataZKV),
};

// --- GifBlockZKV: a block --------------------------------------------------------------------------------------

static REALproperty blockProperties[] = {
  Property("Intro",     kInteger,                  block::GetIntro,        block::SetIntro),
  Property("Extension", Object("GifExtensionZKV"), block::GetGifExtension, block::SetGifExtension),
  Property("Picture",   Object("GifPictureZKV"),   block::GetGifPicture,   block::SetGifPicture),
};
static REALmethodDefinition blockMethods[] = {
  Method("Clone as GifBlockZKV", block::CloneGifBlockZKV),
};

// --- GifScreenZKV: the logical screen --------------------------------------------------------------------------

static REALproperty screenProperties[] = {
  Property("Width",           kInteger,                screen::GetWidth,      screen::SetWidth),
  Property("Height",          kInteger,                screen::GetHeight,     screen::SetHeight),
  Property("HasPalette",      kBoolean,                screen::Gethas_cmap,   screen::Sethas_cmap),
  Property("ColorResolution", kInteger,                screen::Getcolor_res,  screen::Setcolor_res),
  Property("Sorted",          kBoolean,                screen::Getsorted,     screen::Setsorted),
  Property("PaletteDepth",    kInteger,                screen::Getcmap_depth, screen::Setcmap_depth),
  Property("Palette",         Object("GifPaletteZKV"), screen::GetGifPalette, screen::SetGifPalette),
  Property("BackgroundColor", kInteger,                screen::Getbgcolour,   screen::Setbgcolour),
  Property("Aspect",          kInteger,                screen::Getaspect,     screen::Setaspect),
};
static REALmethodDefinition screenMethods[] = {
  Method("Clone as GifScreenZKV", screen::CloneGifScreenZKV),
};

// --- GifPaletteZKV: a colour table -----------------------------------------------------------------------------

static REALproperty paletteProperties[] = {
  Property("Count", kInteger, palette::GetCount, palette::SetCount),
};
static REALmethodDefinition paletteMethods[] = {
  AssignableMethod("Value(index as integer) as color",   palette::GetPColor, palette::SetPColor),
  AssignableMethod("Blue(index as integer) as integer",  palette::GetPBlue,  palette::SetPBlue),
  AssignableMethod("Green(index as integer) as integer", palette::GetPGreen, palette::SetPGreen),
  AssignableMethod("Red(index as integer) as integer",   palette::GetPRed,   palette::SetPRed),
  Method("Clone as GifPaletteZKV",                       palette::CloneGifPaletteZKV),
};

// --- GifExtensionZKV: an extension -----------------------------------------------------------------------------

static REALproperty extensionProperties[] = {
  Property("FirstData", Object("GifDataZKV"), extension::GetFirstData),
  Property("Count",     kInteger,             extension::GetCount),
  Property("Marker",    kInteger,             extension::GetMarker, extension::SetMarker),
};
static REALmethodDefinition extensionMethods[] = {
  Method("Data(index as integer) as GifDataZKV", extension::GetGifData),
  Method("Add(data as GifDataZKV)",              extension::AddData),
  Method("Clone as GifExtensionZKV",             extension::CloneGifExtensionZKV),
};

// --- Methods on FolderItems, and global ones -------------------------------------------------------------------

static REALmethodDefinition folderitemMethods[] = {
  Method("OpenAsGIFZKV as GIFZKV",                 OpenGIFfile1),
  Method("SaveAsGIFZKV(data as GIFZKV) as boolean", SaveGIFfile1),
};
REALmethodDefinition globalMethods[2] = {
  Method("GifStringToPictureZKV(data as string) as Picture", GifStringToPictureZKV, kPictureMember),
  Method("GifStringToGifZKV(data as string) as GIFZKV",      OpenGIFstring),
};
// clang-format on

static REALclassDefinition ClassExtension(const char* class_name) {
  REALclassDefinition definition = {};
  definition.version = kClassRecordVersion;
  definition.name = class_name;
  definition.flags = kEverywhere;
  return definition;
}
REALclassDefinition folderitem2Class3 = ClassExtension("Folderitem");

// --- Filling in ------------------------------------------------------------------------------------------------

template <size_t kCount>
static void FillMethods(REALclassDefinition& definition, REALmethodDefinition (&methods)[kCount]) {
  definition.methods = methods;
  definition.method_count = kCount;
}

template <size_t kProperties, size_t kMethods>
static void Fill(REALclassDefinition& definition, REALproperty (&properties)[kProperties],
                 REALmethodDefinition (&methods)[kMethods]) {
  definition.properties = properties;
  definition.property_count = kProperties;
  FillMethods(definition, methods);
}

void FillDefinitions() {
  Fill(GifClass, documentProperties, documentMethods);
  Fill(GifPictureClass, pictureProperties, pictureMethods);
  Fill(GifDataClass, dataProperties, dataMethods);
  Fill(GifBlockClass, blockProperties, blockMethods);
  Fill(GifScreenClass, screenProperties, screenMethods);
  Fill(GifPaletteClass, paletteProperties, paletteMethods);
  Fill(GifExtensionClass, extensionProperties, extensionMethods);
  FillMethods(folderitem2Class3, folderitemMethods);
}
