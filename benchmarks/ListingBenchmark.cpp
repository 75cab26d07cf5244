// What the listing of a folder costs compared with what is unavoidable: reading the folder, and for each file
// its times, one read and its place in an ordered text. The target is 1.4 times that floor, of one run.
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>
#include <dirent.h>
#include <sys/stat.h>

#include "benchmarks/CaptureFolder.h"
#include "plugin-modules/Gallery/src/endpoints/FolderListing.h"

namespace {

using namespace benchmarks;

void Listing(benchmark::State& state) {
    const Folder folder(0, 1, static_cast<int>(state.range(0)));
    const std::atomic<bool> goOn{false};
    while (state.KeepRunning()) {
        FolderListing listing({folder.path() + "/"});
        listing.Read(goOn);
        KXP::Document response(rapidjson::kObjectType);
        listing.Write(response, response.GetAllocator());
        KXP::JsonBuffer text;
        KXP::JsonWriter writer(text);
        response.Accept(writer);
        benchmark::DoNotOptimize(text.GetString());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(Listing)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

void FloorOfListing(benchmark::State& state) {
    const Folder folder(0, 1, static_cast<int>(state.range(0)));
    while (state.KeepRunning()) {
        std::vector<std::pair<int64_t, std::string>> files;
        DIR* entries = opendir(folder.path().c_str());
        while (const dirent* entry = readdir(entries)) {
            const std::string path = folder.path() + "/" + entry->d_name;
            struct stat status {};
            stat(path.c_str(), &status);
            if (S_ISDIR(status.st_mode)) continue;
            OpenReadClose(path);
            files.emplace_back(status.st_mtime, entry->d_name);
        }
        closedir(entries);
        std::sort(files.begin(), files.end());
        std::string text;
        for (const auto& [time, name] : files)
            text += R"({"name":")" + name + R"(","type":"image","subtype":"Normal","source":"OVS_Share"},)";
        benchmark::DoNotOptimize(text.data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(FloorOfListing)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

}  // namespace
