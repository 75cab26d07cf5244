// The only place that includes RapidJSON, so that every unit compiles it with the same settings.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>

#include "base/SlabMemory.h"

namespace KXP {
// Logs the broken expectation and throws KXP::Exception(Code::kUnexpected): the library lives inside
// somebody's client, where neither an abort nor a confused type may happen, in any build.
[[noreturn]] void JsonAssertionFailed(const char* expression, const char* file, int line);
}  // namespace KXP

#define RAPIDJSON_ASSERT(x) \
    (static_cast<bool>(x) ? static_cast<void>(0) : ::KXP::JsonAssertionFailed(#x, __FILE__, __LINE__))
#define RAPIDJSON_HAS_STDSTRING 1
// No schema of the catalogue has a pattern, and the engine for them has no limits on its time.
#define RAPIDJSON_SCHEMA_USE_INTERNALREGEX 0
#define RAPIDJSON_SCHEMA_USE_STDREGEX 0
// RAPIDJSON_SSE2 stays undefined: with it, this version takes and writes the characters 0x1A to 0x1F in
// strings as they are.

#include <rapidjson/document.h>
#include <rapidjson/encodedstream.h>
#include <rapidjson/error/en.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/pointer.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/schema.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace KXP {

// RapidJSON writes to whatever its allocator returns, null included; this one throws std::bad_alloc instead.
// Documents and texts may be large.
class ThrowingAllocator {
  public:
    static const bool kNeedFree = true;
    void* Malloc(size_t size) { return size == 0 ? nullptr : AllocateInSlab(size); }
    void* Realloc(void* block, size_t, size_t size) {
        if (size != 0) return ResizeInSlab(block, size);
        FreeInSlab(block);
        return nullptr;
    }
    static void Free(void* block) { FreeInSlab(block); }
};
// Has no state. A buffer or a writer that gets none makes one of its own on the heap, which short answers
// feel.
inline ThrowingAllocator g_jsonAllocator;

// For the few bytes that a writer holds while it writes, which no slab needs.
class BriefAllocator {
  public:
    static const bool kNeedFree = true;
    void* Malloc(size_t size) { return Realloc(nullptr, 0, size); }
    void* Realloc(void* block, size_t, size_t size) {
        if (size == 0) return std::free(block), nullptr;
        void* const resized = std::realloc(block, size);
        if (!resized) throw std::bad_alloc();
        return resized;
    }
    static void Free(void* block) { std::free(block); }
};

using Utf8 = rapidjson::UTF8<>;
using Allocator = rapidjson::MemoryPoolAllocator<ThrowingAllocator>;
using Value = rapidjson::GenericValue<Utf8, Allocator>;
using Document = rapidjson::GenericDocument<Utf8, Allocator, ThrowingAllocator>;
using JsonBuffer = rapidjson::GenericStringBuffer<Utf8, ThrowingAllocator>;
using PlainJsonWriter = rapidjson::Writer<JsonBuffer, Utf8, Utf8, BriefAllocator>;
using PrettyJsonWriter = rapidjson::PrettyWriter<JsonBuffer, Utf8, Utf8, BriefAllocator>;

// Writes a text without anything to escape, as nearly all are, at once.
class JsonWriter : public PlainJsonWriter {
  public:
    using PlainJsonWriter::Key;
    using PlainJsonWriter::PlainJsonWriter;
    using PlainJsonWriter::String;
    bool String(const char* text, rapidjson::SizeType size, bool copy = false);
    bool Key(const char* text, rapidjson::SizeType size, bool copy = false) {
        return String(text, size, copy);
    }
};

// Appends a part of a JSON text as it is.
inline void Append(std::string_view text, JsonBuffer& buffer) {
    std::memcpy(buffer.Push(text.size()), text.data(), text.size());
}

}  // namespace KXP

// Called for each run of plain characters in a string that is written; this one copies them by the word.
template <>
bool KXP::PlainJsonWriter::ScanWriteUnescapedString(rapidjson::GenericStringStream<KXP::Utf8>& text,
                                                    size_t length);
