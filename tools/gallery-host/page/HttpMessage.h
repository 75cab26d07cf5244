// Requests and answers of the page's server, apart from the sockets that carry them.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/FileDescriptor.h"

namespace host::page {

using Fields = std::vector<std::pair<std::string, std::string>>;

struct HttpRequest {
    std::string method;
    std::string target;  // as it was sent
    Fields fields;       // names in lower case

    size_t Count(std::string_view name) const;
    // The first field of that name; an empty text if there is none.
    std::string_view Get(std::string_view name) const;
};

// A part of an open file. Its length was within the file when it was opened; the file may have shrunk since.
struct FilePart {
    KXP::FileDescriptor file;
    uint64_t offset = 0;
    uint64_t length = 0;
};

// The length of the body is sent with it. For HEAD the body is left out.
struct HttpReply {
    unsigned status = 200;
    Fields fields;
    std::string body;
    std::optional<FilePart> file;  // instead of `body`
};

// An answer of a few words, as {"text":"..."}.
HttpReply TextReply(unsigned status, std::string_view text);

// May be called from any thread, once.
using Respond = std::function<void(HttpReply)>;

// Whoever asked holds the ticket; work for a ticket that nobody holds any more is dropped.
using Ticket = std::shared_ptr<void>;
using TicketRef = std::weak_ptr<void>;

// Whether an If-None-Match field names the entity tag (RFC 9110, 13.1.2).
bool MatchesTag(std::string_view ifNoneMatch, std::string_view tag);

// The path and the query of a request's target, percent-decoded once.
struct Target {
    std::string path;
    std::vector<std::pair<std::string, std::string>> query;

    // Empty if there is none.
    std::string_view Query(std::string_view name) const;
};

// Nothing for a target that is not "/..." or holds a broken escape, a control character or bytes that are not
// UTF-8.
std::optional<Target> ReadTarget(std::string_view text);

}  // namespace host::page
