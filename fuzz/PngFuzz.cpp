#include "fuzz/Plain.h"
#include "plugin-modules/Gallery/src/media/PngWalk.h"
#include "plugin-modules/Gallery/src/media/XMPMeta.h"

namespace {

using plain::At;
using plain::Big;
using plain::StartsWith;

class Walk {
  public:
    void Run(std::string_view file) {
        if (!StartsWith(file, "\x89PNG\r\n\x1A\n")) return;
        uint64_t at = 8;
        for (int chunk = 0; chunk < 7; ++chunk) {
            const std::string_view header = At(file, at, 8);
            const std::string_view type = At(header, 4, 4);
            if (type.size() < 4 || type == "IDAT") return;
            const uint64_t length = Big(header.substr(0, 4));
            const std::string_view data = At(file, at + 8, length);
            at += 8 + length + 4;
            if (length > 4096 || (type != "tEXt" && type != "iTXt")) continue;
            if (data.size() < length) return;
            if (type == "tEXt")
                TakeText(data);
            else
                TakeXmp(data);
        }
    }

    media::SniffResult result;

  private:
    bool TakeSoftware(std::string_view name) {
        const char* found[2] = {nullptr, nullptr};  // source and subtype
        if (StartsWith(name, "Ovirastream SDK")) found[0] = "OVS_SDK", found[1] = "Highlight";
        if (StartsWith(name, "Ovirastream SHARE")) found[0] = "OVS_Share", found[1] = "Normal";
        if (StartsWith(name, "Ovirastream LUMIS")) found[0] = "OVS_Lumis", found[1] = "Normal_Lumis";
        if (!found[0]) return false;
        result.isOwn = isSettled_ = true;
        result.fileSource = found[0];
        result.fileSubType = found[1];
        return true;
    }

    void TakeText(std::string_view data) {
        if (!isSettled_ && data.size() == 13 && StartsWith(data, "Source")) {
            isSettled_ = true;
            if (data.substr(7) != "ZORVEX") return;
            result.isOwn = true;
            result.fileSubType = "StandAlone_Lumis";
        } else if (StartsWith(data, "Software")) {
            TakeSoftware(At(data, 9, data.size()));
        } else if (StartsWith(data, "DRSName")) {
            result.drsName = At(data, 8, data.size());
        } else if (StartsWith(data, "DRSProfileName")) {
            result.drsProfileName = At(data, 15, data.size());
        } else if (StartsWith(data, "Description") && data.size() > 12) {
            MetadataBlock(data.substr(12)).CopyTo(result);
        }
    }

    void TakeXmp(std::string_view data) {
        if (!StartsWith(data, "XML:com.adobe.xmp")) return;
        size_t at = data.find('\0', 20);
        if (at != std::string_view::npos) at = data.find('\0', at + 1);
        const std::string_view text =
            at == std::string_view::npos ? std::string_view() : At(data, at + 1, data.size());
        TakeSoftware(Content(text, {"xmp:CreatorTool"}));
        MetadataBlock(Content(text, {"dc:description", "rdf:Alt", "rdf:li"})).CopyTo(result);
    }

    static std::string Content(std::string_view text, std::initializer_list<const char*> path) {
        media::XMPMeta xmp(text);
        for (const char* tag : {"x:xmpmeta", "rdf:RDF", "rdf:Description"})
            xmp.Descend(tag);
        for (const char* tag : path)
            xmp.Descend(tag);
        std::string content;
        xmp.GetCurrentString(content);
        return content;
    }

    bool isSettled_ = false;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view file(reinterpret_cast<const char*>(data), size);
    media::MemorySource source(file);
    media::ByteCursor cursor(source);
    media::SniffResult result;
    plain::Demand(media::WalkPng(cursor, result) == 1 && result.findings.empty());
    Walk walk;
    walk.Run(file);
    const media::SniffResult& expected = walk.result;
    plain::Demand(result.isOwn == expected.isOwn && result.fileSource == expected.fileSource);
    plain::Demand(result.fileSubType == expected.fileSubType && result.shortName == expected.shortName);
    plain::Demand(result.drsName == expected.drsName && result.drsProfileName == expected.drsProfileName);
    return 0;
}
