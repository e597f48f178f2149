#include "plugin/definitions.h"

#include "bridge/definition_rows.h"
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
  MethodRow("MakeFirstPicture as picture",            MakeFirstPicture,         kPictureMember),
  MethodRow("MakeFirstMask as picture",               MakeFirstMask,            kPictureMember),
  MethodRow("MakeFirstPictureWithMask as picture",    MakeFirstPictureWithMask, kPictureMember),
  MethodRow("Clone as GIFZKV",                        document::CloneGIFZKV),
};

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
  MethodRow("MakePicture as picture",                                    MakePicture, kPictureMember),
  MethodRow("MakeMask as picture",                                       MakeMask,    kPictureMember),
  MethodRow("MakeMask(TransparentColorIndex as integer) as picture",     MakeMask2,   kPictureMember),
  MethodRow("Clone as GifPictureZKV",                                    picture::CloneGifPictureZKV),
  MethodRow("CopyData as memoryblock",                                   picture::CopyData),
};

// --- GifDataZKV: a data sub-block ------------------------------------------------------------------------------

static REALproperty dataProperties[] = {
  PropertyRow("Length",     "Integer",     data::GetLength),
  PropertyRow("DataString", "String",      data::CopyDString, data::SetDString),
  PropertyRow("DataMemory", "Memoryblock", data::CopyDMemory, data::SetDMemory),
};
static REALmethodDefinition dataMethods[] = {
  MethodRow("Clone as GifDataZKV", data::CloneGifDataZKV),
};

// --- GifBlockZKV: a block --------------------------------------------------------------------------------------

static REALproperty blockProperties[] = {
  PropertyRow("Intro",     "Integer",         block::GetIntro,        block::SetIntro),
  PropertyRow("Extension", "GifExtensionZKV", block::GetGifExtension, block::SetGifExtension),
  PropertyRow("Picture",   "GifPictureZKV",   block::GetGifPicture,   block::SetGifPicture),
};
static REALmethodDefinition blockMethods[] = {
  MethodRow("Clone as GifBlockZKV", block::CloneGifBlockZKV),
};

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

// --- Methods on FolderItems, and global ones -------------------------------------------------------------------

static REALmethodDefinition folderitemMethods[] = {
  MethodRow("OpenAsGIFZKV as GIFZKV",                  OpenGIFfile1),
  MethodRow("SaveAsGIFZKV(data as GIFZKV) as boolean", SaveGIFfile1),
};
REALmethodDefinition globalMethods[2] = {
  GlobalMethodRow("GifStringToPictureZKV(data as string) as Picture", GifStringToPictureZKV, kPictureMember),
  GlobalMethodRow("GifStringToGifZKV(data as string) as GIFZKV",      OpenGIFstring),
};
// clang-format on

REALclassDefinition folderitem2Class3 = ClassRecord("Folderitem");

// --- Filling in ------------------------------------------------------------------------------------------------

void FillDefinitions() {
  FillMembers(GifClass, documentProperties, documentMethods);
  FillMembers(GifPictureClass, pictureProperties, pictureMethods);
  FillMembers(GifDataClass, dataProperties, dataMethods);
  FillMembers(GifBlockClass, blockProperties, blockMethods);
  FillMembers(GifScreenClass, screenProperties, screenMethods);
  FillMembers(GifPaletteClass, paletteProperties, paletteMethods);
  FillMembers(GifExtensionClass, extensionProperties, extensionMethods);
  FillMethods(folderitem2Class3, folderitemMethods);
}
