// What the parser's events pass on their way into a document.
#pragma once

#include <cstdint>
#include <string_view>

#include "common/json/JsonParse.h"
#include "common/json/StackDocument.h"
#include "common/text/TextUtil.h"

namespace KXP {

// Passes the parser's events on, and stops the parser before it nests too deep and at text that is not UTF-8.
template <typename Handler>
class EventLimiter {
  public:
    EventLimiter(Handler& handler, bool& special) : handler_(handler), special_(special) {}

    bool Null() { return handler_.Null(); }
    bool Bool(bool b) { return handler_.Bool(b); }
    bool Int(int i) { return handler_.Int(i); }
    bool Uint(unsigned u) { return handler_.Uint(u); }
    bool Int64(int64_t i) { return handler_.Int64(i); }
    bool Uint64(uint64_t u) { return handler_.Uint64(u); }
    bool Double(double d) { return handler_.Double(d); }
    bool RawNumber(const char* text, rapidjson::SizeType size, bool copy) {
        return handler_.RawNumber(text, size, copy);
    }
    // The document gets copies: a value that points into the text would do so also when it is copied into a
    // document that lives longer.
    bool String(const char* text, rapidjson::SizeType size, bool) {
        return IsText(text, size) && handler_.String(text, size, true);
    }
    bool Key(const char* text, rapidjson::SizeType size, bool) {
        return IsText(text, size) && handler_.Key(text, size, true);
    }
    bool StartObject() { return Enter() && handler_.StartObject(); }
    bool EndObject(rapidjson::SizeType members) {
        --depth_;
        return handler_.EndObject(members);
    }
    bool StartArray() { return Enter() && handler_.StartArray(); }
    bool EndArray(rapidjson::SizeType elements) {
        --depth_;
        return handler_.EndArray(elements);
    }

    bool metBadText() const { return badText_; }

  private:
    bool IsText(const char* text, size_t size) {
        if (!special_) return true;
        special_ = false;
        badText_ = !IsValidUtf8({text, size});
        return !badText_;
    }
    bool Enter() { return ++depth_ <= kMaxJsonDepth; }

    Handler& handler_;
    bool& special_;  // the string at hand needs a look
    int depth_ = 0;
    bool badText_ = false;
};

// Passes the elements of one array to their reader, and all other events to a document. A document refuses no
// event.
class ElementSplitter {
  public:
    ElementSplitter(Document& document, const ElementReader& reader) : rest_(document), reader_(reader) {
        reader_.begin();
    }

    bool Null() { return EndValue(Target().Null()); }
    bool Bool(bool b) { return EndValue(Target().Bool(b)); }
    bool Int(int i) { return EndValue(Target().Int(i)); }
    bool Uint(unsigned u) { return EndValue(Target().Uint(u)); }
    bool Int64(int64_t i) { return EndValue(Target().Int64(i)); }
    bool Uint64(uint64_t u) { return EndValue(Target().Uint64(u)); }
    bool Double(double d) { return EndValue(Target().Double(d)); }
    bool RawNumber(const char* text, rapidjson::SizeType size, bool copy) {
        return EndValue(Target().RawNumber(text, size, copy));
    }
    // An element goes before the text does, and needs no copies.
    bool String(const char* text, rapidjson::SizeType size, bool) {
        return EndValue(Target().String(text, size, !inArray_));
    }
    bool Key(const char* text, rapidjson::SizeType size, bool) {
        if (depth_ == 1) {
            isMember_ = !metMember_ && std::string_view(text, size) == reader_.member;
            metMember_ |= isMember_;
        }
        return Target().Key(text, size, !inArray_);
    }
    bool StartObject() {
        ++depth_;
        return Target().StartObject();
    }
    bool EndObject(rapidjson::SizeType members) {
        --depth_;
        return EndValue(Target().EndObject(members));
    }
    bool StartArray() {
        const bool started = Target().StartArray();
        inArray_ |= depth_ == 1 && isMember_;
        ++depth_;
        return started;
    }
    bool EndArray(rapidjson::SizeType elements) {
        --depth_;
        if (depth_ == 1 && inArray_) elements = 0;
        inArray_ &= depth_ > 1;
        return EndValue(Target().EndArray(elements));
    }

  private:
    Document& Target() { return inArray_ ? *element_ : rest_; }
    bool EndValue(bool taken) {
        if (!inArray_ || depth_ != 2) return taken;
        const auto isComplete = [](Document&) { return true; };
        (*element_).Populate(isComplete);
        reader_.read(*element_);
        element_.Clear();
        return taken;
    }

    Document& rest_;
    const ElementReader& reader_;
    StackDocument element_;
    int depth_ = 0;
    bool isMember_ = false;  // the last member of the root is the array, if it is one
    bool metMember_ = false;
    bool inArray_ = false;
};

}  // namespace KXP
