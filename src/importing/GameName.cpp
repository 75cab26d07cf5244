#include "importing/GameName.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <string_view>

namespace importing {
namespace {

// In lower case.
constexpr std::array kCommonFolders{
    "",         "bilder", "captures",   "desktop", "documents",   "downloads",   "home", "media", "movies",
    "pictures", "public", "recordings", "replays", "screencasts", "screenshots", "temp", "tmp",   "videos"};
constexpr std::array kCommonWords{"at",         "capture",   "clip",   "from",       "image",
                                  "of",         "recording", "replay", "screencast", "screen",
                                  "screenshot", "shot",      "vid",    "video",      "img"};

std::string LowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

template <typename List>
bool Contains(const List& list, const std::string& text) {
    return std::find(list.begin(), list.end(), LowerCase(text)) != list.end();
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// Where a number of eight digits begins, with or without signs between year, month and day.
size_t DateIn(const std::string& name) {
    for (size_t at = 0; at < name.size(); ++at) {
        if (!IsDigit(name[at]) || (at > 0 && IsDigit(name[at - 1]))) continue;
        size_t digits = 0;
        for (size_t i = at; i < name.size() && digits < 8; ++i) {
            const bool isSign = (digits == 4 || digits == 6) && std::string_view("-._").find(name[i]) < 3;
            if (IsDigit(name[i]))
                ++digits;
            else if (!isSign || !IsDigit(name[i - 1]))
                break;
        }
        if (digits == 8) return at;
    }
    return name.size();
}

std::string TitleIn(const std::string& name) {
    std::string title;
    std::string word;
    const auto end = [&] {
        if (!word.empty() && !Contains(kCommonWords, word)) title += (title.empty() ? "" : " ") + word;
        word.clear();
    };
    for (const char c : name.substr(0, DateIn(name))) {
        if (std::string_view(" _-()[]").find(c) != std::string_view::npos)
            end();
        else
            word += c;
    }
    end();
    const bool isNumber =
        std::all_of(title.begin(), title.end(), [](char c) { return IsDigit(c) || c == ' '; });
    // A folder that begins with a dot would be hidden, or another one.
    return isNumber || title[0] == '.' ? "" : title;
}

}  // namespace

std::string GameOf(const std::string& path) {
    const std::filesystem::path file(path);
    std::string folder = file.parent_path().filename().string();
    if (!Contains(kCommonFolders, folder) && folder[0] != '.') return folder;
    const std::string title = TitleIn(file.stem().string());
    return title.empty() ? kOtherGame : title;
}

}  // namespace importing
