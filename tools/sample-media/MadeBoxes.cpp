#include "sample-media/MadeBoxes.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace made {
namespace {

uint64_t Number(std::string_view bytes, size_t at, size_t size) {
    if (at + size > bytes.size()) throw std::runtime_error("a box is cut short");
    uint64_t value = 0;
    for (const char each : bytes.substr(at, size))
        value = value << 8 | static_cast<unsigned char>(each);
    return value;
}

std::string Big(uint64_t value, size_t size) {
    std::string bytes;
    while (size-- > 0)
        bytes += static_cast<char>(value >> 8 * size);
    return bytes;
}

// Corrects the positions of chunks after frames were moved. Recurses into the boxes on the way to the tables.
void MoveChunks(std::string& bytes, size_t from, size_t to, uint64_t by) {
    for (const Box& box : Boxes(std::string_view(bytes).substr(from, to - from))) {
        const size_t content = from + box.content;
        for (const char* parent : {"trak", "mdia", "minf", "stbl"})
            if (box.type == parent) MoveChunks(bytes, content, from + box.end, by);
        const size_t width = box.type == "stco" ? 4 : box.type == "co64" ? 8 : 0;
        for (size_t at = content + 8; width > 0 && at < from + box.end; at += width)
            bytes.replace(at, width, Big(Number(bytes, at, width) + by, width));
    }
}

// What precedes the boxes in the content of another.
size_t FieldsOf(std::string_view type) {
    return type == "stsd" ? 8 : type == "avc1" ? 78 : 0;
}

}  // namespace

std::vector<Box> Boxes(std::string_view bytes) {
    std::vector<Box> boxes;
    for (size_t at = 0; at < bytes.size();) {
        uint64_t size = Number(bytes, at, 4);
        const bool isLarge = size == 1;
        if (isLarge) size = Number(bytes, at + 8, 8);
        if (size < 8 || size > bytes.size() - at) throw std::runtime_error("a box of no true size");
        boxes.push_back({std::string(bytes.substr(at + 4, 4)), at, at + (isLarge ? 16 : 8), at + size});
        at += size;
    }
    return boxes;
}

std::string_view BoxAt(std::string_view bytes, std::string_view path) {
    const size_t slash = path.find('/');
    for (const Box& box : Boxes(bytes)) {
        if (box.type != path.substr(0, slash)) continue;
        const std::string_view content = bytes.substr(box.content, box.end - box.content);
        if (slash == std::string_view::npos) return content;
        return BoxAt(content.substr(FieldsOf(box.type)), path.substr(slash + 1));
    }
    return {};
}

std::string BoxOf(std::string_view type, const std::string& content) {
    return Big(content.size() + 8, 4).append(type) + content;
}

std::string WithContent(std::string_view bytes, std::string_view path, const std::string& content) {
    const size_t slash = path.find('/');
    std::string out;
    bool isDone = false;
    for (const Box& box : Boxes(bytes)) {
        const std::string_view old = bytes.substr(box.content, box.end - box.content);
        if (isDone || box.type != path.substr(0, slash)) {
            out += bytes.substr(box.at, box.end - box.at);
            continue;
        }
        isDone = true;
        const size_t fields = FieldsOf(box.type);
        out += BoxOf(box.type, slash == std::string_view::npos
                                   ? content
                                   : std::string(old.substr(0, fields)) +
                                         WithContent(old.substr(fields), path.substr(slash + 1), content));
    }
    if (!isDone) throw std::runtime_error("there is no such box");
    return out;
}

void EditMovie(const std::string& path, bool moovInFront, const std::string& tagc) {
    std::ifstream in(path, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(in), {}};
    const std::vector<Box> boxes = Boxes(bytes);
    const Box& moov = boxes.back();
    const Box udta = Boxes(std::string_view(bytes).substr(moov.content)).back();
    if (moov.type != "moov" || udta.type != "udta") throw std::runtime_error("an unexpected end of a movie");
    if (!tagc.empty()) {
        const size_t size = 8 + tagc.size();
        bytes += Big(size, 4) + "tagc" + tagc;
        for (const size_t at : {moov.at, moov.content + udta.at})
            bytes.replace(at, 4, Big(Number(bytes, at, 4) + size, 4));
    }
    if (moovInFront) {
        std::string head = bytes.substr(moov.at);
        MoveChunks(head, 8, head.size(), head.size());
        bytes.resize(moov.at);
        bytes.insert(boxes.front().end, head);
    }
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    if (!(out << bytes << std::flush)) throw std::runtime_error("cannot write " + path);
}

}  // namespace made
