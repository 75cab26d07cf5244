#include <cstdint>
#include <string_view>

#include "common/json/JsonEvents.h"
#include "common/json/StackDocument.h"

namespace KXP {
namespace {

// Passes the elements of one array to their reader, and all other events to a document. A document refuses no
// event.
class ElementSplitter final : public IJsonSink {
  public:
    ElementSplitter(Document& document, const ElementReader& reader) : rest_(document), reader_(reader) {
        reader_.begin();
    }

    bool Null() override { return EndValue(Target().Null()); }
    bool Bool(bool b) override { return EndValue(Target().Bool(b)); }
    bool Int(int i) override { return EndValue(Target().Int(i)); }
    bool Uint(unsigned u) override { return EndValue(Target().Uint(u)); }
    bool Int64(int64_t i) override { return EndValue(Target().Int64(i)); }
    bool Uint64(uint64_t u) override { return EndValue(Target().Uint64(u)); }
    bool Double(double d) override { return EndValue(Target().Double(d)); }
    // An element goes before the text does, and needs no copies.
    bool String(const char* text, rapidjson::SizeType size, bool) override {
        return EndValue(Target().String(text, size, !inArray_));
    }
    bool Key(const char* text, rapidjson::SizeType size, bool) override {
        if (depth_ == 1) {
            isMember_ = !metMember_ && std::string_view(text, size) == reader_.member;
            metMember_ |= isMember_;
        }
        return Target().Key(text, size, !inArray_);
    }
    bool StartObject() override {
        ++depth_;
        return Target().StartObject();
    }
    bool EndObject(rapidjson::SizeType members) override {
        --depth_;
        return EndValue(Target().EndObject(members));
    }
    bool StartArray() override {
        const bool started = Target().StartArray();
        inArray_ |= depth_ == 1 && isMember_;
        ++depth_;
        return started;
    }
    bool EndArray(rapidjson::SizeType elements) override {
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

}  // namespace

rapidjson::ParseResult ParseElements(char* text, Document& document, const ElementReader& elements) {
    ElementSplitter splitter(document, elements);
    return ParseEvents<IJsonSink>(text, splitter);
}

}  // namespace KXP
