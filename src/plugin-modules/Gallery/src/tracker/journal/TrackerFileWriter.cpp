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

std::vector<FileStamp> StampsOf(const std::vector<RecordStore::RecordPtr>& records) {
    std::vector<FileStamp> stamps;
    stamps.reserve(records.size());
    for (const RecordStore::RecordPtr& record : records)
        stamps.push_back(record->stamp);
    return stamps;
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

KXP::RetVal TrackerFileWriter::Write(const KXP::JSONFile& file, StampFile& stamps, const Content& content,
                                     KXP::HeldLog& log) {
    const size_t before = content.firstPlace == 0 ? 0 : written_->records;
    size_t recordsEnd = 0;
    KXP::RetVal result = WriteText(file, content, recordsEnd, log);
    KXP::JSONFile::Stamp stamp;
    const bool isKnown = !result.Failed() && file.ReadStamp(stamp);
    if (isKnown) stamps.Write(stamp, before, StampsOf(content.records));
    const size_t records = before + content.records.size();
    if (isKnown && records > 0) {
        written_ = {stamp, content.generation, content.endPlace, records, recordsEnd};
    } else {
        written_.reset();
    }
    return result;
}

KXP::RetVal TrackerFileWriter::WriteText(const KXP::JSONFile& file, const Content& content,
                                         size_t& recordsEnd, KXP::HeldLog& log) const {
    KXP::JsonBuffer buffer;
    KXP::PrettyJsonWriter writer(buffer);
    writer.SetIndent('\t', 1);
    WriteTrackerJSON(content.records, content.games, content.info, writer,
                     [&] { recordsEnd = buffer.GetSize(); });
    const std::string_view text(buffer.GetString(), buffer.GetSize());
    if (content.firstPlace == 0) return file.WriteText(text, log);
    const size_t keep = written_->recordsEnd;
    const bool hasRecords = !content.records.empty();
    recordsEnd = hasRecords ? keep + 1 + recordsEnd - kHead.size() : keep;
    return file.WriteTail(keep, TailOf(text, hasRecords), log);
}
