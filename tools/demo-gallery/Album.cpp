#include "demo-gallery/Album.h"

#include "demo-gallery/Blend.h"

namespace demo {
namespace {

// A time of day: the sky and its light.
struct Hour {
    Gradient sky;
    Rgb light;
    int stars;
    double lightX;
    double lightY;
    double lightSize;
    double darkness;  // of the land
};

constexpr Hour kHours[] = {
    {{{64, 96, 168}, {255, 196, 160}}, {255, 232, 196}, 0, 0.5, 0.44, 0.06, 0.1},   // dawn
    {{{66, 140, 214}, {206, 232, 244}}, {255, 252, 236}, 0, 1.35, 0.16, 0.05, 0},   // day
    {{{74, 48, 110}, {255, 142, 84}}, {255, 214, 130}, 30, 1.1, 0.42, 0.09, 0.25},  // dusk
    {{{10, 16, 44}, {58, 74, 128}}, {236, 238, 226}, 160, 1.3, 0.2, 0.055, 0.55},   // night
    {{{40, 84, 96}, {244, 206, 132}}, {255, 238, 184}, 0, 0.85, 0.36, 0.07, 0.15},  // afternoon
};

struct Shot {
    const char* title;
    Kind kind;
    int day;     // before the album's last
    int minute;  // of that day
    int hour;    // in kHours
};

struct Game {
    const char* name;
    const char* shortName;
    Scene scene;
    std::vector<Shot> shots;
};

constexpr Kind kShot = Kind::kScreenshot;
constexpr Kind kPhoto = Kind::kPhoto;
constexpr Kind kBest = Kind::kHighlight;
constexpr Kind kClip = Kind::kVideo;
constexpr Kind kBestClip = Kind::kHighlightVideo;

Game Rally() {
    Scene scene;
    scene.land = Land::kMesas;
    scene.ranges = {{206, 128, 96}, {104, 42, 38}};
    return {"Rustwind Rally",
            "rustwind",
            scene,
            {{"Start line", kShot, 0, 1130, 2},
             {"Photo finish", kBestClip, 0, 1151, 2},
             {"Photo finish", kBest, 0, 1150, 2},
             {"Red mesas at noon", kShot, 2, 890, 1},
             {"Second lap", kClip, 2, 902, 4},
             {"Dust on the ridge", kShot, 9, 1210, 0},
             {"Night stage", kShot, 9, 1290, 3},
             {"The long straight", kPhoto, 23, 1075, 4}}};
}

Game Lanterns() {
    Scene scene;
    scene.land = Land::kPeaks;
    scene.ranges = {{92, 104, 150}, {30, 36, 66}};
    scene.count = 3;
    scene.horizon = 0.6;
    scene.water = true;
    scene.lanterns = 16;
    return {"Nine Lanterns",
            "lanterns",
            scene,
            {{"Lanterns over the lake", kPhoto, 0, 1310, 3},
             {"Ninth lantern", kBestClip, 0, 1322, 3},
             {"Evening ferry", kPhoto, 4, 1188, 2},
             {"Before the festival", kShot, 4, 1120, 4},
             {"Morning mist", kPhoto, 16, 480, 0},
             {"The quiet shore", kPhoto, 30, 1260, 3}}};
}

Game Coast() {
    Scene scene;
    scene.land = Land::kHills;
    scene.ranges = {{96, 150, 160}, {30, 92, 84}};
    scene.count = 3;
    scene.horizon = 0.58;
    scene.water = true;
    // A name beyond ASCII, as games have them.
    return {"Drachenk\xC3\xBCste",
            "drachen",
            scene,
            {{"Klippe", kShot, 1, 700, 1},
             {"Bucht am Abend", kShot, 1, 1204, 2},
             {"\xC3\x9C"
              "berfahrt",
              kClip, 1, 1212, 4},
             {"Leuchtfeuer", kBest, 6, 1330, 3},
             {"Stille See", kShot, 12, 560, 0},
             {"Heimkehr", kShot, 34, 1115, 4}}};
}

Game Forest() {
    Scene scene;
    scene.land = Land::kPines;
    scene.ranges = {{128, 160, 138}, {18, 46, 38}};
    scene.count = 5;
    scene.horizon = 0.45;
    return {"Moss and Iron",
            "mossiron",
            scene,
            {{"First light in the pines", kShot, 2, 420, 0},
             {"Iron gate road", kShot, 2, 455, 4},
             {"Falling moss", kClip, 5, 1001, 0},
             {"Ridge above the mine", kShot, 5, 1020, 1},
             {"Lost at midnight", kShot, 13, 1428, 3},
             {"Fog horn", kBest, 20, 1166, 2},
             {"Last camp", kShot, 37, 1222, 2}}};
}

Game Orbit() {
    Scene scene;
    scene.land = Land::kHills;
    scene.ranges = {{108, 84, 148}, {40, 28, 70}};
    scene.count = 3;
    scene.horizon = 0.72;
    scene.isPlanet = true;
    return {"Orbit Garden",
            "orbit",
            scene,
            {{"Ringrise", kPhoto, 3, 1250, 3},
             {"Greenhouse seven", kShot, 3, 1233, 2},
             {"Slow dawn", kClip, 3, 1266, 3},
             {"Second harvest", kBest, 11, 1090, 4},
             {"Above the terraces", kPhoto, 11, 1102, 2},
             {"Long orbit", kShot, 27, 1300, 3}}};
}

Game Harbour() {
    Scene scene;
    scene.land = Land::kTowers;
    scene.ranges = {{96, 108, 146}, {26, 28, 48}};
    scene.count = 3;
    scene.horizon = 0.5;
    return {"Lumen Harbour",
            "lumen",
            scene,
            {{"Rooftops at dusk", kShot, 1, 1280, 2},
             {"All lights on", kShot, 1, 1352, 3},
             {"Monorail home", kClip, 7, 1295, 3},
             {"Skyline run", kBestClip, 7, 1301, 2},
             {"Early shift", kShot, 15, 390, 0},
             {"From the east pier", kPhoto, 24, 800, 1},
             {"Blackout over", kBest, 24, 1340, 3}}};
}

Scene At(Scene scene, const Hour& hour, uint32_t seed) {
    const auto darker = [&hour](Rgb colour) {
        const auto dim = [&hour](uint8_t value) { return static_cast<uint8_t>(value * (1 - hour.darkness)); };
        return Rgb{dim(colour.red), dim(colour.green), dim(colour.blue)};
    };
    scene.ranges = {darker(scene.ranges.top), darker(scene.ranges.bottom)};
    scene.sky = hour.sky;
    scene.light = scene.lanterns > 0 && hour.stars > 0 ? Rgb{255, 186, 104} : hour.light;
    scene.lightX = hour.lightX + 0.5 * Scatter(seed, 0) - 0.25;
    scene.lightY = hour.lightY;
    scene.lightSize = hour.lightSize;
    scene.stars = hour.stars;
    if (hour.stars == 0) scene.lanterns = 0;
    if (scene.isPlanet) {
        scene.light = {232, 190, 168};
        scene.lightSize = 0.17;
        scene.lightY = 0.32;
        scene.stars += 90;
    }
    scene.seed = seed;
    return scene;
}

}  // namespace

std::vector<Capture> MakeAlbum() {
    std::vector<Capture> captures;
    uint32_t seed = 3;
    for (const Game& game : {Rally(), Lanterns(), Coast(), Forest(), Orbit(), Harbour()})
        for (const Shot& shot : game.shots) {
            constexpr int kDay = 24 * 60;
            ++seed;
            captures.push_back({game.name, game.shortName, shot.title, shot.kind,
                                shot.day * kDay + kDay - shot.minute, At(game.scene, kHours[shot.hour], seed),
                                seed * 1.7});
        }
    return captures;
}

}  // namespace demo
