// Bytes of a JSON file, in any encoding: read, taken apart by the accessors, written and read again.
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <unistd.h>

#include "common/json/JSONFile.h"
#include "common/json/JsonHelpers.h"
#include "fuzz/QuietLog.h"

namespace {

// A file of this process alone, removed when it ends.
struct FuzzFile {
    FuzzFile() {
        path = (std::filesystem::temp_directory_path() / ("json-fuzz-" + std::to_string(getpid()))).string();
        QuietLog();
    }
    ~FuzzFile() { std::filesystem::remove(path); }
    std::string path;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const FuzzFile fuzzFile;
    std::ofstream(fuzzFile.path, std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    KXP::JSONFile file;
    file.Init(fuzzFile.path);
    KXP::Document document;
    KXP::ReadJSON(fuzzFile.path, document);
    if (file.ReadAndParseJSON(document).Failed()) return 0;
    KXP::JSONGetStrings(document, "a");
    KXP::jsonGetValueOrDefault<double>(document, "a", 0);
    KXP::Document again;
    // What was read can be written and has the same shape when it is read again. Numbers may differ in their
    // last digit.
    if (file.WriteJSON(document).Failed() || file.ReadAndParseJSON(again).Failed() ||
        KXP::WriteJSONToKeys(again) != KXP::WriteJSONToKeys(document))
        std::abort();
    return 0;
}
