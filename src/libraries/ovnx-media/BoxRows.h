// Sums the samples of a picture into boxes as its rows come. Rows are first summed column by column, which
// compilers turn into vector instructions, and the columns into boxes once for each row of boxes.
#pragma once

#include <cstddef>

#include "libraries/ovnx-media/BoxAxis.h"
#include "libraries/ovnx-media/Picture.h"

namespace ovnxmedia {

// `Column` holds 65,535 times the largest sample, `Sum` the largest sample times BoxWeight.
template <typename Column, typename Sum>
class BoxRows {
  public:
    BoxRows(Size source, Size result, unsigned channels)
        : across_(source.width, result.width),
          down_(source.height, result.height),
          channels_(channels),
          columns_(size_t{source.width} * channels),
          sums_(size_t{result.width} * channels) {}

    static uint64_t BytesFor(Size source, Size result, unsigned channels) {
        return (uint64_t{source.width} * sizeof(Column) + uint64_t{result.width} * sizeof(Sum)) * channels;
    }

    // What the sums of a box are to be divided by.
    uint64_t BoxWeight() const { return uint64_t{across_.box()} * down_.box(); }

    // `row` is the next one from the top. `finish` is given the sums of each row of boxes that it completes.
    template <typename Sample, typename Finish>
    void Add(const Sample* row, Finish finish) {
        const BoxAxis::Share share = down_.Of(next_++);
        AddColumns(row, share.weight);
        filled_ += share.weight;
        if (filled_ < down_.box()) return;
        SumColumns();
        finish(static_cast<const Sum*>(sums_.data()));
        std::fill(sums_.begin(), sums_.end(), Sum{});
        filled_ = share.rest;
        if (share.rest > 0) AddColumns(row, share.rest);
    }

  private:
    template <typename Sample>
    void AddColumns(const Sample* row, uint16_t weight) {
        if (columnWeight_ + weight > UINT16_MAX) SumColumns();
        columnWeight_ += weight;
        Column* const columns = columns_.data();
        const size_t count = columns_.size();
        if (weight == 1) {
            for (size_t i = 0; i < count; ++i)
                columns[i] += row[i];
        } else {
            for (size_t i = 0; i < count; ++i)
                columns[i] += static_cast<Column>(row[i]) * weight;
        }
    }

    void SumColumns() {
        if (channels_ == 3)
            SumColumnsOf<3>();
        else
            SumColumnsOf<4>();
        std::fill(columns_.begin(), columns_.end(), Column{});
        columnWeight_ = 0;
    }

    template <unsigned kChannels>
    void SumColumnsOf() {
        Sum* sum = sums_.data();
        const uint32_t pixel = across_.pixel();
        uint32_t room = across_.box();
        for (size_t at = 0; at < columns_.size(); at += kChannels) {
            const uint32_t weight = std::min(pixel, room);
            AddPixel<kChannels>(&columns_[at], weight, sum);
            room -= weight;
            if (room > 0) continue;
            sum += kChannels;
            room = across_.box() - (pixel - weight);
            if (weight < pixel) AddPixel<kChannels>(&columns_[at], pixel - weight, sum);
        }
    }

    template <unsigned kChannels>
    static void AddPixel(const Column* columns, uint32_t weight, Sum* sum) {
        for (unsigned c = 0; c < kChannels; ++c)
            sum[c] += static_cast<Sum>(columns[c]) * weight;
    }

    const BoxAxis across_;
    const BoxAxis down_;
    const unsigned channels_;
    uint32_t next_ = 0;
    uint32_t filled_ = 0;        // of the row of boxes at work
    uint32_t columnWeight_ = 0;  // of the rows in columns_
    KXP::SlabVector<Column> columns_;
    KXP::SlabVector<Sum> sums_;
};

}  // namespace ovnxmedia
