// Averages 8-bit pictures down to smaller ones, exactly: each pixel of the result is the mean of the area
// that it covers. Colours are weighted by their alpha, so that nothing shows of transparent pixels.
#pragma once

#include <cstdint>
#include <utility>

#include "libraries/ovnx-media/BoxRows.h"
#include "libraries/ovnx-media/Picture.h"

namespace ovnxmedia {

// For pictures that come row by row from the top.
class BoxAverager {
  public:
    // The result is not larger than the source; `channels` is 3 or 4.
    BoxAverager(Size source, Size result, unsigned channels);
    // The memory that it will take.
    static uint64_t BytesFor(Size source, Size result, unsigned channels);

    void AddRow(const uint8_t* row);
    // The picture, once all rows were added.
    Picture Take() { return std::move(picture_); }

  private:
    Picture picture_;
    size_t written_ = 0;
    KXP::SlabVector<uint16_t> weighted_;  // a row with its colours multiplied by alpha
    BoxRows<uint32_t, uint64_t> rows_;
};

// For pictures that come as pixels here and there, each once: sums for the whole result are kept.
class SparseAverager {
  public:
    SparseAverager(Size source, Size result, unsigned channels);
    static uint64_t BytesFor(Size source, Size result, unsigned channels);

    // Adds `count` pixels of row `y`: those at `first`, `first + step` and so on.
    void AddPixels(uint32_t y, uint32_t first, uint32_t step, uint32_t count, const uint8_t* samples);
    Picture Take();

  private:
    template <unsigned kChannels>
    void AddToRow(uint32_t row, uint16_t weight, uint32_t first, uint32_t step, uint32_t count,
                  const uint8_t* samples);

    Picture picture_;
    const BoxAxis across_;
    const BoxAxis down_;
    KXP::SlabVector<BoxAxis::Share> columns_;
    KXP::SlabVector<uint64_t> sums_;
};

}  // namespace ovnxmedia
