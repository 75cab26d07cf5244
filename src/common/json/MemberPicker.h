// Picks members out of a JSON object by their names, without a document: for small objects of which there are
// many.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "common/json/IJsonSink.h"
#include "common/json/JsonParse.h"

namespace KXP {

// For one text.
template <size_t kCount>
class MemberPicker final : public IJsonSink {
  public:
    using Names = std::array<std::string_view, kCount>;

    // `names` has to live as long.
    explicit MemberPicker(const Names& names) : names_(names) {}

    // Whether the text is an object.
    bool Read(std::string text) {
        const size_t size = text.size();
        text_ = std::move(text);
        text_.append(kJsonTextSlack, '\0');
        return !ParseJSONInPlace(text_.data(), size, *this).IsError() && isObject_;
    }

    // The member of the name at this index, of several the first. Null where there is none and where it is an
    // object or an array, which are passed over. Its text is the picker's.
    const Value& operator[](size_t index) const { return values_[index]; }

    bool Null() override { return Pick(Value()); }
    bool Bool(bool b) override { return Pick(Value(b)); }
    bool Int(int i) override { return Pick(Value(i)); }
    bool Uint(unsigned u) override { return Pick(Value(u)); }
    bool Int64(int64_t i) override { return Pick(Value(i)); }
    bool Uint64(uint64_t u) override { return Pick(Value(u)); }
    bool Double(double d) override { return Pick(Value(d)); }
    bool String(const char* text, rapidjson::SizeType size, bool) override {
        return Pick(Value(rapidjson::StringRef(text, size)));
    }
    bool Key(const char* text, rapidjson::SizeType size, bool) override {
        if (depth_ == 1) wanted_ = Find({text, size});
        return true;
    }
    bool StartObject() override {
        isObject_ |= depth_ == 0;
        ++depth_;
        return true;
    }
    bool EndObject(rapidjson::SizeType) override {
        --depth_;
        return true;
    }
    bool StartArray() override {
        ++depth_;
        return true;
    }
    bool EndArray(rapidjson::SizeType) override {
        --depth_;
        return true;
    }

  private:
    static_assert(kCount < 32);

    size_t Find(std::string_view name) {
        for (size_t i = 0; i < kCount; ++i) {
            if (names_[i] != name) continue;
            const bool isFirst = (met_ >> i & 1) == 0;
            met_ |= 1u << i;
            return isFirst ? i : kCount;
        }
        return kCount;
    }
    bool Pick(Value&& value) {
        if (depth_ == 1 && wanted_ < kCount) values_[wanted_] = value;
        return true;
    }

    const Names& names_;
    std::string text_;
    std::array<Value, kCount> values_;
    size_t wanted_ = kCount;  // the index of the last name in the object itself
    uint32_t met_ = 0;        // a bit for each name
    int depth_ = 0;
    bool isObject_ = false;
};

}  // namespace KXP
