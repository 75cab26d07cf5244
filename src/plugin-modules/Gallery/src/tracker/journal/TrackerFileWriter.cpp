#include "plugin-modules/Gallery/src/tracker/journal/TrackerFileWriter.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <string>
#include <string_view>
#include <utility>

namespace {

// How the text of every tracker file begins, and what stands between its records and its games.
constexpr std::string_view kHead = "{\n\t\"UGC\": [";
constexpr std::string_view kGames = "],\n\t\"apps\": [";
// Before the "]" of an array that has elements.
constexpr std::string_view kArrayEnd = "\n\t";
constexpr std::string_view kSeparator = ",";

std::vector<FileStamp> StampsOf(const std::vector<RecordStore::RecordPtr>& records) {
    std::vector<FileStamp> stamps;
    stamps.reserve(records.size());
    for (const RecordStore::RecordPtr& record : records)
        stamps.push_back(record->stamp);
    return stamps;
}

void WriteRecords(const std::vector<RecordStore::RecordPtr>& records, KXP::JsonBuffer& buffer) {
    KXP::PrettyJsonWriter writer(buffer);
    writer.SetIndent('\t', 1);
    WriteRecords(records, writer);
}

void Append(KXP::JsonBuffer& buffer, std::string_view text) {
    if (!text.empty()) std::memcpy(buffer.Push(text.size()), text.data(), text.size());
}

std::string_view ViewOf(const KXP::JsonBuffer& buffer) {
    return {buffer.GetString(), buffer.GetSize()};
}

}  // namespace

void TrackerFileWriter::Recheck(const KXP::JSONFile& file) {
    KXP::JSONFile::Stamp stamp;
    if (written_ && !(file.ReadStamp(stamp) && stamp == written_->stamp)) written_.reset();
}

TrackerFileWriter::Content TrackerFileWriter::ContentOf(const RecordStore& store) const {
    const bool added = written_ && written_->generation == store.generation();
    const uint64_t first = added ? written_->endPlace : 0;
    Content content{first, store.nextPlace(), store.generation(), store.From(first), {}, {}};
    content.info = {store.lastId(), kTrackerVersion, 0};
    content.games.reserve(store.games().size());
    auto kept = games_.begin();  // both are in the order of the names
    for (const auto& [name, game] : store.games()) {
        while (kept != games_.end() && kept->name < name)
            ++kept;
        const bool isKept = kept != games_.end() && kept->name == name && kept->version == game.version;
        content.games.push_back({name, game.version, isKept ? std::nullopt : std::optional(game)});
    }
    return content;
}

KXP::RetVal TrackerFileWriter::Write(const KXP::JSONFile& file, StampFile& stamps, const Content& content,
                                     KXP::HeldLog& log) {
    const size_t before = content.firstPlace == 0 ? 0 : written_->records;
    const size_t records = before + content.records.size();
    const bool sameGames = !TakeGames(content);
    Written written{{}, content.generation, content.endPlace, records, 0, 0};
    KXP::RetVal result;
    if (content.firstPlace == 0) {
        result = WriteAll(file, content, written, log);
    } else if (sameGames && content.records.empty()) {
        written = *written_;
        result = file.WriteTail(written.gamesEnd, InfoText(content.info), log);
    } else {
        result = WriteRest(file, content, written, log);
    }
    left_ = file.ReadStamp(written.stamp) ? std::optional(written.stamp) : std::nullopt;
    const bool isKnown = left_ && !result.Failed();
    if (isKnown) stamps.Write(written.stamp, before, StampsOf(content.records));
    written_ = isKnown && records > 0 ? std::optional(written) : std::nullopt;
    return result;
}

// Returns whether a game has changed, come or gone.
bool TrackerFileWriter::TakeGames(const Content& content) {
    const auto isChanged = [](const Content::Game& game) { return game.changed.has_value(); };
    const bool sameNames = HasGamesOf(content);
    if (sameNames && std::none_of(content.games.begin(), content.games.end(), isChanged)) return false;
    sameNames ? RenewGames(content) : MakeGames(content);
    return true;
}

bool TrackerFileWriter::HasGamesOf(const Content& content) const {
    const auto isSame = [](const Content::Game& game, const GameLines& known) {
        return game.name == known.name;
    };
    return !gamesText_.empty() &&
           std::equal(content.games.begin(), content.games.end(), games_.begin(), games_.end(), isSame);
}

// The games are those of the text.
void TrackerFileWriter::RenewGames(const Content& content) {
    size_t at = kGames.size();
    auto known = games_.begin();
    for (const Content::Game& game : content.games) {
        GameLines& lines = *known++;
        if (game.changed) {
            const std::string text = GameText(game.name, *game.changed);
            gamesText_.replace(at, lines.size, text);
            lines.version = game.version;
            lines.size = text.size();
        }
        at += lines.size + kSeparator.size();
    }
}

void TrackerFileWriter::MakeGames(const Content& content) {
    std::map<std::string_view, std::string_view> texts;
    size_t at = kGames.size();
    for (const GameLines& lines : games_) {
        texts.emplace(lines.name, std::string_view(gamesText_).substr(at, lines.size));
        at += lines.size + kSeparator.size();
    }
    Lines games;
    std::string text(kGames);
    for (const Content::Game& game : content.games) {
        if (!games.empty()) text += kSeparator;
        const size_t before = text.size();
        if (game.changed)
            text += GameText(game.name, *game.changed);
        else
            text += texts.at(game.name);
        games.push_back({game.name, game.version, text.size() - before});
    }
    if (!games.empty()) text += kArrayEnd;
    games_ = std::move(games);
    gamesText_ = std::move(text);
}

KXP::RetVal TrackerFileWriter::WriteAll(const KXP::JSONFile& file, const Content& content, Written& written,
                                        KXP::HeldLog& log) const {
    KXP::JsonBuffer buffer;
    WriteRecords(content.records, buffer);
    written.recordsEnd = buffer.GetSize();
    if (!content.records.empty()) Append(buffer, kArrayEnd);
    Append(buffer, gamesText_);
    written.gamesEnd = buffer.GetSize();
    Append(buffer, InfoText(content.info));
    return file.WriteText(ViewOf(buffer), log);
}

KXP::RetVal TrackerFileWriter::WriteRest(const KXP::JSONFile& file, const Content& content, Written& written,
                                         KXP::HeldLog& log) const {
    const size_t keep = written_->recordsEnd;
    std::string records;
    if (!content.records.empty()) {
        KXP::JsonBuffer buffer;
        WriteRecords(content.records, buffer);
        records.append(kSeparator).append(ViewOf(buffer).substr(kHead.size()));
    }
    written.recordsEnd = keep + records.size();
    records.append(kArrayEnd);
    written.gamesEnd = keep + records.size() + gamesText_.size();
    const std::string info = InfoText(content.info);
    return file.WriteTail(keep, KXP::JSONFile::Parts{records, gamesText_, info}, log);
}
