// Runs a fuzz target over the empty input and every file of the folders given, once each: the corpus as an
// ordinary test, for builds without libFuzzer.
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

// How many files were run.
int ReplayFolder(const std::filesystem::path& folder) {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (!entry.is_regular_file()) continue;
        std::ifstream file(entry.path(), std::ios::binary);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        // An own block of exactly the size, so that the sanitizers see a step behind its end.
        const std::vector<uint8_t> input(bytes.begin(), bytes.end());
        LLVMFuzzerTestOneInput(input.data(), input.size());
        ++count;
    }
    return count;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        const uint8_t nothing = 0;
        LLVMFuzzerTestOneInput(&nothing, 0);
        for (int i = 1; i < argc; ++i) {
            const int count = ReplayFolder(argv[i]);
            std::printf("%s: %d inputs\n", argv[i], count);
            if (count == 0) return 1;  // a corpus that is not there must not pass
        }
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
