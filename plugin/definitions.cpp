#include "plugin/definitions.h"

#include "bridge/definition_rows.h"
#include "classes/block_class.h"
#include "classes/data_class.h"
#include "classes/document_class.h"
#include "classes/extension_class.h"
#include "classes/instance.h"
#include "classes/palette_class.h"
#include "classes/picture_class.h"
#include "classes/screen_class.h"
#include "entry/open.h"
#include "entry/picture_methods.h"
#include "entry/save.h"

// clang-format off

// --- GIFZKV: the document --------------------------------------------------------------------------------------

static REALproperty documentProperties[] = {
  PropertyRow("Count",      "Integer",      document::GetCount),
  PropertyRow("Screen",     "GifScreenZKV", document::GetGifScreen,  document::SetGifScreen),
  PropertyRow("Header",     "String",       document::GetHeader,     document::SetHeader),
  PropertyRow("FirstBlock", "GifBlockZKV",  document::GetFirstBlock),
};
static REALmethodDefinition documentMethods[] = {
  MethodRow("Block(index as integer) as GifBlockZKV", document::GetGifBlock),
  MethodRow("Add(block as GifBlockZKV)",              document::AddGifBlock),
  MethodRow("MakeFirstPicture as picture",            MakeFirstPicture,         kFrom2010MarkerFlag),
  MethodRow("MakeFirstMask as picture",               MakeFirstMask,            kFrom2010MarkerFlag),
  MethodRow("MakeFirstPictureWithMask as picture",    MakeFirstPictureWithMask, kFrom2010MarkerFlag),
  MethodRow("Clone as GIFZKV",                        document::CloneGIFZKV),
};
REALclassDefinition GifClass = ClassDefinition<GifInstance>("GIFZKV", document::GifDestructor, documentProperties, documentMethods);

// --- GifPictureZKV: an image -----------------------------------------------------------------------------------

static REALproperty pictureProperties[] = {
  PropertyRow("Left",         "Integer",       picture::GetLeft,       picture::SetLeft),
  PropertyRow("Top",          "Integer",       picture::GetTop,        picture::SetTop),
  PropertyRow("Width",        "Integer",       picture::GetWidth,      picture::SetWidth),
  PropertyRow("Height",       "Integer",       picture::GetHeight,     picture::SetHeight),
  PropertyRow("Interlace",    "Boolean",       picture::Getinterlace,  picture::Setinterlace),
  PropertyRow("Sorted",       "Boolean",       picture::Getsorted,     picture::Setsorted),
  PropertyRow("HasPalette",   "Boolean",       picture::Gethas_cmap,   picture::Sethas_cmap),
  PropertyRow("PaletteDepth", "Integer",       picture::Getcmap_depth, picture::Setcmap_depth),
  PropertyRow("Palette",      "GifPaletteZKV", picture::GetGifPalette, picture::SetGifPalette),
  PropertyRow("Data",         "Memoryblock",   picture::GetData,       picture::SetData),
};
static REALmethodDefinition pictureMethods[] = {
  MethodRow("PixelData(row as integer) as memoryblock",                  picture::GetPixelData),
  MethodRow("MakePicture as picture",                                    MakePicture, kFrom2010MarkerFlag),
  MethodRow("MakeMask as picture",                                       MakeMask,    kFrom2010MarkerFlag),
  MethodRow("MakeMask(TransparentColorIndex as integer) as picture",     MakeMask2,   kFrom2010MarkerFlag),
  MethodRow("Clone as GifPictureZKV",                                    picture::CloneGifPictureZKV),
  MethodRow("CopyData as memoryblock",                                   picture::CopyData),
};
REALclassDefinition GifPictureClass = ClassDefinition<GifPictureInstance>("GifPictureZKV", picture::GifPictureDestructor, pictureProperties, pictureMethods);

// --- GifDataZKV: a data sub-block ------------------------------------------------------------------------------

static REALproperty dataProperties[] = {
  PropertyRow("Length",     "Integer",     data::GetLength),
  PropertyRow("DataString", "String",      data::CopyDString, data::SetDString),
  PropertyRow("DataMemory", "Memoryblock", data::CopyDMemory, data::SetDMemory),
};
static REALmethodDefinition dataMethods[] = {
  MethodRow("Clone as GifDataZKV", data::CloneGifDataZKV),
};
REALclassDefinition GifDataClass = ClassDefinition<GifDataInstance>("GifDataZKV", data::GifDataDestructor, dataProperties, dataMethods);

// --- GifBlockZKV: a block --------------------------------------------------------------------------------------

static REALproperty blockProperties[] = {
  PropertyRow("Intro",     "Integer",         block::GetIntro,        block::SetIntro),
  PropertyRow("Extension", "GifExtensionZKV", block::GetGifExtension, block::SetGifExtension),
  PropertyRow("Picture",   "GifPictureZKV",   block::GetGifPicture,   block::SetGifPicture),
};
static REALmethodDefinition blockMethods[] = {
  MethodRow("Clone as GifBlockZKV", block::CloneGifBlockZKV),
};
REALclassDefinition GifBlockClass = ClassDefinition<GifBlockInstance>("GifBlockZKV", block::GifBlockDestructor, blockProperties, blockMethods);

// --- GifScreenZKV: the logical screen --------------------------------------------------------------------------

static REALproperty screenProperties[] = {
  PropertyRow("Width",           "Integer",       screen::GetWidth,      screen::SetWidth),
  PropertyRow("Height",          "Integer",       screen::GetHeight,     screen::SetHeight),
  PropertyRow("HasPalette",      "Boolean",       screen::Gethas_cmap,   screen::Sethas_cmap),
  PropertyRow("ColorResolution", "Integer",       screen::Getcolor_res,  screen::Setcolor_res),
  PropertyRow("Sorted",          "Boolean",       screen::Getsorted,     screen::Setsorted),
  PropertyRow("PaletteDepth",    "Integer",       screen::Getcmap_depth, screen::Setcmap_depth),
  PropertyRow("Palette",         "GifPaletteZKV", screen::GetGifPalette, screen::SetGifPalette),
  PropertyRow("BackgroundColor", "Integer",       screen::Getbgcolour,   screen::Setbgcolour),
  PropertyRow("Aspect",          "Integer",       screen::Getaspect,     screen::Setaspect),
};
static REALmethodDefinition screenMethods[] = {
  MethodRow("Clone as GifScreenZKV", screen::CloneGifScreenZKV),
};
REALclassDefinition GifScreenClass = ClassDefinition<GifScreenInstance>("GifScreenZKV", screen::GifScreenDestructor, screenProperties, screenMethods);

// --- GifPaletteZKV: a colour table -----------------------------------------------------------------------------

static REALproperty paletteProperties[] = {
  PropertyRow("Count", "Integer", palette::GetCount, palette::SetCount),
};
static REALmethodDefinition paletteMethods[] = {
  MethodRow("Value(index as integer) as color",   palette::GetPColor, palette::SetPColor),
  MethodRow("Blue(index as integer) as integer",  palette::GetPBlue,  palette::SetPBlue),
  MethodRow("Green(index as integer) as integer", palette::GetPGreen, palette::SetPGreen),
  MethodRow("Red(index as integer) as integer",   palette::GetPRed,   palette::SetPRed),
  MethodRow("Clone as GifPaletteZKV",             palette::CloneGifPaletteZKV),
};
REALclassDefinition GifPaletteClass = ClassDefinition<GifPaletteInstance>("GifPaletteZKV", palette::GifPaletteDestructor, paletteProperties, paletteMethods);

// --- GifExtensionZKV: an extension -----------------------------------------------------------------------------

static REALproperty extensionProperties[] = {
  PropertyRow("FirstData", "GifDataZKV", extension::GetFirstData),
  PropertyRow("Count",     "Integer",    extension::GetCount),
  PropertyRow("Marker",    "Integer",    extension::GetMarker, extension::SetMarker),
};
static REALmethodDefinition extensionMethods[] = {
  MethodRow("Data(index as integer) as GifDataZKV", extension::GetGifData),
  MethodRow("Add(data as GifDataZKV)",              extension::AddData),
  MethodRow("Clone as GifExtensionZKV",             extension::CloneGifExtensionZKV),
};
REALclassDefinition GifExtensionClass = ClassDefinition<GifExtensionInstance>("GifExtensionZKV", extension::GifExtensionDestructor, extensionProperties, extensionMethods);

// --- Methods on FolderItems, and global ones -------------------------------------------------------------------

static REALmethodDefinition folderitemMethods[] = {
  MethodRow("OpenAsGIFZKV as GIFZKV",                  OpenGIFfile1),
  MethodRow("SaveAsGIFZKV(data as GIFZKV) as boolean", SaveGIFfile1),
};
REALmethodDefinition globalMethods[2] = {
  GlobalMethodRow("GifStringToPictureZKV(data as string) as Picture", GifStringToPictureZKV, kFrom2010MarkerFlag),
  GlobalMethodRow("GifStringToGifZKV(data as string) as GIFZKV",      OpenGIFstring),
};
// clang-format on

REALclassDefinition folderitem2Class3 = ClassExtension("Folderitem", folderitemMethods);
