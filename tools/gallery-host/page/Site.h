// What the server offers at its addresses.
#pragma once

#include <functional>
#include <string>

#include "gallery-host/page/GalleryFolder.h"
#include "gallery-host/page/Handles.h"
#include "gallery-host/page/HttpMessage.h"
#include "gallery-host/page/HttpRules.h"
#include "gallery-host/page/KeyframesRoute.h"
#include "gallery-host/page/PageBus.h"
#include "gallery-host/page/StaticTable.h"
#include "gallery-host/page/Tokens.h"

namespace host::page {

// Runs work elsewhere than on the server's thread.
using RunElsewhere = std::function<void(std::function<void()>)>;
struct Elsewhere {
    RunElsewhere disk;   // what waits for the disk
    RunElsewhere media;  // what looks into media files, one at a time on one thread
};

// For the server's thread.
class Site {
  public:
    struct Parts {
        const StaticTable& table;
        const Handles& handles;
        const GalleryFolder& gallery;
        IPageBus& bus;
        std::string mediaFolder;  // of libovnxmedia
    };

    Site(const Parts& parts, uint16_t port, Elsewhere elsewhere);

    // Answers at once or later. The ticket is the caller's; when it is gone, no answer is needed.
    void Answer(const HttpRequest& request, const Ticket& ticket, const Respond& respond);

    const HttpRules& rules() const { return rules_; }
    LaunchTokens& launches() { return launches_; }
    IPageBus& bus() { return parts_.bus; }
    // Of the first frame of a socket.
    const std::string& socketToken() const { return socketToken_; }

  private:
    HttpReply Launch(const HttpRequest& request, const Target& target);
    // Whether the path is that of a capture's route; it then answers.
    bool AnswerForCapture(const HttpRequest& request, const Target& target, const Ticket& ticket,
                          const Respond& respond);
    void AnswerMedia(const HttpRequest& request, const Capture& capture, const Ticket& ticket,
                     const Respond& respond) const;
    void AnswerKeyframes(const Capture& capture, const Ticket& ticket, const Respond& respond);

    const Parts parts_;
    const Elsewhere elsewhere_;
    const std::string socketToken_;
    const HttpRules rules_;
    LaunchTokens launches_;
    KeyframesRoute keyframes_;
};

}  // namespace host::page
