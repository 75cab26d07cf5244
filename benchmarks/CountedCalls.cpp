// Runs the work that the argument names in the staged product, between two marks that a tracer of system
// calls sees, and prints by how many units of the work the calls between them are to be divided.
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <thread>

#include <unistd.h>

#include "benchmarks/CaptureFolder.h"
#include "benchmarks/Product.h"
#include "benchmarks/SpinningContainer.h"
#include "tests/support/TempGallery.h"

namespace {

using namespace benchmarks;

// The tracer prints the path, which no file has.
template <typename Work>
void Count(Work work) {
    (void)access("/count: add", F_OK);
    work();
    (void)access("/count: end", F_OK);
}

template <typename Work>
void Subtract(Work work) {
    (void)access("/count: subtract", F_OK);
    work();
    (void)access("/count: end", F_OK);
}

// The same of work that waits for the product, less what the product asks the system in as long a time of
// rest.
template <typename Work>
void CountBeyondRest(Work work) {
    const auto start = std::chrono::steady_clock::now();
    Count(work);
    const auto taken = std::chrono::steady_clock::now() - start;
    Subtract([&] { std::this_thread::sleep_for(taken); });
}

void Fill(const TempGallery& gallery, int captures) {
    for (int i = 0; i < captures; ++i)
        gallery.AddImage("Game " + std::to_string(i / 200) + "/" + std::to_string(i) + ".png");
}

int Listing() {
    constexpr int kFiles = 10000;
    const TempGallery gallery;
    const Folder folder(0, 1, kFiles);
    Product product(PRODUCT_PLUGIN);
    Count([&] { product.Ask("GetFolderListing", "{" + Quoted("directory", folder.path()) + "}"); });
    return kFiles;
}

// What a rebuild asks of files beyond a start that finds all of them on record.
int Rebuild() {
    constexpr int kFiles = 10000;
    const TempGallery gallery;
    Fill(gallery, kFiles);
    // What is this young may still be written to, and the watcher would look at it once more.
    for (const auto& file : std::filesystem::recursive_directory_iterator(gallery.path()))
        std::filesystem::last_write_time(file, file.last_write_time() - std::chrono::hours(1));
    const auto start = [&](bool atOnce) {
        Product product(PRODUCT_PLUGIN, atOnce);
        product.Ask("GetRecentUGC", "{\"count\":1}");
    };
    Count([&] { start(false); });
    Subtract([&] { start(true); });
    return kFiles;
}

int Capture(int captures) {
    const TempGallery gallery;
    Fill(gallery, captures);
    Product product(PRODUCT_PLUGIN);
    // Of those after the first, as the folder of the game appears with that. The sum that was withheld
    // follows the notification. Of several, because what is asked at rest comes at times of its own.
    constexpr int kCounted = 4;
    const auto capture = [&](int number) {
        product.After("captureSaved", [&] { gallery.AddImage("Live/" + std::to_string(number) + ".png"); });
        std::this_thread::sleep_for(std::chrono::seconds(3));
    };
    capture(0);
    CountBeyondRest([&] {
        for (int number = 1; number <= kCounted; ++number)
            capture(number);
    });
    return kCounted;
}

int Settings() {
    constexpr int kRequests = 1000;
    const TempGallery gallery;
    SpinningContainer container(PRODUCT_PLUGIN);
    container.LetSettingsAge();
    Count([&] {
        for (int i = 0; i < kRequests; ++i)
            container.Ask("GetSettings");
    });
    return kRequests;
}

const std::map<std::string, std::function<int()>> kWorks{
    {"listing", &Listing},
    {"rebuild", &Rebuild},
    {"capture-10000", [] { return Capture(10000); }},
    {"capture-100000", [] { return Capture(100000); }},
    {"settings", &Settings},
};

}  // namespace

int main(int count, char** arguments) {
    const auto work = kWorks.find(count == 2 ? arguments[1] : "");
    if (work == kWorks.end()) return std::fputs("counted_calls WORK\n", stderr), 2;
    std::printf("%d\n", work->second());
}
