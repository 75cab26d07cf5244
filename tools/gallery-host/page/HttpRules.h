// Which requests the page's server answers at all, and the header fields of every answer. Other local users,
// and pages of other sites in the user's browser, can reach the server's port.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "gallery-host/page/HttpMessage.h"

namespace host::page {

class HttpRules {
  public:
    // `cookie` is the value that the browser got at the launch.
    HttpRules(uint16_t port, std::string cookie);

    // The refusal of a request, before it is routed. Only the launch may be reached from another site, by
    // navigation.
    std::optional<HttpReply> Refuse(const HttpRequest& request) const;
    // Whether the upgrade to a WebSocket comes from the server's own page.
    bool MayUpgrade(const HttpRequest& request) const;
    bool HasCookie(const HttpRequest& request) const;

    // The field's value that gives the browser the cookie.
    std::string SetCookie() const;

  private:
    bool IsOwnHost(std::string_view host) const;
    bool IsOwnOrigin(std::string_view origin) const;

    // Literally: a prefix or a suffix would let "127.0.0.1.example.org" pass.
    const std::array<std::string, 3> hosts_;
    // With the port, because all ports of a host share their cookies (RFC 6265, 8.5).
    const std::string cookieName_;
    const std::string cookie_;
};

// Adds the fields that every answer has, errors too.
void AddSecurityFields(Fields& fields);

}  // namespace host::page
