// The boxes of an MP4 file, for tests: how they lie, and edits that no muxer makes.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace made {

struct Box {
    std::string type;
    size_t at;       // of its header, in the text that was listed
    size_t content;  // of what follows the header
    size_t end;
};

// The boxes of `bytes` in a row, which must be whole.
std::vector<Box> Boxes(std::string_view bytes);

// The content of the first box at a path like "moov/udta/tagc"; empty when there is none. Knows where boxes
// begin in sample descriptions of videos.
std::string_view BoxAt(std::string_view bytes, std::string_view path);

// The same bytes with another content of that box. Does not correct the places of frames behind it.
std::string WithContent(std::string_view bytes, std::string_view path, const std::string& content);
std::string BoxOf(std::string_view type, const std::string& content);

// Gives the movie at `path`, which a muxer has ended with its "moov" and that with its "udta", a box "tagc"
// of this content, unless that is empty, and moves the "moov" before the frames on demand.
void EditMovie(const std::string& path, bool moovInFront, const std::string& tagc);

}  // namespace made
