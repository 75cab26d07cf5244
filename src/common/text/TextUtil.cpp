#include "common/text/TextUtil.h"

#include <cstring>
#include <random>
#include <sstream>

#include <sys/random.h>

#include "common/results/Exception.h"

namespace KXP {
namespace {

// Random bytes of the system's, fetched for 16 identifiers at once. Plain bytes: a thread's object with a
// destructor would keep the library mapped until the thread ends.
struct RandomBytes {
    void Take(unsigned char* to, size_t size) {
        if (left < size) Refill();
        left -= size;
        std::memcpy(to, bytes + left, size);
    }

    void Refill() {
        if (getentropy(bytes, sizeof bytes) != 0) {  // a sandbox may forbid it
            std::random_device random;
            for (unsigned char& byte : bytes)
                byte = static_cast<unsigned char>(random());
        }
        left = sizeof bytes;
    }

    unsigned char bytes[256];
    size_t left;
};
thread_local RandomBytes t_random;

}  // namespace

std::vector<std::string> SplitString(const std::string& text, const std::string& delimiter) {
    if (delimiter.empty()) throw Exception(Code::kInvalidArgument, "Empty delimeter string", 0);
    std::vector<std::string> pieces;
    size_t from = 0;
    for (size_t at = text.find(delimiter); at != std::string::npos; at = text.find(delimiter, from)) {
        pieces.push_back(text.substr(from, at - from));
        from = at + delimiter.size();
    }
    pieces.push_back(text.substr(from));
    return pieces;
}

std::vector<std::string> SplitString(const std::string& text, char delimiter) {
    std::vector<std::string> pieces;
    std::istringstream in(text);
    for (std::string piece; std::getline(in, piece, delimiter);)
        pieces.push_back(piece);
    return pieces;
}

bool StringEndsWith(std::string_view text, std::string_view ending) {
    return text.size() >= ending.size() && text.substr(text.size() - ending.size()) == ending;
}

std::string GenerateGUID() {
    char text[kGuidLength + 1];
    GenerateGUID(text);
    return text;
}

void GenerateGUID(char (&text)[kGuidLength + 1]) {
    unsigned char id[16];
    t_random.Take(id, sizeof id);
    id[6] = (id[6] & 0x0F) | 0x40;  // the version: random
    id[8] = (id[8] & 0x3F) | 0x80;  // the variant
    char* to = text;
    for (size_t i = 0; i < sizeof id; ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) *to++ = '-';
        *to++ = "0123456789ABCDEF"[id[i] >> 4];
        *to++ = "0123456789ABCDEF"[id[i] & 0x0F];
    }
    *to = '\0';
}

}  // namespace KXP
