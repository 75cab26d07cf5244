// Bytes of a JSON file, in any encoding: read, taken apart by the accessors, written and read again. And its
// file, which is opened and removed.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include <unistd.h>

#include "common/json/JSONFile.h"
#include "common/json/JsonHelpers.h"
#include "fuzz/QuietLog.h"

namespace {

// A file of this process alone, in a folder of its own.
std::string FuzzFile() {
    QuietLog();
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("json-fuzz-" + std::to_string(getpid()));
    std::filesystem::create_directory(folder);
    return folder / "file";
}

std::string Content(const KXP::JSONFile& file, bool reads) {
    FILE* opened = nullptr;
    if (file.OpenFile(opened, reads).Failed()) std::abort();
    const std::unique_ptr<FILE, int (*)(FILE*)> stream(opened, std::fclose);
    std::string content;
    for (int c = 0; reads && (c = std::fgetc(stream.get())) != EOF;)
        content += static_cast<char>(c);
    return content;
}

// The file goes, and its folder with it.
void CheckFile(const KXP::JSONFile& file, std::string_view bytes) {
    if (Content(file, true) != bytes || !Content(file, false).empty() || !Content(file, true).empty() ||
        file.RemoveFile().Failed() ||
        std::filesystem::exists(std::filesystem::path(file.path()).parent_path()))
        std::abort();
    FILE* none = nullptr;
    if (!file.OpenFile(none, true).Failed() || none) std::abort();
}

// Members of any type: each is taken as what it is or not at all.
void CheckAccessors(const KXP::Value& value) {
    const bool isArray = value.IsObject() && value.HasMember("a") && value["a"].IsArray();
    try {
        if (KXP::JSONGetArray(value, "a").Size() > 0 && !isArray) std::abort();
    } catch (const KXP::JSONFieldError&) {
        if (isArray) std::abort();
    }
    KXP::JSONGetStrings(value, "a");
    KXP::jsonGetValueOrDefault<double>(value, "a", 0);
    const bool isText = value.IsObject() && value.HasMember("a") && value["a"].IsString();
    if (!isText && KXP::JSONGetStrWOrDefault(value, "a", "none") != L"none") std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string path = FuzzFile();
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    KXP::JSONFile file;
    file.Init(path);
    KXP::Document document;
    KXP::ReadJSON(path, document);
    const bool isRead = !file.ReadAndParseJSON(document).Failed();
    CheckAccessors(document);
    CheckFile(file, {reinterpret_cast<const char*>(data), size});
    if (!isRead) return 0;
    FuzzFile();
    KXP::Document again;
    // What was read can be written and has the same shape when it is read again. Numbers may differ in their
    // last digit.
    if (file.WriteJSON(document).Failed() || file.ReadAndParseJSON(again).Failed() ||
        KXP::WriteJSONToKeys(again) != KXP::WriteJSONToKeys(document) || file.RemoveFile().Failed())
        std::abort();
    return 0;
}
