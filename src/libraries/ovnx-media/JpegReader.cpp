#include "libraries/ovnx-media/JpegReader.h"

#include <memory>
#include <new>
#include <string>

#include <turbojpeg.h>

#include "libraries/ovnx-media/BoxAverager.h"
#include "libraries/ovnx-media/JpegHeader.h"
#include "libraries/ovnx-media/Turning.h"

namespace ovnxmedia {
namespace {

// The decoder cannot be interrupted, and every scan may go over the whole picture. Real files have about ten,
// for which there is room at every size.
constexpr unsigned kMaxScans = 100;
constexpr uint64_t kMaxScannedPixels = uint64_t{16} * OVNX_MEDIA_MAX_PIXELS;
// Tables and rows at work.
constexpr uint64_t kDecoderBytes = 8 << 20;
constexpr int kCmykSamples = 4;

struct CloseDecoder {
    void operator()(void* decoder) const { tjDestroy(decoder); }
};
using Decoder = std::unique_ptr<void, CloseDecoder>;

[[noreturn]] void FailAs(tjhandle decoder) {
    throw Failure(OVNX_MEDIA_DAMAGED, std::string("JPEG: ") + tjGetErrorStr2(decoder));
}

FileBytes ReadWhole(SourceFile& source, Allowance& allowance) {
    allowance.Take(source.size());
    const auto size = static_cast<size_t>(source.size());
    FileBytes file;
    file.Reserve(size);
    file.size = source.ReadAt(0, reinterpret_cast<char*>(file.bytes.get()), size);
    return file;
}

void CheckScans(const JpegHeader& header) {
    const uint64_t pixels = uint64_t{header.size.width} * header.size.height;
    if (header.scans > kMaxScans || header.scans * pixels > kMaxScannedPixels)
        throw Failure(OVNX_MEDIA_OVER_LIMIT, "JPEG: too many scans");
}

Size ReducedSize(Size source, Size wanted) {
    int count = 0;
    const tjscalingfactor* const factors = tjGetScalingFactors(&count);
    Size best = source;
    for (const tjscalingfactor* factor = factors; factor < factors + count; ++factor) {
        const auto scaled = [factor](uint32_t side) {
            return static_cast<uint32_t>(TJSCALED(static_cast<int>(side), (*factor)));
        };
        const Size size{scaled(source.width), scaled(source.height)};
        if (size.width >= wanted.width && size.height >= wanted.height && size.width <= best.width)
            best = size;
    }
    return best;
}

// The decoder reads the header itself, and must find the size that was checked against the limits.
void CheckAgreement(tjhandle decoder, const FileBytes& file, Size size) {
    int width = 0;
    int height = 0;
    int subsampling = 0;
    int colours = 0;
    if (tjDecompressHeader3(decoder, file.bytes.get(), file.size, &width, &height, &subsampling, &colours) !=
            0 &&
        tjGetErrorCode(decoder) != TJERR_WARNING)
        FailAs(decoder);
    if (static_cast<uint32_t>(width) != size.width || static_cast<uint32_t>(height) != size.height)
        throw Failure(OVNX_MEDIA_DAMAGED, "JPEG: two sizes");
}

uint8_t MarkAt(size_t i) {
    return static_cast<uint8_t>(i * 37 + 11);
}

// After a warning the decoder reports giving up no differently. It writes rows from the top: when it has
// finished, the marks are gone from the last one.
Samples Decode(tjhandle decoder, const FileBytes& file, Size size, bool isCmyk) {
    const size_t stride = size_t{size.width} * (isCmyk ? kCmykSamples : 3);
    Samples samples(stride * size.height);
    uint8_t* const last = samples.data() + samples.size() - stride;
    for (size_t i = 0; i < stride; ++i)
        last[i] = MarkAt(i);
    if (tjDecompress2(decoder, file.bytes.get(), file.size, samples.data(), static_cast<int>(size.width),
                      static_cast<int>(stride), static_cast<int>(size.height), isCmyk ? TJPF_CMYK : TJPF_RGB,
                      TJFLAG_LIMITSCANS) == 0)
        return samples;
    size_t left = 0;
    while (left < stride && last[left] == MarkAt(left))
        ++left;
    if (tjGetErrorCode(decoder) != TJERR_WARNING || left == stride) FailAs(decoder);
    return samples;
}

// Files hold the inks inverted; this is how all programs write them.
void ConvertCmyk(const uint8_t* inks, size_t pixels, uint8_t* rgb) {
    for (size_t i = 0; i < pixels; ++i, inks += kCmykSamples, rgb += 3) {
        for (size_t c = 0; c < 3; ++c)
            rgb[c] = static_cast<uint8_t>((inks[c] * inks[3] + 127) / 255);
    }
}

}  // namespace

Picture ReadJpeg(SourceFile& source, Size box, Allowance& allowance, const Budget& budget) {
    const FileBytes file = ReadWhole(source, allowance);
    const JpegHeader header = ReadJpegHeader(file);
    CheckPixels(header.size);
    CheckScans(header);
    const Size result = FitInside(header.size, BoxAsStored(box, header.orientation));
    const Size reduced = ReducedSize(header.size, result);
    const bool isCmyk = header.components == kCmykSamples;
    allowance.Take(kDecoderBytes + header.coefficientBytes);
    allowance.Take(uint64_t{reduced.width} * reduced.height * (isCmyk ? kCmykSamples : 3));
    allowance.Take(BoxAverager::BytesFor(reduced, result, 3));
    budget.Check();

    const Decoder decoder(tjInitDecompress());
    if (!decoder) throw std::bad_alloc();
    CheckAgreement(decoder.get(), file, header.size);
    Samples samples = Decode(decoder.get(), file, reduced, isCmyk);
    budget.Check();
    if (isCmyk) ConvertCmyk(samples.data(), samples.size() / kCmykSamples, samples.data());
    BoxAverager averager(reduced, result, 3);
    for (uint32_t y = 0; y < reduced.height; ++y)
        averager.AddRow(samples.data() + size_t{y} * reduced.width * 3);
    return Turn(averager.Take(), header.orientation, allowance);
}

}  // namespace ovnxmedia
