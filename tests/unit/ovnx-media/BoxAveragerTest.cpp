#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "libraries/ovnx-media/BoxAverager.h"

namespace {

using namespace ovnxmedia;

struct Case {
    Size source;
    Size result;
    unsigned channels;
};

// How much of pixel `i` lies in box `b`, in pixels.
double Overlap(uint32_t i, uint32_t b, uint32_t pixels, uint32_t boxes) {
    const double length = double{1} * pixels / boxes;
    return std::max(0.0, std::min(i + 1.0, (b + 1) * length) - std::max(i + 0.0, b * length));
}

// The definition, pixel by pixel.
std::vector<double> Expected(const Case& at, const std::vector<uint8_t>& samples) {
    std::vector<double> result;
    for (uint32_t v = 0; v < at.result.height; ++v) {
        for (uint32_t u = 0; u < at.result.width; ++u) {
            double sums[4] = {};
            double area = 0;
            for (size_t i = 0; i < samples.size(); i += at.channels) {
                const auto x = static_cast<uint32_t>(i / at.channels % at.source.width);
                const auto y = static_cast<uint32_t>(i / at.channels / at.source.width);
                const double part = Overlap(x, u, at.source.width, at.result.width) *
                                    Overlap(y, v, at.source.height, at.result.height);
                const double alpha = at.channels == 4 ? samples[i + 3] : 255;
                for (unsigned c = 0; c < 3; ++c)
                    sums[c] += part * alpha * samples[i + c];
                sums[3] += part * alpha;
                area += part;
            }
            for (unsigned c = 0; c < 3; ++c)
                result.push_back(sums[3] > 0 ? sums[c] / sums[3] : 0);
            if (at.channels == 4) result.push_back(sums[3] / area);
        }
    }
    return result;
}

void ExpectMeans(const Case& at) {
    std::mt19937 random(7);
    std::vector<uint8_t> samples(size_t{at.source.width} * at.source.height * at.channels);
    for (uint8_t& sample : samples)
        sample = random() % 4 == 0 ? 0 : static_cast<uint8_t>(random() | 128);
    BoxAverager inOrder(at.source, at.result, at.channels);
    SparseAverager sparse(at.source, at.result, at.channels);
    for (uint32_t y = 0; y < at.source.height; ++y) {
        const uint8_t* const row = samples.data() + size_t{y} * at.source.width * at.channels;
        inOrder.AddRow(row);
        std::vector<uint8_t> odd;
        for (uint32_t x = 1; x < at.source.width; x += 2)
            odd.insert(odd.end(), row + size_t{x} * at.channels, row + size_t{x + 1} * at.channels);
        sparse.AddPixels(y, 1, 2, at.source.width / 2, odd.data());
        for (uint32_t x = 0; x < at.source.width; x += 2)
            sparse.AddPixels(y, x, 1, 1, row + size_t{x} * at.channels);
    }
    const Picture picture = inOrder.Take();
    EXPECT_EQ(picture.samples, sparse.Take().samples);
    const std::vector<double> expected = Expected(at, samples);
    ASSERT_EQ(picture.samples.size(), expected.size());
    for (size_t i = 0; i < expected.size(); ++i)
        ASSERT_LE(std::abs(picture.samples[i] - expected[i]), 0.5 + 1e-6) << i;
}

TEST(BoxAveragers, GiveTheMeanOfTheAreaInAnyOrder) {
    // The long ones are where a column would run over.
    for (const Case& at : {Case{{7, 5}, {7, 5}, 3}, Case{{12, 8}, {4, 2}, 4}, Case{{41, 23}, {12, 7}, 3},
                           Case{{41, 23}, {40, 22}, 4}, Case{{5, 9}, {1, 1}, 4}, Case{{1, 150001}, {1, 2}, 4},
                           Case{{150001, 1}, {2, 1}, 3}}) {
        SCOPED_TRACE(std::to_string(at.source.width) + "x" + std::to_string(at.source.height));
        ExpectMeans(at);
    }
}

TEST(FitInside, KeepsTheAspectAndNeverEnlarges) {
    const struct {
        Size source, box, expected;
    } cases[] = {{{3840, 2160}, {320, 180}, {320, 180}}, {{2160, 3840}, {320, 180}, {101, 180}},
                 {{16, 9}, {320, 180}, {16, 9}},         {{1000, 10}, {100, 100}, {100, 1}},
                 {{1, 65535}, {9, 9}, {1, 9}},           {{401, 400}, {400, 400}, {400, 399}}};
    for (const auto& [source, box, expected] : cases) {
        const Size result = FitInside(source, box);
        EXPECT_EQ(std::pair(result.width, result.height), std::pair(expected.width, expected.height));
    }
}

}  // namespace
