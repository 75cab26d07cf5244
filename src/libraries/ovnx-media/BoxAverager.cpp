#include "libraries/ovnx-media/BoxAverager.h"

namespace ovnxmedia {
namespace {

uint64_t SamplesOf(Size size, unsigned channels) {
    return uint64_t{size.width} * size.height * channels;
}

Picture BlankPicture(Size size, unsigned channels) {
    Picture picture{size, channels, {}};
    picture.samples.resize(picture.Stride() * size.height);
    return picture;
}

uint8_t Rounded(double mean) {
    return static_cast<uint8_t>(static_cast<uint32_t>(2 * mean + 1) / 2);
}

// Without alpha all channels weigh the same; with it the colours were multiplied by it.
void Average(const uint64_t* sums, uint64_t boxWeight, unsigned channels, size_t count, uint8_t* pixels) {
    const double share = 1 / static_cast<double>(boxWeight);
    if (channels == 3) {
        for (size_t i = 0; i < count * 3; ++i)
            pixels[i] = Rounded(static_cast<double>(sums[i]) * share);
        return;
    }
    for (size_t i = 0; i < count * 4; i += 4) {
        const auto alpha = static_cast<double>(sums[i + 3]);
        for (size_t c = 0; c < 3; ++c)
            pixels[i + c] = alpha > 0 ? Rounded(static_cast<double>(sums[i + c]) / alpha) : uint8_t{0};
        pixels[i + 3] = Rounded(alpha * share);
    }
}

void MultiplyByAlpha(const uint8_t* row, size_t samples, uint16_t* weighted) {
    for (size_t i = 0; i < samples; i += 4) {
        const uint16_t alpha = row[i + 3];
        for (size_t c = 0; c < 3; ++c)
            weighted[i + c] = static_cast<uint16_t>(row[i + c] * alpha);
        weighted[i + 3] = alpha;
    }
}

}  // namespace

BoxAverager::BoxAverager(Size source, Size result, unsigned channels)
    : picture_(BlankPicture(result, channels)),
      weighted_(channels == 4 ? size_t{source.width} * 4 : 0),
      rows_(source, result, channels) {}

uint64_t BoxAverager::BytesFor(Size source, Size result, unsigned channels) {
    return SamplesOf(result, channels) + uint64_t{source.width} * channels * sizeof(uint16_t) +
           BoxRows<uint32_t, uint64_t>::BytesFor(source, result, channels);
}

void BoxAverager::AddRow(const uint8_t* row) {
    const auto finish = [this](const uint64_t* sums) {
        Average(sums, rows_.BoxWeight(), picture_.channels, picture_.size.width,
                picture_.samples.data() + written_);
        written_ += picture_.Stride();
    };
    if (picture_.channels == 3) {
        rows_.Add(row, finish);
        return;
    }
    MultiplyByAlpha(row, weighted_.size(), weighted_.data());
    rows_.Add(weighted_.data(), finish);
}

SparseAverager::SparseAverager(Size source, Size result, unsigned channels)
    : picture_(BlankPicture(result, channels)),
      across_(source.width, result.width),
      down_(source.height, result.height),
      sums_(picture_.samples.size()) {
    columns_.reserve(source.width);
    for (uint32_t x = 0; x < source.width; ++x)
        columns_.push_back(across_.Of(x));
}

uint64_t SparseAverager::BytesFor(Size source, Size result, unsigned channels) {
    return SamplesOf(result, channels) * (1 + sizeof(uint64_t)) +
           uint64_t{source.width} * sizeof(BoxAxis::Share);
}

void SparseAverager::AddPixels(uint32_t y, uint32_t first, uint32_t step, uint32_t count,
                               const uint8_t* samples) {
    const auto add = picture_.channels == 3 ? &SparseAverager::AddToRow<3> : &SparseAverager::AddToRow<4>;
    const BoxAxis::Share share = down_.Of(y);
    (this->*add)(share.box, share.weight, first, step, count, samples);
    if (share.rest > 0) (this->*add)(share.box + 1, share.rest, first, step, count, samples);
}

template <unsigned kChannels>
void SparseAverager::AddToRow(uint32_t row, uint16_t weight, uint32_t first, uint32_t step, uint32_t count,
                              const uint8_t* samples) {
    uint64_t* const sums = &sums_[row * picture_.Stride()];
    for (uint32_t i = 0; i < count; ++i, samples += kChannels) {
        const BoxAxis::Share& share = columns_[first + size_t{i} * step];
        uint64_t weighted[kChannels];
        for (unsigned c = 0; c < kChannels; ++c)
            weighted[c] = uint64_t{samples[c]} * weight * (kChannels == 4 && c < 3 ? samples[3] : 1U);
        uint64_t* sum = sums + size_t{share.box} * kChannels;
        for (unsigned c = 0; c < kChannels; ++c)
            sum[c] += weighted[c] * share.weight;
        if (share.rest == 0) continue;
        for (unsigned c = 0; c < kChannels; ++c)
            sum[kChannels + c] += weighted[c] * share.rest;
    }
}

Picture SparseAverager::Take() {
    Average(sums_.data(), uint64_t{across_.box()} * down_.box(), picture_.channels,
            size_t{picture_.size.width} * picture_.size.height, picture_.samples.data());
    return std::move(picture_);
}

}  // namespace ovnxmedia
