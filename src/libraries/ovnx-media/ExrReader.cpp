#include "libraries/ovnx-media/ExrReader.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <vector>

#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfIO.h>
#include <ImfInputPart.h>
#include <ImfMultiPartInputFile.h>
#include <ImfPreviewImage.h>

#include "libraries/ovnx-media/BoxAverager.h"
#include "libraries/ovnx-media/ExrHeader.h"
#include "libraries/ovnx-media/ToneMap.h"

namespace ovnxmedia {
namespace {

// Blocks as read and as decompressed, tables and what the methods keep, by the limits of the headers.
constexpr uint64_t kDecoderBytes = 160 << 20;
// The largest half-precision number; brighter light and infinity become this.
constexpr float kMostLight = 65504;
// How far the aspect of a preview may differ for it to show the same picture.
constexpr double kAspectTolerance = 0.02;

class ExrStream : public Imf::IStream {
  public:
    ExrStream(SourceFile& file, const Budget& budget) : IStream(""), reader_(file), budget_(budget) {}

    bool read(char* bytes, int size) override {
        budget_.Check();
        if (size < 0 || !reader_.Read(bytes, static_cast<size_t>(size)))
            throw Failure(OVNX_MEDIA_DAMAGED, "OpenEXR: ends too early");
        return true;
    }
    uint64_t tellg() override { return reader_.position(); }
    void seekg(uint64_t position) override { reader_.Seek(position); }

  private:
    SourceReader reader_;
    const Budget& budget_;
};

Size SizeOf(const Imf::Header& header) {
    const Imath::Box2i& window = header.dataWindow();
    return {static_cast<uint32_t>(window.max.x - window.min.x) + 1,
            static_cast<uint32_t>(window.max.y - window.min.y) + 1};
}

bool HasFull(const Imf::ChannelList& channels, const char* name) {
    const Imf::Channel* const channel = channels.findChannel(name);
    return channel && channel->xSampling == 1 && channel->ySampling == 1;
}

bool HasColours(const Imf::ChannelList& channels) {
    return HasFull(channels, "R") && HasFull(channels, "G") && HasFull(channels, "B");
}

int FirstPicture(const Imf::MultiPartInputFile& file) {
    for (int part = 0; part < file.parts(); ++part) {
        const Imf::ChannelList& channels = file.header(part).channels();
        if (HasColours(channels) || HasFull(channels, "Y")) return part;
    }
    throw Failure(OVNX_MEDIA_DAMAGED, "OpenEXR: no colours");
}

// Whether the preview shows the picture, and large enough that the thumbnail need not be smaller for it.
bool IsPreviewOf(Size preview, Size picture, Size wanted) {
    if (preview.width < wanted.width || preview.height < wanted.height) return false;
    const double ratio = double{1} * preview.width * picture.height / preview.height / picture.width;
    return std::abs(ratio - 1) <= kAspectTolerance;
}

Picture FromPreview(const Imf::PreviewImage& preview, Size result, Allowance& allowance) {
    const Size size{preview.width(), preview.height()};
    allowance.Take(BoxAverager::BytesFor(size, result, 3));
    BoxAverager averager(size, result, 3);
    std::vector<uint8_t> row;
    row.reserve(size_t{size.width} * 3);
    for (uint32_t y = 0; y < size.height; ++y) {
        row.clear();
        for (uint32_t x = 0; x < size.width; ++x) {
            const Imf::PreviewRgba& pixel = preview.pixel(x, y);
            row.insert(row.end(), {pixel.r, pixel.g, pixel.b});
        }
        averager.AddRow(row.data());
    }
    return averager.Take();
}

// Every line of the picture lands in the same row of light.
Imf::FrameBuffer RowBuffer(const Imf::Header& header, KXP::SlabVector<float>& row) {
    constexpr size_t kStride = 3 * sizeof(float);
    const bool isGrey = !HasColours(header.channels());
    const char* const names[] = {isGrey ? "Y" : "R", "G", "B"};
    Imf::FrameBuffer buffer;
    for (size_t c = 0; c < (isGrey ? 1 : 3); ++c) {
        char* const first = reinterpret_cast<char*>(row.data() + c);
        char* const origin = first - static_cast<std::ptrdiff_t>(kStride) * header.dataWindow().min.x;
        buffer.insert(names[c], Imf::Slice(Imf::FLOAT, origin, kStride, 0));
    }
    return buffer;
}

void MakeSane(KXP::SlabVector<float>& row, bool isGrey) {
    if (isGrey) {
        for (size_t i = 0; i < row.size(); i += 3)
            row[i + 1] = row[i + 2] = row[i];
    }
    for (float& light : row)
        light = light > 0 ? std::min(light, kMostLight) : 0;  // no number is not greater
}

Picture FromLight(Imf::InputPart& part, Size result, Allowance& allowance, const Budget& budget) {
    const Imf::Header& header = part.header();
    const Size source = SizeOf(header);
    Picture picture{result, 3, {}};
    allowance.Take(kDecoderBytes + size_t{source.width} * 3 * sizeof(float));
    allowance.Take(BoxRows<float, double>::BytesFor(source, result, 3) + picture.Stride() * result.height);
    picture.samples.reserve(picture.Stride() * result.height);
    KXP::SlabVector<float> row(size_t{source.width} * 3);
    part.setFrameBuffer(RowBuffer(header, row));
    BoxRows<float, double> rows(source, result, 3);
    const double weight = static_cast<double>(rows.BoxWeight());
    const auto finish = [&](const double* sums) {
        for (size_t i = 0; i < picture.Stride(); ++i)
            picture.samples.push_back(ScreenSample(sums[i] / weight));
    };
    for (int y = header.dataWindow().min.y; y <= header.dataWindow().max.y; ++y) {
        budget.Check();
        part.readPixels(y, y);
        MakeSane(row, !HasColours(header.channels()));
        rows.Add(row.data(), finish);
    }
    return picture;
}

// A second line of defence after the checks of the headers. The decoder's limits apply to all threads.
void LimitDecoder() {
    static const bool isDone = [] {
        Imf::Header::setMaxImageSize(OVNX_MEDIA_MAX_PIXELS, OVNX_MEDIA_MAX_PIXELS);
        Imf::Header::setMaxTileSize(OVNX_MEDIA_MAX_PIXELS, OVNX_MEDIA_MAX_PIXELS);
        return true;
    }();
    static_cast<void>(isDone);
}

Picture Decode(Imf::IStream& stream, Size box, Allowance& allowance, const Budget& budget) {
    Imf::MultiPartInputFile file(stream, 0);
    const int number = FirstPicture(file);
    const Imf::Header& header = file.header(number);
    const Size source = SizeOf(header);
    const Size result = FitInside(source, box);
    if (header.hasPreviewImage()) {
        const Imf::PreviewImage& preview = header.previewImage();
        if (IsPreviewOf({preview.width(), preview.height()}, source, result))
            return FromPreview(preview, result, allowance);
    }
    Imf::InputPart part(file, number);
    return FromLight(part, result, allowance, budget);
}

}  // namespace

Picture ReadExr(SourceFile& file, Size box, Allowance& allowance, const Budget& budget) {
    CheckExrHeaders(file);
    LimitDecoder();
    ExrStream stream(file, budget);
    try {
        return Decode(stream, box, allowance, budget);
    } catch (const Failure&) {
        throw;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        // The decoder passes exceptions of the stream on as its own.
        budget.Check();
        throw Failure(OVNX_MEDIA_DAMAGED, std::string("OpenEXR: ") + error.what());
    }
}

}  // namespace ovnxmedia
