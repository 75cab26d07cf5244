// Still pictures as real files in memory, made by the libraries that others make them with.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfMultiPartOutputFile.h>
#include <ImfOutputPart.h>
#include <ImfPartType.h>
#include <ImfPreviewImage.h>
#include <ImfStdIO.h>
#include <ImfTiledOutputPart.h>
#include <png.h>
#include <turbojpeg.h>

namespace stillfiles {

struct PngKind {
    int colours = PNG_COLOR_TYPE_RGB;
    int depth = 8;
    bool interlaced = false;
};

// Samples of the kind's channels, of full depth; of palette pictures the index.
using PngPixel = std::function<std::array<uint16_t, 4>(uint32_t x, uint32_t y)>;

// The palette is red without alpha, opaque blue, opaque green.
inline std::string Png(uint32_t width, uint32_t height, PngKind kind, const PngPixel& pixel) {
    std::string file;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(
        png, &file,
        [](png_structp self, png_bytep bytes, size_t size) {
            static_cast<std::string*>(png_get_io_ptr(self))->append(reinterpret_cast<char*>(bytes), size);
        },
        nullptr);
    png_set_IHDR(png, info, width, height, kind.depth, kind.colours,
                 kind.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    if (kind.colours == PNG_COLOR_TYPE_PALETTE) {
        const png_color palette[] = {{255, 0, 0}, {0, 0, 255}, {0, 255, 0}};
        const png_byte alpha[] = {0};
        png_set_PLTE(png, info, palette, 3);
        png_set_tRNS(png, info, alpha, 1, nullptr);
    }
    png_write_info(png, info);
    png_set_packing(png);
    const unsigned channels = png_get_channels(png, info);
    std::vector<std::vector<uint8_t>> rows(height);
    std::vector<png_bytep> pointers;
    for (uint32_t y = 0; y < height; ++y) {
        for (uint32_t x = 0; x < width; ++x) {
            const auto samples = pixel(x, y);
            for (size_t c = 0; c < channels; ++c) {
                if (kind.depth == 16) rows[y].push_back(static_cast<uint8_t>(samples[c] >> 8));
                rows[y].push_back(static_cast<uint8_t>(samples[c]));
            }
        }
        pointers.push_back(rows[y].data());
    }
    png_write_image(png, pointers.data());
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return file;
}

using Rgb = std::array<uint8_t, 3>;

inline std::string Jpeg(int width, int height, int subsampling, int flags,
                        const std::function<Rgb(int x, int y)>& pixel, int format = TJPF_RGB) {
    std::vector<uint8_t> samples;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const Rgb colour = pixel(x, y);
            samples.insert(samples.end(), colour.begin(), colour.end());
            if (format == TJPF_CMYK) samples.push_back(255);
        }
    }
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
    tjhandle encoder = tjInitCompress();
    const int result =
        tjCompress2(encoder, samples.data(), width, 0, height, format, &bytes, &size, subsampling, 95, flags);
    std::string file(reinterpret_cast<char*>(bytes), size);
    tjFree(bytes);
    tjDestroy(encoder);
    if (result != 0) throw std::runtime_error("no JPEG");
    return file;
}

// The same file with its last scan said `times` more.
inline std::string WithScansRepeated(const std::string& jpeg, int times) {
    const size_t scan = jpeg.rfind("\xFF\xDA");
    const size_t end = jpeg.size() - 2;
    std::string file = jpeg.substr(0, end);
    for (int i = 0; i < times; ++i)
        file += jpeg.substr(scan, end - scan);
    return file + jpeg.substr(end);
}

struct ExrKind {
    Imf::Compression compression = Imf::ZIP_COMPRESSION;
    bool tiled = false;
    int parts = 1;  // those before the last one hold a channel "depth" alone
    std::vector<std::string> channels{"R", "G", "B"};
    int previewWidth = 0;  // of green, half as high
    Imath::V2i corner{0, 0};
};

using Light = std::function<float(size_t channel, int x, int y)>;

inline std::string Exr(int width, int height, const ExrKind& kind, const Light& light) {
    const Imath::Box2i window(kind.corner, kind.corner + Imath::V2i(width - 1, height - 1));
    const auto channelsOf = [&kind](int part) {
        return part + 1 == kind.parts ? kind.channels : std::vector<std::string>{"depth"};
    };
    std::vector<Imf::Header> headers;
    for (int i = 0; i < kind.parts; ++i) {
        Imf::Header& header = headers.emplace_back(window, window);
        header.compression() = kind.compression;
        header.setName("part " + std::to_string(i));
        header.setType(kind.tiled ? Imf::TILEDIMAGE : Imf::SCANLINEIMAGE);
        if (kind.tiled) header.setTileDescription(Imf::TileDescription(32, 16));
        for (const std::string& name : channelsOf(i))
            header.channels().insert(name, Imf::Channel(Imf::HALF));
    }
    if (kind.previewWidth > 0) {
        const auto across = static_cast<unsigned>(kind.previewWidth);
        const std::vector<Imf::PreviewRgba> pixels(size_t{across} * (across / 2),
                                                   Imf::PreviewRgba(0, 200, 0));
        headers.front().setPreviewImage(Imf::PreviewImage(across, across / 2, pixels.data()));
    }
    Imf::StdOSStream stream;
    {
        Imf::MultiPartOutputFile file(stream, headers.data(), kind.parts, true, 0);
        for (int i = 0; i < kind.parts; ++i) {
            Imf::FrameBuffer buffer;
            std::vector<std::vector<half>> planes;
            for (const std::string& name : channelsOf(i)) {
                const size_t channel = planes.size();
                std::vector<half>& plane = planes.emplace_back();
                for (int y = 0; y < height; ++y)
                    for (int x = 0; x < width; ++x)
                        plane.push_back(half(light(channel, x, y)));
                buffer.insert(name, Imf::Slice::Make(Imf::HALF, plane.data(), window));
            }
            if (kind.tiled) {
                Imf::TiledOutputPart part(file, i);
                part.setFrameBuffer(buffer);
                part.writeTiles(0, part.numXTiles() - 1, 0, part.numYTiles() - 1);
            } else {
                Imf::OutputPart part(file, i);
                part.setFrameBuffer(buffer);
                part.writePixels(height);
            }
        }
    }
    return stream.str();
}

}  // namespace stillfiles
