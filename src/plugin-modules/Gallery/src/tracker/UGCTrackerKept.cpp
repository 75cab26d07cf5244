// What people give captures, by request.
#include "plugin-modules/Gallery/src/tracker/UGCTracker.h"

using KXP::RetVal;
namespace Code = KXP::Code;

namespace {

// A gallery of up to this many records is written in passing; the answer to a page does not wait for a larger
// one.
constexpr size_t kWrittenInPassing = 2000;

}  // namespace

void UGCTracker::KeepFor(const std::string& path, const std::string& place, const FileStamp& stamp) {
    const RecordPtr record = FindRecord(path);
    if (!record) return;
    TrackedUGC next = *record;
    next.path = PlaceOf(place);
    next.stamp = stamp;
    record_.Keep(next, record_.GivenTo(*record));
    (void)SaveKept();
}

RetVal UGCTracker::AddMeme(const std::string& path, const std::string& topBarText,
                           const std::string& bottomBarText) {
    const RecordPtr found = FindRecord(path);
    if (!found) return {Code::kNotFound, "UGC not found", 0};
    KeptFacts facts = record_.GivenTo(*found);
    facts.topBarText = topBarText;
    facts.bottomBarText = bottomBarText;
    // Of the file as it is now: that it has changed may not be on record yet.
    FileStamp stamp = StampAt(found->path);
    if (!stamp.IsKnown()) stamp = found->stamp;
    const KeptCaptures::Change change = kept().Put({found->path, stamp, facts});
    if (!change.put) return {Code::kFailure, "The texts are too long to be kept", 0};
    // Kept before they are on record: what a page is shown outlasts the process.
    if (RetVal saved = SaveKept(); saved.Failed()) {
        kept().Retract(change);
        return saved;
    }
    record_.ShowKept(found->path, stamp);
    if (record_.size() > kWrittenInPassing) {
        EnqueueFinish();
        return {};
    }
    RetVal written = Write(Sum::Keep);
    news().Drain();
    if (!written.Failed()) return {};
    kept().Retract(change);
    (void)SaveKept();
    record_.ShowKept(found->path, stamp);
    return {Code::kFailure, written.text, written.internal};
}
