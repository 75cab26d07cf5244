// One page's WebSocket.
#pragma once

#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/message.hpp>

#include "gallery-host/page/Connections.h"

namespace host::page {

// For the server's thread, on a connection whose request for it was found good.
void StartSocket(boost::beast::tcp_stream stream,
                 const boost::beast::http::request<boost::beast::http::empty_body>& request,
                 Connections& connections);

}  // namespace host::page
