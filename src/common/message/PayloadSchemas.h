// The check of message payloads against the API schema: what a request may carry, and what a response may.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>

#include "common/json/IJsonSink.h"
#include "common/results/RetVal.h"
#include "common/threads/Mutex.h"

namespace KXP {

// Writes the body of an answer, an object, each time it is called.
using BodySource = std::function<void(IJsonSink&)>;

// Reads one API schema: an object whose `definitions` hold under each method's name the JSON schemas of its
// payloads, and beside them the types that these share, reached by "$ref": "#/definitions/NAME" alone.
//
// A schema is compiled at its first use and kept, over the definitions that it reaches and no others: the
// whole catalogue would cost each message more than everything else that is done for it. Any thread may call,
// and checks run side by side. The API schema is only read; it must outlive this object and stay unchanged
// from the first check on.
class PayloadSchemas {
  public:
    explicit PayloadSchemas(const Document& api);
    ~PayloadSchemas();
    PayloadSchemas(const PayloadSchemas&) = delete;
    PayloadSchemas& operator=(const PayloadSchemas&) = delete;

    // `kind` is "parameters" for a request or "return" for a response. A method or kind that the API does not
    // list accepts every payload. A wrong payload fails with 0x8008F001 and a text with the place in the
    // payload, the place in the schema and the violated keyword; it is logged with the names, not the values,
    // of the payload's members. A schema that does not compile fails in the same way.
    RetVal Validate(const std::string& method, const Value& payload, const char* kind);

    // Writes an answer's body as `text` and checks it on the way. The text is whole in any case.
    RetVal WriteChecked(const std::string& method, const BodySource& body, JsonBuffer& text);

  private:
    struct Compiled;

    // Null for a method or kind that the API does not list.
    const Compiled* Find(const std::string& method, const char* kind) EXCLUDES(mutex_);

    const Value& Definition(const std::string& method);

    const Document& api_;

    std::once_flag indexed_;
    std::unordered_map<std::string_view, const Value*> definitions_;  // by name, once indexed

    Mutex mutex_;
    // By the address of the schema in the API document, so that no method name from outside can make it grow.
    // Entries stay until the end.
    std::unordered_map<const Value*, std::unique_ptr<const Compiled>> compiled_ GUARDED_BY(mutex_);
};

}  // namespace KXP
