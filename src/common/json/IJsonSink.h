// The events of a JSON text, in the order of the text: for answers that are too long to be built as a
// document before they are written. A RapidJSON value can be accepted by it.
#pragma once

#include <cstdint>
#include <string_view>

#include "common/json/Json.h"

namespace KXP {

// Each call returns false when the rest is not wanted.
class IJsonSink {
  public:
    virtual ~IJsonSink() = default;
    virtual bool Null() = 0;
    virtual bool Bool(bool b) = 0;
    virtual bool Int(int i) = 0;
    virtual bool Uint(unsigned u) = 0;
    virtual bool Int64(int64_t i) = 0;
    virtual bool Uint64(uint64_t u) = 0;
    virtual bool Double(double d) = 0;
    virtual bool String(const char* text, rapidjson::SizeType size, bool copy) = 0;
    virtual bool Key(const char* text, rapidjson::SizeType size, bool copy) = 0;
    virtual bool StartObject() = 0;
    virtual bool EndObject(rapidjson::SizeType members) = 0;
    virtual bool StartArray() = 0;
    virtual bool EndArray(rapidjson::SizeType elements) = 0;

    bool Key(std::string_view name) { return Key(name.data(), Size(name), false); }
    bool String(std::string_view text) { return String(text.data(), Size(text), false); }

  private:
    static rapidjson::SizeType Size(std::string_view text) {
        return static_cast<rapidjson::SizeType>(text.size());
    }
};

// Passes the events on to a handler of RapidJSON's.
template <typename Handler>
class JsonSink final : public IJsonSink {
  public:
    explicit JsonSink(Handler& handler) : handler_(handler) {}

    using IJsonSink::Key;
    using IJsonSink::String;
    bool Null() override { return handler_.Null(); }
    bool Bool(bool b) override { return handler_.Bool(b); }
    bool Int(int i) override { return handler_.Int(i); }
    bool Uint(unsigned u) override { return handler_.Uint(u); }
    bool Int64(int64_t i) override { return handler_.Int64(i); }
    bool Uint64(uint64_t u) override { return handler_.Uint64(u); }
    bool Double(double d) override { return handler_.Double(d); }
    bool String(const char* text, rapidjson::SizeType size, bool copy) override {
        return handler_.String(text, size, copy);
    }
    bool Key(const char* text, rapidjson::SizeType size, bool copy) override {
        return handler_.Key(text, size, copy);
    }
    bool StartObject() override { return handler_.StartObject(); }
    bool EndObject(rapidjson::SizeType members) override { return handler_.EndObject(members); }
    bool StartArray() override { return handler_.StartArray(); }
    bool EndArray(rapidjson::SizeType elements) override { return handler_.EndArray(elements); }

  private:
    Handler& handler_;
};

}  // namespace KXP
