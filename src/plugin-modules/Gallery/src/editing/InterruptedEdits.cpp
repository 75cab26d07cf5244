#include "plugin-modules/Gallery/src/editing/InterruptedEdits.h"

#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "CobalixUtil.h"
#include "base/FileCalls.h"
#include "base/Path.h"
#include "plugin-modules/Gallery/src/editing/EditNote.h"
#include "plugin-modules/Gallery/src/settings/GalleryPaths.h"

namespace {

// Some volumes keep the times of files in steps of this many seconds.
constexpr time_t kTimeStep = 2;

// One edit in its folder, which stays the same one whatever happens to its path meanwhile. The functions
// return whether the note has served its purpose; a place that cannot be read or changed now is tried again.
class InterruptedEdit {
  public:
    explicit InterruptedEdit(const NotedEdit& edit)
        : edit_(edit),
          clipPath_(ClipPath(edit.capture, edit.attempt)),
          capture_(KXP::NameOf(edit.capture)),
          clip_(KXP::NameOf(clipPath_)),
          folder_(open(KXP::ParentOf(edit.capture).c_str(), KXP::Platform::kFolderForLookup | O_CLOEXEC)),
          keepsInodes_(KXP::Platform::KeepsInodes(KXP::ParentOf(edit.capture))) {}

    bool Finish() const {
        struct stat clip {};
        if (!folder_.IsOpen()) return false;
        if (!Look(clip_, clip)) return errno == ENOENT;
        if (!S_ISREG(clip.st_mode)) return true;
        if (edit_.whole) return IsSame(StampOf(clip), edit_.whole->clip) ? FinishWhole() : true;
        return clip.st_ctime + kTimeStep >= edit_.begun ? RemoveClip() : true;
    }

  private:
    bool FinishWhole() const {
        struct stat capture {};
        const bool isThere = Look(capture_, capture);
        if (!isThere && errno != ENOENT) return false;
        if (isThere && !IsSame(StampOf(capture), edit_.whole->capture)) return RemoveClip();
        if (renameat(folder_.get(), clip_.c_str(), folder_.get(), capture_.c_str()) != 0) return Failed();
        KXP_LOG(KXP::LogMilestone, "Finished an interrupted trim of %s", edit_.capture.c_str());
        return true;
    }

    bool RemoveClip() const {
        if (unlinkat(folder_.get(), clip_.c_str(), 0) != 0) return Failed();
        KXP_LOG(KXP::LogMilestone, "Removed what an interrupted trim left: %s", clipPath_.c_str());
        return true;
    }

    bool Failed() const {
        KXP_LOG(KXP::LogFailure, "Cannot finish an interrupted trim of %s: %d", edit_.capture.c_str(), errno);
        return false;
    }

    bool Look(const std::string& name, struct stat& status) const {
        return fstatat(folder_.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
    }

    bool IsSame(const FileStamp& found, const FileStamp& noted) const {
        return keepsInodes_ ? found == noted : found.SameContent(noted);
    }

    const NotedEdit& edit_;
    const std::string clipPath_;
    const std::string capture_;  // names in the folder
    const std::string clip_;
    const KXP::FileDescriptor folder_;
    const bool keepsInodes_;
};

}  // namespace

void FinishInterruptedEdits(const std::string& shareFolder) {
    KXP::SettleWorkNotes(shareFolder, kEditNotes, [](const std::string& text) {
        const std::optional<NotedEdit> edit = NotedEdit::Parse(text);
        return !edit || InterruptedEdit(*edit).Finish();
    });
}
