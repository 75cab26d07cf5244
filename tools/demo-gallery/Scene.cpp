#include "demo-gallery/Scene.h"

#include <algorithm>
#include <cmath>

#include "demo-gallery/Blend.h"
#include "demo-gallery/Skyline.h"

namespace demo {
namespace {

constexpr Rgb kWindowLight = {255, 214, 138};
constexpr double kMist = 0.3;  // how much of it lies at the foot of a range

Rgb& At(Picture& picture, int x, int y) {
    return picture.pixels[static_cast<size_t>(y) * picture.width + static_cast<size_t>(x)];
}

// A disc whose colour fades with the square of the distance; all in pixels.
void Glow(Picture& picture, double x, double y, double radius, Rgb colour, double strength) {
    const int top = std::max(0, static_cast<int>(y - radius));
    const int bottom = std::min<int>(picture.height - 1, static_cast<int>(y + radius));
    const int left = std::max(0, static_cast<int>(x - radius));
    const int right = std::min<int>(picture.width - 1, static_cast<int>(x + radius));
    for (int row = top; row <= bottom; ++row)
        for (int column = left; column <= right; ++column) {
            const double across = (column - x) / radius;
            const double down = (row - y) / radius;
            const double near = std::max(0.0, 1 - across * across - down * down);
            Rgb& pixel = At(picture, column, row);
            pixel = Blend(pixel, colour, strength * near * near);
        }
}

}  // namespace

Painter::Painter(const Scene& scene, uint16_t width, uint16_t height)
    : scene_(scene), background_{width, height, {}} {
    background_.pixels.resize(size_t{width} * height);
    DrawSky();
    DrawStars();
    DrawLight();
    if (scene_.isPlanet) DrawRing();
}

Picture Painter::Paint(double seconds) const {
    Picture picture = background_;
    for (int i = 0; i < scene_.count; ++i)
        DrawRange(picture, i, seconds);
    if (scene_.water) DrawWater(picture, seconds);
    DrawLanterns(picture, seconds);
    return picture;
}

void Painter::DrawSky() {
    const double end = background_.height * std::min(1.0, scene_.horizon + 0.15);
    for (int y = 0; y < background_.height; ++y)
        std::fill_n(&At(background_, 0, y), background_.width,
                    Blend(scene_.sky.top, scene_.sky.bottom, y / end));
}

void Painter::DrawStars() {
    for (uint32_t i = 0; i < static_cast<uint32_t>(scene_.stars); ++i) {
        const double bright = Scatter(scene_.seed, i + 2000);
        Glow(background_, Scatter(scene_.seed, i) * background_.width,
             Scatter(scene_.seed, i + 1000) * background_.height * scene_.horizon,
             background_.height * (0.0022 + 0.003 * bright * bright), {255, 250, 240}, 0.3 + 0.7 * bright);
    }
}

void Painter::DrawLight() {
    const double height = background_.height;
    const double x = scene_.lightX * height;
    const double y = scene_.lightY * height;
    const double radius = scene_.lightSize * height;
    Glow(background_, x, y, radius * 9, scene_.light, 0.45);
    Glow(background_, x, y, radius * 3, scene_.light, 0.5);
    for (int row = std::max(0, static_cast<int>(y - radius - 1)); row < std::min(height, y + radius + 1);
         ++row)
        for (int column = std::max(0, static_cast<int>(x - radius - 1));
             column < std::min<double>(background_.width, x + radius + 1); ++column) {
            const double across = (column - x) / radius;
            const double down = (row - y) / radius;
            // Planets turn their dark side to the lower right, and have bands.
            const double shade = scene_.isPlanet ? 0.55 * (across + down) + 0.1 * std::sin(14 * down) : 0;
            const Rgb colour = Blend(scene_.light, scene_.sky.top, shade);
            Rgb& pixel = At(background_, column, row);
            pixel = Blend(pixel, colour, (1 - std::hypot(across, down)) * radius + 0.5);
        }
}

// An ellipse around the planet, which hides its far half.
void Painter::DrawRing() {
    const double radius = scene_.lightSize * background_.height;
    for (int y = 0; y < background_.height; ++y)
        for (int x = 0; x < background_.width; ++x) {
            const double across = (x - scene_.lightX * background_.height) / radius;
            const double down = (y - scene_.lightY * background_.height) / radius + 0.3 * across;
            const double distance = std::hypot(across, down * 4.5);
            const bool isHidden = down < 0 && std::hypot(across, down - 0.3 * across) < 1;
            const double thick = 0.26 - std::abs(distance - 1.75);
            if (isHidden || thick <= 0 || std::abs(distance - 1.8) < 0.02) continue;
            Rgb& pixel = At(background_, x, y);
            pixel = Blend(pixel, scene_.light, std::min(0.75, thick * 6));
        }
}

Rgb Painter::RangeColour(int index) const {
    return Blend(scene_.ranges.top, scene_.ranges.bottom, index / std::max(1.0, scene_.count - 1.0));
}

void Painter::DrawRange(Picture& picture, int index, double seconds) const {
    const double nearness = (index + 1.0) / scene_.count;
    const double height = picture.height;
    const double foot = scene_.water ? scene_.horizon : scene_.horizon + (1 - scene_.horizon) * nearness;
    const double rise = scene_.water ? 0.34 - 0.2 * nearness : 0.2 + 0.1 * nearness;
    const uint32_t seed = scene_.seed * 31 + static_cast<uint32_t>(index);
    const double moved = seconds * 0.22 * nearness * nearness + index * 3.7;
    const double scale = 1.6 - 0.7 * nearness;
    std::vector<double> tops;
    tops.reserve(picture.width);
    for (int x = 0; x < picture.width; ++x)
        tops.push_back((foot - rise * RiseAt(scene_.land, (x / height + moved) * scale, seed)) * height);
    const Rgb colour = RangeColour(index);
    const int last = scene_.water ? static_cast<int>(scene_.horizon * height) : picture.height;
    const int first = std::max(0, static_cast<int>(*std::min_element(tops.begin(), tops.end())));
    for (int y = first; y < last; ++y) {
        const double depth = (y - (foot - rise) * height) / (rise * height * 1.6);
        const Rgb misty = Blend(colour, scene_.sky.bottom, kMist * (1 - nearness * 0.8) * depth);
        for (int x = 0; x < picture.width; ++x) {
            const double cover = y + 1 - tops[static_cast<size_t>(x)];
            if (cover <= 0) continue;
            Rgb& pixel = At(picture, x, y);
            pixel = cover >= 1 ? misty : Blend(pixel, misty, cover);
            if (scene_.land == Land::kTowers && cover > height * 0.02 &&
                IsWindow((x / height + moved) * scale, y / height * scale, seed))
                pixel = Blend(pixel, kWindowLight, 0.35 + 0.5 * nearness);
        }
    }
}

void Painter::DrawWater(Picture& picture, double seconds) const {
    const int shore = static_cast<int>(scene_.horizon * picture.height);
    for (int y = shore; y < picture.height; ++y) {
        const double near = (y - shore) / static_cast<double>(picture.height - shore);
        const int mirrored = std::max(0, shore - 1 - static_cast<int>((y - shore) * 1.15));
        for (int x = 0; x < picture.width; ++x) {
            const double wave = std::sin(y * 0.9 / (0.3 + near) + seconds * 3) +
                                std::sin(x * 0.02 + y * 0.5 / (0.3 + near) - seconds * 2);
            const int from = std::clamp(x + static_cast<int>(wave * 5 * near), 0, picture.width - 1);
            At(picture, x, y) =
                Blend(At(picture, from, mirrored), scene_.sky.top, 0.25 + 0.3 * near + 0.04 * wave);
        }
    }
}

void Painter::DrawLanterns(Picture& picture, double seconds) const {
    const double height = picture.height;
    for (uint32_t i = 0; i < static_cast<uint32_t>(scene_.lanterns); ++i) {
        const double size = 0.01 + 0.02 * Scatter(scene_.seed, i + 300);
        const double sway = 0.02 * std::sin(seconds * 1.3 + i);
        const double x = (Scatter(scene_.seed, i + 100) * 1.8 + sway) * height;
        const double y = Scatter(scene_.seed, i + 200) * 0.9 - seconds * size * 1.5;
        const double wrapped = (y - std::floor(y)) * height;
        Glow(picture, x, wrapped, size * 3.2 * height, scene_.light, 0.5);
        Glow(picture, x, wrapped, size * height, {255, 246, 220}, 1);
    }
}

}  // namespace demo
