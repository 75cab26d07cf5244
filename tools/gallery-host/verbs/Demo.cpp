#include "gallery-host/verbs/Demo.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "gallery-host/message/Envelope.h"
#include "gallery-host/output/GalleryTable.h"
#include "gallery-host/output/ListTable.h"
#include "gallery-host/verbs/GalleryList.h"
#include "gallery-host/verbs/Verbs.h"
#include "sample-captures/SampleGallery.h"

namespace host {
namespace {

namespace fs = std::filesystem;

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
    setenv("HOME", path_.c_str(), 1);
    setenv("XDG_DATA_HOME", (path_ + "/.local/share").c_str(), 1);
    setenv("XDG_CONFIG_HOME", (path_ + "/.config").c_str(), 1);
    setenv("XDG_CACHE_HOME", (path_ + "/.cache").c_str(), 1);
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

std::string TemporaryHome::FillGallery() const {
    std::string gallery = path_ + "/Videos/ZORVEX/Ovirastream";
    try {
        fs::create_directories(gallery);
        samples::WriteSampleGallery(gallery);
    } catch (const std::runtime_error& error) {
        throw Failure(kExitFailed, std::string("cannot write the samples: ") + error.what());
    }
    Say("made a gallery of samples in " + gallery);
    return gallery;
}

void RunDemo(Session& session, Output& output, const std::string& gallery) {
    ListOne(session, output, "On disk", gallery);
    const GalleryListing record = AskGallery(session);
    output.Write("\nOn record: " + GallerySummary(record.games) + "\n\n" +
                 GalleryTable(record.games, WantsColour()));
}

}  // namespace host
