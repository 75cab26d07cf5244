// What is to be on record, worked out from what was done to the files alone.
#pragma once

#include <map>
#include <string>
#include <vector>

class GalleryModel {
  public:
    // Open: either is right, because it depends on what the disk held when it was looked at.
    enum class Expect { No, Yes, Open };

    explicit GalleryModel(std::string gallery) : gallery_(std::move(gallery)) {}

    const std::string& gallery() const { return gallery_; }

    // A file has these bytes from now on; `byFolder` when it came with the folder that it lies in.
    void Put(const std::string& path, bool own, bool byFolder = false);
    void Remove(const std::string& path);
    // A file or folder, with all beneath, over what there may be of a file.
    void Move(const std::string& from, const std::string& to);
    void CopyFolder(const std::string& from, const std::string& to);
    void RemoveFolder(const std::string& folder);
    // Records were made anew from the disk, of a folder that may have become the gallery with this; or those
    // that it had are in force again.
    void Rebuilt(const std::string& gallery, bool orKept);
    // The gallery went and came back while it was watched.
    void CameBack();

    // Why these are not the right records, by path with their ids; empty when they are.
    std::string Compare(const std::map<std::string, int>& records) const;
    // All is quiet, and these are the records.
    void Settle(const std::map<std::string, int>& records);

    std::vector<std::string> FilesBeneath(const std::string& folder) const;

  private:
    struct File {
        bool onDisk = false;
        bool own = false;
        int id = 0;               // of its record when all was quiet; 0 without one
        bool touched = false;     // since then
        bool mayBeKnown = false;  // was a capture, or on record, at some time since then
        Expect expect = Expect::No;
    };

    enum class Place { Outside, Game, Nested };
    Place PlaceOf(const std::string& path) const;
    void Touch(File& file);

    std::string gallery_;
    std::map<std::string, File> files_;
};
