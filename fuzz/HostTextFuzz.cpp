// What the host prints of an answer or a notification, whatever is in it: no byte of it steers the terminal.
#include <string>

#include "common/json/JsonParse.h"
#include "fuzz/Plain.h"
#include "gallery-host/base/Printable.h"
#include "gallery-host/message/Envelope.h"
#include "gallery-host/output/GalleryTable.h"
#include "gallery-host/output/ListTable.h"
#include "gallery-host/output/NotificationText.h"

namespace {

// `isTable` allows for line ends.
void Check(const std::string& text, bool isTable) {
    std::string line = text;
    for (char& c : line)
        if (isTable && c == '\n') c = ' ';
    plain::Demand(host::Printable(line) == line);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    KXP::Document message;
    std::string error;
    if (!host::ParseObject({reinterpret_cast<const char*>(data), size}, message, error)) {
        Check(error, false);
        return 0;
    }
    const KXP::Value& payload = host::Payload(message);
    Check(host::NotificationText(host::Text(message, "method"), payload), false);
    for (const std::string& method : host::NotificationMethods())
        Check(host::NotificationText(method, payload), false);
    Check(host::GalleryTable(payload, false), true);
    Check(host::RecentTable(payload, false), true);
    Check(host::GallerySummary(payload), false);
    Check(host::ListTable(payload, false), true);
    Check(host::ListSummary(payload), false);
    host::FolderNames(payload);
    host::Complete(message);
    plain::Demand(message.HasMember("uniqueid") && message.HasMember("payload"));
    return 0;
}
