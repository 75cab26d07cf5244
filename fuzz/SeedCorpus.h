// Where the seeds of a target are written.
#pragma once

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

// One target's folder; seeds are numbered in the order they are written.
class Corpus {
  public:
    Corpus(const std::filesystem::path& root, const char* target) : folder_(root / target) {
        std::filesystem::create_directories(folder_);
    }

    void Add(std::string_view bytes) {
        std::ofstream file(folder_ / ("seed" + std::to_string(++count_)), std::ios::binary);
        file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        if (!file.flush()) throw std::runtime_error("cannot write " + folder_.string());
    }

  private:
    std::filesystem::path folder_;
    int count_ = 0;
};

// Those that are text, those of the host, and videos.
void MakeTextSeeds(const std::filesystem::path& root);
void MakeHostSeeds(const std::filesystem::path& root);
void MakeVideoSeeds(const std::filesystem::path& root);
// Those of headers, for MakeSeeds.
void AddPictureHeads(Corpus& corpus);
void AddLabelledPngs(Corpus& corpus);
