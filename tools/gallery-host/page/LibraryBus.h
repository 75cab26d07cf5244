// The bus between the pages and the plug-in: one subscription of each kind for all pages, and only what pages
// may ask for.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "gallery-host/page/HostMethods.h"
#include "gallery-host/page/Library.h"
#include "gallery-host/page/Mailbox.h"
#include "gallery-host/page/PageBus.h"
#include "gallery-host/page/PageRequests.h"
#include "gallery-host/page/ThumbQueue.h"
#include "gallery-host/session/Session.h"
#include "gallery-host/session/Subscriptions.h"

namespace host::page {

// The methods of IPageBus and Quit may be called from any thread, the others from that of the session.
class LibraryBus final : public IPageBus {
  public:
    // Subscribes, and learns where the gallery is. Throws Failure as Session::Ask does.
    LibraryBus(Session& session, Handles& handles, GalleryFolder& gallery);

    // Works until Quit. Throws Failure, for example when interrupted.
    void Run();
    void Quit();

    void Open(SocketId id, std::weak_ptr<IPageSocket> socket) override;
    void Receive(SocketId id, std::string text) override;
    void Close(SocketId id) override;
    void MakeThumbnail(ThumbnailRequest request) override;

  private:
    struct Subscription {
        std::string method;
        std::string id;  // the page's
    };
    struct Tab {
        std::weak_ptr<IPageSocket> socket;
        std::vector<Subscription> subscriptions;
    };

    void OnFrame(SocketId id, Tab& tab, const std::string& text);
    // These return the reason for a refusal, or an empty text.
    std::string Subscribe(Tab& tab, const std::string& method, const std::string& id);
    std::string AskLibrary(SocketId socket, const std::string& method, const std::string& id,
                           const KXP::Value& payload);
    std::string AskHost(Tab& tab, const std::string& method, const std::string& id,
                        const KXP::Value& payload);

    void OnMessage(KXP::Document& message);
    void OnAnswer(const PageRequests::Askers& askers, KXP::Document* answer, const std::string& refusal);
    void FanOut(KXP::Document& notification);

    Session& session_;
    Handles& handles_;
    GalleryFolder& gallery_;
    const HostMethods hostMethods_;
    Library library_;
    PageRequests requests_;
    ThumbQueue thumbs_;
    Subscriptions subscriptions_;
    std::map<SocketId, Tab> tabs_;
    bool quit_ = false;
    Mailbox mailbox_;
    const Session::Listening listening_;  // last: it uses all of the above
};

}  // namespace host::page
