// A folder of its own for one test, removed with all that is in it.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

class TempFolder {
  public:
    TempFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "gallery-XXXXXX").string();
        if (!mkdtemp(pattern.data())) throw std::runtime_error("no temporary folder");
        // Without links in it, so that paths that the product resolves compare as text.
        path_ = std::filesystem::canonical(pattern).string();
    }
    ~TempFolder() {
        std::error_code error;
        std::filesystem::remove_all(path_, error);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::string& path() const { return path_; }
    std::string operator/(const std::string& name) const { return path_ + "/" + name; }

    // Writes a file, with the folders that lead to it, and returns its path.
    std::string Write(const std::string& name, const std::string& bytes) const {
        const std::filesystem::path file = *this / name;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream out(file, std::ios::binary | std::ios::trunc);
        if (!(out << bytes << std::flush)) throw std::runtime_error("cannot write " + file.string());
        return file.string();
    }

    std::string MakeFolder(const std::string& name) const {
        std::filesystem::create_directories(*this / name);
        return *this / name;
    }

    std::string Read(const std::string& name) const {
        std::ifstream in(*this / name, std::ios::binary);
        if (!in) throw std::runtime_error("cannot read " + name);
        return {std::istreambuf_iterator<char>(in), {}};
    }

    bool Has(const std::string& name) const {
        return std::filesystem::exists(std::filesystem::symlink_status(*this / name));
    }

  private:
    std::string path_;
};
