#include "gallery-host/verbs/Demo.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include <unistd.h>

#include "common/product/Profile.h"
#include "common/system/ChildProcess.h"
#include "gallery-host/base/UserEnvironment.h"
#include "gallery-host/message/Envelope.h"
#include "gallery-host/output/GalleryTable.h"
#include "gallery-host/output/ListTable.h"
#include "gallery-host/verbs/GalleryList.h"
#include "gallery-host/verbs/Verbs.h"
#include "gallery-host/verbs/VideoVerbs.h"
#include "sample-captures/SampleGallery.h"

namespace host {
namespace {

namespace fs = std::filesystem;

struct Caption {
    const char* file;
    const char* top;
    const char* bottom;
};

constexpr Caption kCaptions[] = {
    {"Rustwind Rally/Photo finish.mp4", "BY THE WIDTH", "OF A BUMPER"},
    {"Nine Lanterns/Ninth lantern.mp4", "", "I counted ten"},
    {"Lumen Harbour/Skyline run.mp4", "MIND THE GAP", ""},
};

// Lists all files of a folder, including foreign ones.
void ListOne(Session& session, Output& output, const std::string& title, const std::string& directory) {
    ListOptions options;
    options.directory = directory;
    const KXP::Document answer = AskListing(session, options);
    const KXP::Value& listing = Payload(answer);
    output.Write(title + ": " + ListSummary(listing) + "\n\n" + ListTable(listing, WantsColour()));
}

}  // namespace

TemporaryHome::TemporaryHome(bool keep) : keep_(keep) {
    std::error_code error;
    path_ = (fs::temp_directory_path(error) / "gallery-demo-XXXXXX").string();
    if (!error && !mkdtemp(path_.data())) error.assign(errno, std::generic_category());
    if (error) throw Failure(kExitFailed, "cannot make a temporary folder: " + error.message());
    // Settings of the user must not lead out of the new home.
    MoveHome(path_);
}

TemporaryHome::~TemporaryHome() {
    if (keep_) {
        Say("kept the temporary home " + path_);
        return;
    }
    std::error_code error;
    fs::remove_all(path_, error);
    if (error) Say("cannot remove the temporary home " + path_ + ": " + error.message());
}

std::string TemporaryHome::MakeGallery() const {
    std::string gallery = KXP::Platform::MoviesFolder() + "/ZORVEX/Ovirastream";
    std::error_code error;
    fs::create_directories(gallery, error);
    if (error) throw Failure(kExitFailed, "cannot make the folder " + gallery + ": " + error.message());
    return gallery;
}

std::string TemporaryHome::FillWithSamples() const {
    std::string gallery = MakeGallery();
    try {
        samples::WriteSampleGallery(gallery);
    } catch (const std::runtime_error& error) {
        throw Failure(kExitFailed, std::string("cannot write the samples: ") + error.what());
    }
    Say("made a gallery of samples in " + gallery);
    return gallery;
}

void TemporaryHome::FillWithScenes() const {
    const std::string program = (fs::path(KXP::GetExePath()).parent_path() / "demo-gallery").string();
    const std::string gallery = MakeGallery();
    Say("making a gallery of pictures and videos");
    try {
        KXP::ChildProcess child(program, {gallery});
        child.Wait([](std::string_view line) { Say(std::string(line)); });
    } catch (const std::system_error& error) {
        throw Failure(kExitFailed, "cannot start " + program + ": " + error.code().message());
    }
    if (fs::is_empty(gallery)) throw Failure(kExitFailed, "the gallery could not be made");
}

void CaptionScenes(Session& session) {
    const std::string gallery = AwaitGallery(session);
    for (const auto& [file, top, bottom] : kCaptions) {
        const fs::path path = fs::path(gallery) / file;
        if (!fs::exists(path)) continue;  // as without an encoder
        const std::string error = AddMeme(session, path, top, bottom);
        if (!error.empty()) throw Failure(kExitFailed, path.string().append(": ").append(error));
    }
}

void RunDemo(Session& session, Output& output, const std::string& gallery) {
    ListOne(session, output, "On disk", gallery);
    const GalleryListing record = AskGallery(session);
    output.Write("\nOn record: " + GallerySummary(record.games) + "\n\n" +
                 GalleryTable(record.games, WantsColour()));
}

}  // namespace host
