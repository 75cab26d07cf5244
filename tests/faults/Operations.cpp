#include "tests/faults/Operations.h"

#include <chrono>
#include <filesystem>
#include <thread>

namespace {

std::string Member(const std::string& key, const std::string& text) {
    return "\"" + key + "\":\"" + text + "\"";
}

bool Succeeded(const std::string& answer) {
    return answer.find(R"("_return_code":0)") != std::string::npos;
}

bool Transfer(Product& product, const char* method, const std::string& from, const std::string& to) {
    return Succeeded(
        product.Ask(method, "{" + Member("source", from) + "," + Member("destination", to) + "}"));
}

bool Trim(Product& product, const std::string& from, const std::string& to) {
    return Succeeded(product.Ask("Trim", "{" + Member("input", from) + "," + Member("output", to) +
                                             R"(,"headTrimMs":500.0,"lengthMs":1000.0})"));
}

bool Engrave(Product& product, const std::string& path) {
    return Succeeded(product.Ask("EngraveMP4",
                                 "{" + Member("file", path) +
                                     R"(,"DRSProfileName":"p","DRSAppName":"another name","DRSShortName":"",)"
                                     R"("highlightDefinitionId":"","highlightGroupId":"","mediaType":""})"));
}

bool Caption(Product& product, const std::string& path) {
    return Succeeded(product.Ask(
        "AddMeme", "{" + Member("file", path) + R"(,"memeInfo":{"topBarText":"new","bottomBarText":""}})"));
}

bool ChangeGallery(Product& product, const std::string& folder) {
    return Succeeded(
        product.Ask("SetSettings", "{\"settings\":{" + Member("userGalleryPath", folder) + "}}"));
}

// A capture that the watcher has to find.
bool Capture(const SmallGallery& gallery) {
    gallery.AddPicture("Race/new.png");
    std::this_thread::sleep_for(std::chrono::milliseconds(150));
    return true;
}

}  // namespace

bool ChooseGallery(Product& product, const SmallGallery& gallery) {
    return ChangeGallery(product, gallery.folder());
}

const std::vector<Operation>& Operations() {
    using G = const SmallGallery&;
    static const std::vector<Operation> operations = {
        {"start", true, [](Product& p, G) { return p.Up(); }, nullptr, nullptr},
        {"stop", false, [](Product& p, G) { return p.Down(), true; }, nullptr, nullptr},
        {"capture", false, [](Product&, G g) { return Capture(g); }, nullptr, nullptr},
        {"copy", false,
         [](Product& p, G g) {
             return Transfer(p, "CopyFile", g.Path("Race/a.mp4"), g.Path("Art/copy.mp4"));
         },
         nullptr, nullptr},
        {"move", false,
         [](Product& p, G g) {
             return Transfer(p, "MoveFile", g.Path("Race/a.mp4"), g.Path("Art/moved.mp4"));
         },
         nullptr, nullptr},
        {"remove", false,
         [](Product& p, G g) {
             return Succeeded(p.Ask("RemoveGalleryItem", "{" + Member("file", g.Path("Art/c.jpg")) + "}"));
         },
         "Art/c.jpg", nullptr},
        {"remove a group", false,
         [](Product& p, G) {
             return Succeeded(
                 p.Ask("DeleteGroupHighlights", R"({"app":{"profileName":"Race"},"groupId":"g"})"));
         },
         "Race/h.mp4", nullptr},
        {"caption", false, [](Product& p, G g) { return Caption(p, g.Path("Art/c.jpg")); }, nullptr, nullptr},
        {"settings", false,
         [](Product& p, G) {
             return Succeeded(
                 p.Ask("SetSettings", R"({"settings":{"capacity":{"enabled":false,"capacityPercent":40}}})"));
         },
         nullptr, nullptr},
        {"gallery", false,
         [](Product& p, G g) {
             const bool changed = ChangeGallery(p, g.folder() + "2") && ChooseGallery(p, g);
             g.AddPicture("Race/new.png");  // whichever gallery it is, somebody has to watch it
             return changed;
         },
         nullptr, nullptr},
        {"cut", false, [](Product& p, G g) { return Trim(p, g.Path("Race/a.mp4"), g.Path("Race/clip.mp4")); },
         nullptr, nullptr},
        {"cut in place", false,
         [](Product& p, G g) { return Trim(p, g.Path("Race/a.mp4"), g.Path("Race/a.mp4")); }, nullptr,
         "Race/a.mp4"},
        {"engrave", false, [](Product& p, G g) { return Engrave(p, g.Path("Race/a.mp4")); }, nullptr,
         "Race/a.mp4"},
        {"thumbnail", false,
         [](Product& p, G g) {
             return Succeeded(p.Ask(
                 "GetThumbnail", "{" + Member("file", g.Path("Race/a.mp4")) + R"(,"width":64,"height":64})"));
         },
         nullptr, nullptr},
        {"listing", false,
         [](Product& p, G g) {
             return Succeeded(
                 p.Ask("GetFolderListing", "{" + Member("directory", g.folder() + "/Race") + "}"));
         },
         nullptr, nullptr},
    };
    return operations;
}
