// Runs a fuzz target over the empty input, every file of the folders, and a number of damaged copies of each
// file of the first: the seeds and what fuzzing found as an ordinary test, for builds without libFuzzer. The
// damage is the same on every run. Usage: <target>_fuzz <copies> <folder>...
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <set>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

using Input = std::vector<uint8_t>;

void Run(const Input& bytes) {
    // Of exactly the size, so that the sanitizers see a step beyond its end.
    const std::unique_ptr<uint8_t[]> input(new uint8_t[bytes.size()]);
    std::copy(bytes.begin(), bytes.end(), input.get());
    LLVMFuzzerTestOneInput(input.get(), bytes.size());
}

Input Read(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// Sizes and counts that readers decide by, mostly in the first bytes, and an end that comes too early.
Input Damaged(Input bytes, std::mt19937& random) {
    constexpr uint8_t kBytes[] = {0, 1, 2, 3, 7, 8, 9, 15, 16, 17, 0x7F, 0x80, 0xFF};
    if (bytes.empty()) return bytes;
    if (random() % 4 == 0) bytes.resize(random() % bytes.size());
    for (unsigned changes = random() % 4; changes > 0 && !bytes.empty(); --changes) {
        const size_t range = random() % 2 == 0 ? std::min<size_t>(bytes.size(), 64) : bytes.size();
        const size_t at = random() % range;
        if (random() % 8 == 0)
            bytes[at] = static_cast<uint8_t>(bytes[at] ^ 1u << random() % 8);
        else if (random() % 8 == 0)
            bytes.erase(bytes.begin() + static_cast<std::ptrdiff_t>(at));
        else
            bytes[at] = kBytes[random() % std::size(kBytes)];
    }
    return bytes;
}

// How many files were run.
int ReplayFolder(const std::filesystem::path& folder, int copies) {
    std::mt19937 random(1);  // NOLINT(bugprone-random-generator-seed)
    std::set<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        if (entry.is_regular_file()) files.insert(entry.path());
    for (const std::filesystem::path& file : files) {
        const Input input = Read(file);
        Run(input);
        for (int i = 0; i < copies; ++i)
            Run(Damaged(input, random));
    }
    return static_cast<int>(files.size());
}

}  // namespace

int main(int argc, char** argv) {
    try {
        if (argc < 3) return 2;
        Run({});
        const int seeds = ReplayFolder(argv[2], std::atoi(argv[1]));
        int found = 0;
        for (int i = 3; i < argc; ++i)
            if (std::filesystem::exists(argv[i])) found += ReplayFolder(argv[i], 0);
        std::printf("%d seeds, %d inputs that fuzzing found\n", seeds, found);
        return seeds == 0 ? 1 : 0;  // seeds that are missing must not pass
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
