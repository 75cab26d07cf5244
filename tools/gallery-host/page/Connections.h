// What connections and sockets share with the server that accepted them. For the server's thread.
#pragma once

#include <list>
#include <map>
#include <memory>
#include <string>

#include "gallery-host/page/PageServer.h"

namespace host::page {

class HttpConnection;
class PageSocket;

struct Connections {
    Site& site;
    const ServerLimits& limits;
    RunElsewhere runElsewhere;
    std::string ready;             // the frame that answers a socket's token
    std::function<void()> onRoom;  // a connection is gone or idle, so that another may come

    size_t open = 0;                                  // that are no sockets
    std::list<std::weak_ptr<HttpConnection>> idle{};  // between requests, the oldest first
    std::map<SocketId, std::shared_ptr<PageSocket>> sockets{};
    SocketId lastSocket = 0;
};

}  // namespace host::page
