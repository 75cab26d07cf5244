// The only place that includes RapidJSON, so that every unit compiles it with the same settings.
#pragma once

namespace KXP {
// Logs the broken expectation and throws KXP::Exception(Code::kUnexpected): the library lives inside
// somebody's client, where neither an abort nor a confused type may happen, in any build.
[[noreturn]] void JsonAssertionFailed(const char* expression, const char* file, int line);
}  // namespace KXP

#define RAPIDJSON_ASSERT(x) \
    (static_cast<bool>(x) ? static_cast<void>(0) : ::KXP::JsonAssertionFailed(#x, __FILE__, __LINE__))
#define RAPIDJSON_HAS_STDSTRING 1
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

using Value = rapidjson::Value;
using Document = rapidjson::Document;
using Allocator = rapidjson::Document::AllocatorType;

}  // namespace KXP
