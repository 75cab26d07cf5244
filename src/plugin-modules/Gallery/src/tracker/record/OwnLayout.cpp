#include "plugin-modules/Gallery/src/tracker/record/OwnLayout.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include <sys/stat.h>

#include "base/FileCalls.h"
#include "base/Text.h"
#include "common/json/JsonParse.h"
#include "common/json/JsonTextStream.h"
#include "plugin-modules/Gallery/src/tracker/record/RecordFields.h"

namespace {

// Stays in the processor's cache. A record that takes more than kMostOfRecord is left to the parser.
constexpr size_t kPiece = size_t{128} << 10;
constexpr size_t kMostOfRecord = size_t{16} << 10;
constexpr size_t kSlack = KXP::kJsonTextSlack;

constexpr std::string_view kBegin = "{\n\t\"UGC\": [";
constexpr std::string_view kEnd = "\n\t]";
constexpr std::string_view kWithout = "{\n\t\"UGC\": []";
constexpr std::string_view kIndent = "\n\t\t\t\t";
constexpr size_t kDepth = 2;  // of a record

// The bytes of a file, of which a piece is in memory, followed by kSlack zero bytes.
class Pieces {
  public:
    Pieces(KXP::DescriptorRef file, size_t size)
        : file_(file), left_(size), bytes_(static_cast<char*>(KXP::AllocateInSlab(kPiece + kSlack))) {}

    const char* begin() const { return bytes_.get(); }
    // Drops what is before `at`, and reads on. Returns the end of the piece, or null when a read fails or the
    // file has become shorter.
    const char* Refill(const char* at, const char* end) {
        const auto kept = static_cast<size_t>(end - at);
        std::memmove(bytes_.get(), at, kept);
        const size_t more = std::min(left_, kPiece - kept);
        if (!Read(bytes_.get() + kept, more)) return nullptr;
        std::memset(bytes_.get() + kept + more, 0, kSlack);
        return bytes_.get() + kept + more;
    }
    size_t left() const { return left_; }
    bool Read(char* to, size_t size) {
        if (KXP::ReadAt(file_, position_, to, size) != size) return false;
        position_ += size;
        left_ -= size;
        return true;
    }

  private:
    const KXP::DescriptorRef file_;
    uint64_t position_ = 0;
    size_t left_;
    const std::unique_ptr<char[], KXP::SlabDeleter> bytes_;
};

// Each Take passes over what it expects and returns true, or returns false.
class Reader {
  public:
    Reader(KXP::DescriptorRef file, size_t size) : pieces_(file, size), at_(pieces_.begin()), end_(at_) {}

    bool TakeRecords(std::vector<NewUGC>& records) {
        if (!Refill() || !Take(kBegin)) return false;
        do {
            if (static_cast<size_t>(end_ - at_) < kMostOfRecord && pieces_.left() > 0 && !Refill())
                return false;
            TrackedUGC& record = *records.emplace_back(std::make_shared<TrackedUGC>());
            record.id = -1;
            if (!TakeIndent(kDepth) || !TakeFields(kRecordFileFields, kDepth, record)) return false;
            last_ = &record;
        } while (Take(","));
        return Take(kEnd);
    }

    // What is beside the records, as a document.
    bool TakeRest(KXP::Document& rest) {
        const auto here = static_cast<size_t>(end_ - at_);
        const size_t more = pieces_.left();
        const size_t size = kWithout.size() + here + more;
        const std::unique_ptr<char[], KXP::SlabDeleter> text(
            static_cast<char*>(KXP::AllocateInSlab(size + kSlack)));
        char* to = text.get();
        std::memcpy(to, kWithout.data(), kWithout.size());
        std::memcpy(to += kWithout.size(), at_, here);
        if (!pieces_.Read(to += here, more)) return false;
        std::memset(to + more, 0, kSlack);
        // After a zero byte there may be a newer text.
        if (std::string_view(text.get(), size).find('\0') != std::string_view::npos) return false;
        return !KXP::ParseJSONInPlace(text.get(), size, rest).IsError();
    }

  private:
    // Sets one member of a record.
    struct TakeMember {
        Reader& from;
        TrackedUGC& record;

        bool operator()(std::string TrackedUGC::*text) const {
            std::string_view taken;
            if (!from.TakeText(taken)) return false;
            record.*text = taken;
            return true;
        }
        // Most texts are those of the record before. Few captures have the same date.
        bool operator()(SharedText TrackedUGC::*text) const {
            std::string_view taken;
            if (!from.TakeText(taken)) return false;
            if (from.last_ && (from.last_->*text).view() == taken) {
                record.*text = from.last_->*text;
            } else {
                record.*text = text == &TrackedUGC::date ? SharedText(taken) : from.texts_.Share(taken);
            }
            return true;
        }
        // Only the low 32 bits, because numbers of the catalogue have no more.
        bool operator()(uint64_t TrackedUGC::*number) const {
            if (!from.TakeNumber(record.*number)) return false;
            record.*number = static_cast<uint32_t>(record.*number);
            return true;
        }
        template <typename Number>
        bool operator()(Number TrackedUGC::*number) const {
            return from.TakeNumber(record.*number);
        }
        bool operator()(RecordFields fields) const { return from.TakeFields(fields, kDepth + 1, record); }
    };

    bool Refill() {
        end_ = pieces_.Refill(at_, end_);
        at_ = pieces_.begin();
        return end_ != nullptr;
    }
    bool Take(std::string_view expected) {
        if (static_cast<size_t>(end_ - at_) < expected.size() ||
            std::memcmp(at_, expected.data(), expected.size()) != 0)
            return false;
        at_ += expected.size();
        return true;
    }
    bool TakeIndent(size_t depth) { return Take(kIndent.substr(0, depth + 1)); }

    // An object with fields of the list, in its order.
    bool TakeFields(RecordFields fields, size_t depth, TrackedUGC& record) {
        if (!Take("{")) return false;
        const RecordField* field = fields.begin();
        do {
            if (!TakeIndent(depth + 1) || !Take("\"")) return false;
            while (field != fields.end() && !TakeKey(field->key))
                ++field;
            if (field == fields.end() || !std::visit(TakeMember{*this, record}, field->member)) return false;
            ++field;
        } while (Take(","));
        return TakeIndent(depth) && Take("}");
    }
    // With the quote at its end and what follows that.
    bool TakeKey(std::string_view key) {
        constexpr std::string_view kAfter = "\": ";
        const char* const before = at_;
        if (Take(key) && Take(kAfter)) return true;
        at_ = before;
        return false;
    }
    template <typename Number>
    bool TakeNumber(Number& number) {
        const auto [stop, error] = std::from_chars(at_, end_, number);
        if (error != std::errc()) return false;
        const char* const digits = at_ + (*at_ == '-' ? 1 : 0);
        if (*digits == '0' && stop - digits > 1) return false;
        at_ = stop;
        return true;
    }
    // `text` is valid until the next call.
    bool TakeText(std::string_view& text) {
        const char* const quote = at_;
        if (!Take("\"")) return false;
        bool isEscaped = false;
        bool isAscii = true;
        for (PassPlain(); *at_ != '"'; PassPlain()) {
            if (static_cast<unsigned char>(*at_) < 0x20) return false;
            isAscii = isAscii && static_cast<unsigned char>(*at_) < 0x80;
            isEscaped = isEscaped || *at_ == '\\';
            at_ += *at_ == '\\' ? 2 : 1;
        }
        ++at_;
        if (isEscaped) return Unescape({quote, static_cast<size_t>(at_ - quote)}, text);
        text = {quote + 1, static_cast<size_t>(at_ - quote) - 2};
        return isAscii || KXP::IsValidUtf8(text);
    }
    // To the next character that may have a meaning.
    void PassPlain() {
        KXP::Word special = 0;
        while ((special = KXP::SpecialBytes(KXP::LoadWord(at_))) == 0)
            at_ += sizeof(KXP::Word);
        at_ += KXP::FirstMark(special);
    }
    bool Unescape(std::string_view quoted, std::string_view& text) {
        KXP::Document document;
        if (KXP::ParseJSON(quoted, document).IsError() || !document.IsString()) return false;
        unescaped_.assign(document.GetString(), document.GetStringLength());
        text = unescaped_;
        return true;
    }

    Pieces pieces_;
    const char* at_;
    const char* end_;  // of the piece
    std::string unescaped_;
    const TrackedUGC* last_ = nullptr;
    TextPool texts_;
};

}  // namespace

bool ReadOwnLayout(KXP::DescriptorRef file, std::vector<NewUGC>& records, KXP::Document& rest) {
    struct stat before {};
    struct stat after {};
    if (fstat(file.get(), &before) != 0 || static_cast<uint64_t>(before.st_size) > KXP::kMaxJsonFileBytes)
        return false;
    records.clear();
    Reader reader(file, static_cast<size_t>(before.st_size));
    if (!reader.TakeRecords(records) || !reader.TakeRest(rest) || fstat(file.get(), &after) != 0)
        return false;
    // The pieces are those of one text.
    return before.st_size == after.st_size &&
           KXP::Platform::ModifiedNs(before) == KXP::Platform::ModifiedNs(after);
}
