#include "gallery-host/page/PageVerb.h"

#include <vector>

#include "base/FreedMemory.h"
#include "gallery-host/base/Paths.h"
#include "gallery-host/message/MessageSocket.h"
#include "gallery-host/page/AppWindow.h"
#include "gallery-host/page/HostMethods.h"
#include "gallery-host/page/LibraryBus.h"
#include "gallery-host/page/PageServer.h"

namespace host::page {
namespace {

std::vector<uint16_t> PortsOf(const PageOptions& options) {
    if (options.port) return {*options.port};
    std::vector<uint16_t> ports;
    for (uint16_t i = 0; i < kPorts; ++i)
        ports.push_back(static_cast<uint16_t>(kFirstPort + i));
    return ports;
}

// Serves until somebody calls Quit or the user interrupts.
void RunBus(LibraryBus& bus) {
    try {
        bus.Run();
    } catch (const Failure& failure) {
        if (failure.status() != kExitInterrupted) throw;
    }
}

struct Prepared {
    explicit Prepared(const PageOptions& chosen)
        : options(chosen), table(InProduct("Resources/page")), browser(chosen.app ? FindAppBrowser() : "") {}

    const PageOptions options;
    const StaticTable table;
    const std::string browser;  // for a window of its own
    MessageSocket messages;     // of the montage process
};

void RunPage(Session& session, Output& output, Prepared& prepared) {
    session.Relay(prepared.messages);
    Handles handles;
    GalleryFolder gallery;
    LibraryBus bus(session, handles, gallery);
    const Site::Parts parts{prepared.table, handles, gallery, bus, InProduct("Frameworks/dependencies")};
    PageServer server(parts, PortsOf(prepared.options), ServerLimits(), prepared.options.version);
    output.Write(server.NewLaunchAddress() + "\n");
    std::unique_ptr<AppWindow> window;
    if (prepared.options.app) {
        window = std::make_unique<AppWindow>(prepared.browser, server.NewLaunchFile(), server.port(),
                                             [&bus] { bus.Quit(); });
        Say("Ctrl-C ends, as does closing the window");
    } else {
        if (prepared.options.open && !OpenWithDesktop(server.NewLaunchFile()))
            Say("cannot open the browser; open the address above, which works once");
        Say("Ctrl-C ends");
    }
    server.Start();
    RunBus(bus);
}

}  // namespace

std::function<void(Session&, Output&)> PreparePage(const PageOptions& options) {
    // A list of all captures takes tens of megabytes for a moment.
    KXP::Platform::ReturnLargeBlocks();
    const auto prepared = std::make_shared<Prepared>(options);
    return [prepared](Session& session, Output& output) { RunPage(session, output, *prepared); };
}

}  // namespace host::page
