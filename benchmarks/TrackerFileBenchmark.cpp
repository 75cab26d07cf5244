// The tracker's file with 100,000 records, about 60 MB: read from the disk's cache into records, and written
// out of them, against RapidJSON alone on text in memory. The baseline runs in turn with what is measured,
// and the counter "ratio" shows how much longer ours took.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <unistd.h>

#include "common/json/JSONFile.h"
#include "plugin-modules/Gallery/src/tracker/record/TrackerFile.h"

namespace {

constexpr int kRecords = 100000;

TrackedUGC Record(int id) {
    static const char* const kGames[] = {"Rustwind Rally", "Northern Harbour", "Glass Orchard"};
    const std::string number = std::to_string(1000000 + id);
    TrackedUGC record;
    record.id = id;
    const std::string game = kGames[id % 3];
    record.profileName = game;
    record.drsName = game;
    record.shortName = "game" + std::to_string(id % 3);
    record.date = "2026-01-02T03:04:05";
    record.sizeKB = 1000u + static_cast<uint32_t>(id) % 5000000u;
    record.cmsId = 100021711;
    record.fileSource = "OVS_SDK";
    record.fileType = id % 4 == 0 ? "image" : "video";
    record.fileSubType = id % 4 == 0 ? "Screenshot" : id % 4 == 1 ? "Manual" : "Highlight";
    record.path = "/home/somebody/Videos/Gallery/" + game + "/" + game + " 2026.01.02 - " + number +
                  (id % 4 == 0 ? ".png" : ".DVR.mp4");
    if (record.fileType == "video") {
        record.duration = "00:00:15";
        record.msDuration = 15000;
        record.audioType = "stereo";
    }
    if (TrackedUGC::IsAHighlight(record)) {
        record.highlightDefinitionId = "PHOTO_FINISH";
        record.highlightName = "Photo finish";
        record.highlightGroupId = "GROUP_" + std::to_string(id % 100);
        record.highlightTags = 16;
        record.highlightSignificance = 4;
        record.eventTimeStamp = "2026-01-02T03:04:05.678Z";
    }
    return record;
}

const TrackerContent& Content() {
    static const TrackerContent content = [] {
        TrackerContent made;
        for (int id = 1; id <= kRecords; ++id)
            made.ugc.push_back(std::make_shared<TrackedUGC>(Record(id)));
        made.info = {kRecords, kTrackerVersion, 0x12345678};
        return made;
    }();
    return content;
}

// The file of `Content()`, removed at the end.
class SampleFile {
  public:
    SampleFile() {
        path_ = std::filesystem::temp_directory_path() / ("tracker-benchmark-" + std::to_string(getpid()));
        file.Init(path_.string());
        if (Write().Failed()) throw std::runtime_error("cannot write " + path_.string());
        std::ifstream in(path_, std::ios::binary);
        text.assign(std::istreambuf_iterator<char>(in), {});
    }
    ~SampleFile() { std::filesystem::remove(path_); }

    KXP::RetVal Write() {
        KXP::HeldLog log;
        return file.WriteJSON([](KXP::PrettyJsonWriter& writer) { WriteTrackerJSON(Content(), writer); },
                              log);
    }

    KXP::JSONFile file;
    std::string text;

  private:
    std::filesystem::path path_;
};

SampleFile& Sample() {
    static SampleFile sample;
    return sample;
}

template <typename Work>
double Seconds(const Work& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// The middle of the pairs' ratios, so that one disturbed pair does not count.
class Ratios {
  public:
    void Add(double ours, double baseline) { ratios_.push_back(ours / baseline); }
    double Middle() {
        std::sort(ratios_.begin(), ratios_.end());
        return ratios_[ratios_.size() / 2];
    }

  private:
    std::vector<double> ratios_;
};

double ParsePlainly(const std::string& text) {
    std::vector<char> copy(text.c_str(), text.c_str() + text.size() + 1);
    rapidjson::Document document;
    return Seconds([&] {
        document.ParseInsitu(copy.data());
        if (document.HasParseError()) throw std::runtime_error("benchmark text");
    });
}

void ReadTracker(benchmark::State& state, bool intoRecords) {
    SampleFile& sample = Sample();
    Ratios ratios;
    for ([[maybe_unused]] auto _ : state) {
        const double baseline = ParsePlainly(sample.text);
        KXP::Document document;
        TrackerContent content;
        const double ours = Seconds([&] {
            const KXP::ElementReader records = ParseUGCFromJSON(content.ugc);
            if (sample.file.ReadAndParseJSON(document, intoRecords ? &records : nullptr).Failed())
                throw std::runtime_error("benchmark file");
            if (!intoRecords) return;
            ParseTrackerInfoFromJSON(document, content.info);
            (void)ParseUGCGamesFromJSON(document, content.games);
        });
        state.SetIterationTime(ours);
        ratios.Add(ours, baseline);
    }
    state.counters["ratio"] = ratios.Middle();
    state.counters["MB"] = static_cast<double>(sample.text.size()) / 1e6;
}

// What a loop without lists and checks of encoding would write: the same text.
void WriteBarely(const TrackerContent& content, KXP::PrettyJsonWriter& writer) {
    const auto text = [&](const char* key, std::string_view value) {
        writer.Key(key);
        writer.String(value.data(), static_cast<rapidjson::SizeType>(value.size()));
    };
    writer.StartObject();
    writer.Key("UGC");
    writer.StartArray();
    for (const NewUGC& made : content.ugc) {
        const TrackedUGC& record = *made;
        writer.StartObject();
        writer.Key("id");
        writer.Int(record.id);
        text("path", record.path);
        text("type", record.fileType);
        text("subType", record.fileSubType);
        text("source", record.fileSource);
        writer.Key("sizeKB");
        writer.Uint(record.sizeKB);
        text("date", record.date);
        text("profileName", record.profileName);
        text("drsName", record.drsName);
        text("shortName", record.shortName);
        writer.Key("cmsId");
        writer.Uint64(record.cmsId);
        if (record.fileType == "video") {
            text("duration", record.duration);
            writer.Key("msDuration");
            writer.Uint(record.msDuration);
            text("audioType", record.audioType);
        }
        if (TrackedUGC::IsAHighlight(record)) {
            text("highlightDefinitionId", record.highlightDefinitionId);
            text("highlightName", record.highlightName);
            text("highlightGroupId", record.highlightGroupId);
            writer.Key("highlightTags");
            writer.Int(record.highlightTags);
            writer.Key("highlightSignificance");
            writer.Int(record.highlightSignificance);
            text("highlightEventTimeStamp", record.eventTimeStamp);
        }
        writer.Key("meme");
        writer.StartObject();
        text("top", record.topBarText);
        text("bottom", record.bottomBarText);
        writer.EndObject();
        writer.EndObject();
    }
    writer.EndArray();
    writer.Key("apps");
    writer.StartArray();
    writer.EndArray();
    writer.Key("info");
    writer.StartObject();
    writer.Key("lastUGCIdUsed");
    writer.Int(content.info.lastUGCIdUsed);
    writer.Key("version");
    writer.Int(content.info.version);
    writer.Key("folderCRC");
    writer.Uint(content.info.folderCRC);
    writer.EndObject();
    writer.EndObject();
}

double WriteToMemory(void (*write)(const TrackerContent&, KXP::PrettyJsonWriter&),
                     const std::string& expected) {
    KXP::JsonBuffer buffer;
    const double seconds = Seconds([&] {
        KXP::PrettyJsonWriter writer(buffer);
        writer.SetIndent('\t', 1);
        write(Content(), writer);
    });
    if (expected != std::string_view(buffer.GetString(), buffer.GetSize()))
        throw std::runtime_error("benchmark text");
    return seconds;
}

// The text alone, in memory.
void WriteTrackerText(benchmark::State& state) {
    const std::string& text = Sample().text;
    Ratios ratios;
    for ([[maybe_unused]] auto _ : state) {
        const double baseline = WriteToMemory(WriteBarely, text);
        const double ours = WriteToMemory(WriteTrackerJSON, text);
        state.SetIterationTime(ours);
        ratios.Add(ours, baseline);
    }
    state.counters["ratio"] = ratios.Middle();
}

// With the file: the text is written twice, once after the old one.
void WriteTrackerFile(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        if (Sample().Write().Failed()) state.SkipWithError("file not written");
    }
}

BENCHMARK_CAPTURE(ReadTracker, document, false)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ReadTracker, records, true)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(WriteTrackerText)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(WriteTrackerFile)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
