#include "plugin-modules/Gallery/src/tracker/journal/TrackerFileWriter.h"

#include <string>
#include <string_view>

namespace {

// How the text of every tracker file begins.
constexpr std::string_view kHead = "{\n\t\"UGC\": [";

// Turns a whole text into one that continues after the last record of another.
std::string TailOf(std::string_view text, bool hasRecords) {
    return (hasRecords ? "," : "\n\t") + std::string(text.substr(kHead.size()));
}

}  // namespace

TrackerFileWriter::Content::Content(const RecordStore& store, uint64_t first)
    : firstPlace(first),
      endPlace(store.nextPlace()),
      generation(store.generation()),
      records(store.From(first)),
      games(store.games()),
      info{store.lastId(), kTrackerVersion, 0} {}

void TrackerFileWriter::Recheck(const KXP::JSONFile& file) {
    KXP::JSONFile::Stamp stamp;
    if (written_ && !(file.ReadStamp(stamp) && stamp == written_->stamp)) written_.reset();
}

uint64_t TrackerFileWriter::FirstPlace(const RecordStore& store) const {
    return written_ && written_->generation == store.generation() ? written_->endPlace : 0;
}

KXP::RetVal TrackerFileWriter::Write(const KXP::JSONFile& file, const Content& content, KXP::HeldLog& log) {
    KXP::JsonBuffer buffer;
    KXP::PrettyJsonWriter writer(buffer);
    writer.SetIndent('\t', 1);
    size_t recordsEnd = 0;
    WriteTrackerJSON(content.records, content.games, content.info, writer,
                     [&] { recordsEnd = buffer.GetSize(); });
    const std::string_view text(buffer.GetString(), buffer.GetSize());

    KXP::RetVal result;
    if (content.firstPlace == 0) {
        result = file.WriteText(text, log);
    } else {
        const size_t keep = written_->recordsEnd;
        const bool hasRecords = !content.records.empty();
        recordsEnd = hasRecords ? keep + 1 + recordsEnd - kHead.size() : keep;
        result = file.WriteTail(keep, TailOf(text, hasRecords), log);
    }
    const bool holdsRecords = content.firstPlace > 0 || !content.records.empty();
    KXP::JSONFile::Stamp stamp;
    if (!result.Failed() && holdsRecords && file.ReadStamp(stamp)) {
        written_ = {stamp, content.generation, content.endPlace, recordsEnd};
    } else {
        written_.reset();
    }
    return result;
}
