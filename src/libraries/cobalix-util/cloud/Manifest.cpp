#include "libraries/cobalix-util/cloud/Manifest.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <stdexcept>
#include <string_view>

#include "libraries/cobalix-util/cloud/Error.h"

// RapidJSON under a name of our own: a program may hold both this library and one whose assertions do other
// things. Read by events and in place, so that nothing is allocated and no value can be taken for another.
#define RAPIDJSON_NAMESPACE KXP::Cloud::json
#define RAPIDJSON_NAMESPACE_BEGIN \
    namespace KXP::Cloud {        \
    namespace json {
#define RAPIDJSON_NAMESPACE_END \
    }                           \
    }
#define RAPIDJSON_ASSERT(x) (static_cast<bool>(x) ? static_cast<void>(0) : throw std::logic_error(#x))
#include <rapidjson/error/en.h>
#include <rapidjson/reader.h>

namespace KXP::Cloud {
namespace {

constexpr size_t kMaxPathBytes = 1024;
constexpr size_t kMaxNameBytes = 255;
constexpr size_t kDigestDigits = 64;
// Of what an entry holds beside its own fields; the parser calls itself for each level.
constexpr int kMaxDepth = 32;
constexpr size_t kParserSlack = 16;

bool IsPlainName(std::string_view name) {
    return !name.empty() && name.size() <= kMaxNameBytes && name != "." && name != "..";
}

bool IsPlainCharacter(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= ' ' && byte != 0x7F && byte != '\\';
}

bool IsDigest(std::string_view text) {
    return text.size() == kDigestDigits && text.find_first_not_of("0123456789abcdef") == text.npos;
}

// Digits alone: a sign, a fraction or an exponent makes no size.
bool ReadSize(std::string_view text, uint64_t& size) {
    const char* end = text.data() + text.size();
    const auto [behind, error] = std::from_chars(text.data(), end, size);
    return error == std::errc() && behind == end && size <= kMaxFileBytes;
}

class ManifestReader {
  public:
    std::vector<ManifestFile> Take() { return std::move(files_); }

    bool Null() { return Other(); }
    bool Bool(bool) { return Other(); }
    bool Int(int) { return Other(); }
    bool Uint(unsigned) { return Other(); }
    bool Int64(int64_t) { return Other(); }
    bool Uint64(uint64_t) { return Other(); }
    bool Double(double) { return Other(); }

    bool RawNumber(const char* text, json::SizeType length, bool) {
        if (depth_ != kInEntry || field_ != kSize) return Other();
        field_ = kNone;
        Require(!hasSize_ && ReadSize({text, length}, file_.size), "a size that is none");
        hasSize_ = true;
        return true;
    }

    bool String(const char* text, json::SizeType length, bool) {
        if (depth_ != kInEntry) return Other();
        if (field_ == kPath) {
            Require(file_.path.empty(), "a file of two paths");
            file_.path.assign(text, length);
            Require(IsPlainPath(file_.path), "a path that may not be used");
        } else if (field_ == kSha256) {
            Require(file_.sha256.empty() && IsDigest({text, length}), "a digest that is none");
            file_.sha256.assign(text, length);
        } else {
            return Other();
        }
        field_ = kNone;
        return true;
    }

    bool Key(const char* text, json::SizeType length, bool) {
        if (depth_ != kInEntry) return true;
        const std::string_view name(text, length);
        field_ = name == "path" ? kPath : name == "size" ? kSize : name == "sha256" ? kSha256 : kOther;
        return true;
    }

    bool StartObject() {
        if (depth_ == kInArray) {
            file_ = {};
            hasSize_ = false;
        } else if (depth_ != kOutside) {
            Other();
        }
        return Enter();
    }
    bool EndObject(json::SizeType) {
        if (--depth_ == kInArray) AddFile();
        return true;
    }
    bool StartArray() {
        if (depth_ != kInManifest) Other();
        return Enter();
    }
    bool EndArray(json::SizeType) {
        --depth_;
        return true;
    }

  private:
    enum Depth : int { kOutside, kInManifest, kInArray, kInEntry };
    enum Field { kNone, kPath, kSize, kSha256, kOther };

    static void Require(bool good, const char* otherwise) {
        if (!good) throw Error(std::string("the manifest holds ") + otherwise);
    }

    // A value that is none of ours, which only a field that is none of ours may have.
    bool Other() {
        Require(depth_ > kInEntry || (depth_ == kInEntry && field_ == kOther), "a value of a wrong type");
        return true;
    }

    bool Enter() {
        Require(++depth_ <= kMaxDepth, "values within values too deep");
        return true;
    }

    void AddFile() {
        Require(!file_.path.empty() && hasSize_ && !file_.sha256.empty(), "a file without all its fields");
        const auto [at, isNew] = seen_.emplace(file_.path, files_.size());
        if (!isNew) {
            const ManifestFile& first = files_[at->second];
            Require(first.size == file_.size && first.sha256 == file_.sha256, "two files of one path");
            return;
        }
        Require(files_.size() < kMaxManifestFiles, "too many files");
        files_.push_back(std::move(file_));
    }

    int depth_ = kOutside;
    Field field_ = kNone;
    ManifestFile file_;
    bool hasSize_ = false;
    std::vector<ManifestFile> files_;
    std::map<std::string, size_t> seen_;
};

}  // namespace

std::vector<ManifestFile> ParseManifest(const std::string& text) {
    if (text.size() > kMaxManifestBytes) throw Error("the manifest is too large");
    // The parser would take it for the end of the text.
    if (text.find('\0') != text.npos) throw Error("the manifest is no text");
    // Of a character that the text breaks off in, the parser takes all bytes before it complains.
    std::string copy = text + std::string(kParserSlack, '\0');
    json::InsituStringStream stream(copy.data());
    json::Reader reader;
    ManifestReader events;
    // Numbers as strings: the parser's own arithmetic overflows on long exponents.
    constexpr unsigned kFlags =
        json::kParseInsituFlag | json::kParseValidateEncodingFlag | json::kParseNumbersAsStringsFlag;
    const json::ParseResult result = reader.Parse<kFlags>(stream, events);
    if (result.IsError())
        throw Error("the manifest is no JSON: " + std::string(json::GetParseError_En(result.Code())) +
                    " At " + std::to_string(result.Offset()));
    return events.Take();
}

bool IsPlainPath(const std::string& path) {
    if (path.size() > kMaxPathBytes || !std::all_of(path.begin(), path.end(), IsPlainCharacter)) return false;
    std::string_view rest = path;
    for (size_t slash = 0; (slash = rest.find('/')) != rest.npos; rest.remove_prefix(slash + 1))
        if (!IsPlainName(rest.substr(0, slash))) return false;
    return IsPlainName(rest);
}

}  // namespace KXP::Cloud
