// One connection: reads requests one by one and writes their answers, until one asks for the WebSocket.
#pragma once

#include <memory>

#include <boost/asio/ip/tcp.hpp>

#include "gallery-host/page/Connections.h"

namespace host::page {

// For the server's thread.
void StartConnection(boost::asio::ip::tcp::socket socket, Connections& connections);
// Closes the connection that has been idle for longest, to make room. False if there is none.
bool CloseOldestIdle(Connections& connections);

}  // namespace host::page
