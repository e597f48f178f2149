#include "bench/codecs.h"

#include <gd.h>
#include <gif_lib.h>
#include <stb/stb_image.h>

#ifdef HAVE_LIBAVCODEC
extern "C" {
#include <libavcodec/avcodec.h>
}
#endif

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "codec/reader.h"
#include "codec/writer.h"

// Keeps the compiler from leaving out what makes a result.
static void Use(const void* result) { asm volatile("" : : "r"(result) : "memory"); }

static void Require(bool succeeded, const char* what) {
  if (succeeded) return;
  std::fprintf(stderr, "%s failed\n", what);
  std::exit(1);
}

// --- Ours --------------------------------------------------------------------------------------------------------

static Work DecodeOurs(const Bytes& file) {
  return [&file] {
    Gif* gif = ReadSample(file);
    Use(gif->blocks);
    DeleteGif(gif);
  };
}

// A file that goes nowhere, with a buffer as large as a saved file gets.
static std::shared_ptr<FILE> Nowhere() {
  std::shared_ptr<FILE> file(std::fopen("/dev/null", "wb"), std::fclose);
  std::setvbuf(file.get(), nullptr, _IOFBF, 0x100000);
  return file;
}

static Work EncodeOurs(const Gif* gif) {
  return [gif, file = Nowhere()] {
    MyFILE stream = {nullptr, 0, 0, file.get()};
    WriteGif(&stream, gif);
  };
}

// --- giflib ------------------------------------------------------------------------------------------------------

static Work DecodeGiflib(const Bytes& file) {
  return [&file] {
    struct Source {
      const uint8_t* bytes;
      size_t left;
    } source = {file.data(), file.size()};
    const auto read = [](GifFileType* gif, GifByteType* bytes, int count) {
      auto* from = static_cast<Source*>(gif->UserData);
      const size_t got = std::min(from->left, static_cast<size_t>(count));
      std::memcpy(bytes, from->bytes, got);
      from->bytes += got;
      from->left -= got;
      return static_cast<int>(got);
    };
    GifFileType* gif = DGifOpen(&source, read, nullptr);
    Require(gif && DGifSlurp(gif) == GIF_OK, "giflib's reading");
    Use(gif->SavedImages);
    DGifCloseFile(gif, nullptr);
  };
}

static Work EncodeGiflib(const Gif* from) {
  const auto write = [](GifFileType* gif, const GifByteType* bytes, int count) {
    return static_cast<int>(std::fwrite(bytes, 1, static_cast<size_t>(count), static_cast<FILE*>(gif->UserData)));
  };
  std::vector<Bytes> pixels;  // of each block, none of extensions
  for (int32_t i = 0; i < from->count; ++i) {
    const GifPicture* picture = from->blocks[i]->picture;
    pixels.push_back(picture ? PixelsOf(picture) : Bytes());
  }
  return [=, file = Nowhere()]() mutable {
    GifFileType* gif = EGifOpen(file.get(), write, nullptr);
    const auto colours = [](int32_t depth) { return GifMakeMapObject(1 << depth, nullptr); };
    ColorMapObject* global = colours(from->screen->cmap_depth);
    EGifPutScreenDesc(gif, from->screen->width, from->screen->height, from->screen->cmap_depth, 0, global);
    for (int32_t i = 0; i < from->count; ++i) {
      const GifPicture* picture = from->blocks[i]->picture;
      if (!picture) continue;
      ColorMapObject* local = picture->has_cmap ? colours(picture->cmap_depth) : nullptr;
      EGifPutImageDesc(gif, picture->left, picture->top, picture->width, picture->height, false, local);
      uint8_t* row = pixels[static_cast<size_t>(i)].data();
      for (int32_t y = 0; y < picture->height; ++y, row += picture->width) EGifPutLine(gif, row, picture->width);
      GifFreeMapObject(local);
    }
    EGifCloseFile(gif, nullptr);
    GifFreeMapObject(global);
  };
}

// --- libgd -------------------------------------------------------------------------------------------------------

static Work DecodeLibgd(const Bytes& file) {
  return [&file] {
    gdImagePtr image = gdImageCreateFromGifPtr(static_cast<int>(file.size()), const_cast<uint8_t*>(file.data()));
    Require(image, "libgd's reading");
    Use(image->pixels);
    gdImageDestroy(image);
  };
}

static Work EncodeLibgd(const Gif* gif) {
  const GifPicture* from = FirstPicture(gif);
  const std::shared_ptr<gdImage> picture(gdImageCreate(from->width, from->height), gdImageDestroy);
  for (int i = 0; i < 256; ++i) gdImageColorAllocate(picture.get(), i, i, i);
  const Bytes pixels = PixelsOf(from);
  const uint8_t* row = pixels.data();
  for (int32_t y = 0; y < from->height; ++y, row += from->width) std::copy_n(row, from->width, picture->pixels[y]);
  return [picture] {
    int size = 0;
    gdFree(gdImageGifPtr(picture.get(), &size));
  };
}

// --- stb_image ---------------------------------------------------------------------------------------------------

static Work DecodeStb(const Bytes& file) {
  return [&file] {
    int width, height, frames, channels;
    int* delays = nullptr;
    stbi_uc* pixels = stbi_load_gif_from_memory(file.data(), static_cast<int>(file.size()), &delays, &width, &height,
                                                &frames, &channels, 0);
    Require(pixels, "stb_image's reading");
    stbi_image_free(pixels);
    stbi_image_free(delays);
  };
}

// --- libavcodec: the first image, to and from frames ---------------------------------------------------------------

#ifdef HAVE_LIBAVCODEC
using Context = std::unique_ptr<AVCodecContext, void (*)(AVCodecContext*)>;
using Packet = std::unique_ptr<AVPacket, void (*)(AVPacket*)>;
using Frame = std::unique_ptr<AVFrame, void (*)(AVFrame*)>;

static Context NewContext(const AVCodec* codec) {
  return {avcodec_alloc_context3(codec), [](AVCodecContext* context) { avcodec_free_context(&context); }};
}
static Packet NewPacket() {
  return {av_packet_alloc(), [](AVPacket* packet) { av_packet_free(&packet); }};
}
static Frame NewFrame() {
  return {av_frame_alloc(), [](AVFrame* frame) { av_frame_free(&frame); }};
}

static Work DecodeLibavcodec(const Bytes& file) {
  return [&file] {
    const AVCodec* codec = avcodec_find_decoder(AV_CODEC_ID_GIF);
    const Context context = NewContext(codec);
    const Packet packet = NewPacket();
    const Frame frame = NewFrame();
    packet->data = const_cast<uint8_t*>(file.data());
    packet->size = static_cast<int>(file.size());
    packet->flags = AV_PKT_FLAG_KEY;
    Require(avcodec_open2(context.get(), codec, nullptr) == 0 &&
                avcodec_send_packet(context.get(), packet.get()) == 0 &&
                avcodec_receive_frame(context.get(), frame.get()) == 0,
            "libavcodec's reading");
    Use(frame->data[0]);
  };
}

static Work EncodeLibavcodec(const Gif* gif) {
  const GifPicture* from = FirstPicture(gif);
  const std::shared_ptr<AVFrame> frame(av_frame_alloc(), [](AVFrame* made) { av_frame_free(&made); });
  frame->format = AV_PIX_FMT_PAL8;
  frame->width = from->width;
  frame->height = from->height;
  Require(av_frame_get_buffer(frame.get(), 0) == 0, "libavcodec's frame");
  const Bytes pixels = PixelsOf(from);
  const uint8_t* row = pixels.data();
  for (int32_t y = 0; y < from->height; ++y, row += from->width) {
    std::copy_n(row, from->width, frame->data[0] + static_cast<std::ptrdiff_t>(y) * frame->linesize[0]);
  }
  for (uint32_t i = 0; i < 256; ++i) reinterpret_cast<uint32_t*>(frame->data[1])[i] = 0xFF000000 | i * 0x10101;
  return [frame] {
    const AVCodec* codec = avcodec_find_encoder(AV_CODEC_ID_GIF);
    const Context context = NewContext(codec);
    const Packet packet = NewPacket();
    context->width = frame->width;
    context->height = frame->height;
    context->pix_fmt = AV_PIX_FMT_PAL8;
    context->time_base = {1, 100};
    Require(avcodec_open2(context.get(), codec, nullptr) == 0 &&
                avcodec_send_frame(context.get(), frame.get()) == 0 &&
                avcodec_receive_packet(context.get(), packet.get()) == 0,
            "libavcodec's writing");
  };
}
#endif

std::span<const Codec> Codecs() {
  static constexpr Codec kCodecs[] = {
      {"ours", true, DecodeOurs, EncodeOurs},
      {"giflib", true, DecodeGiflib, EncodeGiflib},
      {"libgd", false, DecodeLibgd, EncodeLibgd},
      {"stb_image", true, DecodeStb, nullptr},
#ifdef HAVE_LIBAVCODEC
      {"libavcodec", false, DecodeLibavcodec, EncodeLibavcodec},
#endif
  };
  return kCodecs;
}
