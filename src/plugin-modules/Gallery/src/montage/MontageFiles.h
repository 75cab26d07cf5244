// The files of a montage: what it is made by, what it is told, and what it makes.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/Json.h"

// Where recipes lie, beneath the folders of data files.
extern const char* const RECIPE_PATH;
// The folder of the montage process beside those of other applications, and the file there that tells it what
// to do.
extern const char* const MONTAGE_APP;
extern const char* const STORAGE_FILE;
// Where platforms without bundles have the process.
extern const char* const MONTAGE_EXE;
extern const char* const MONTAGE_EXE_STAGE;

namespace montage {

// The script of a recipe, named relative to RECIPE_PATH. Empty when there is none, or the name leads out of
// there.
std::string FindRecipeScript(const std::string& recipe);

// The folder that holds the recipes' media; empty when there is none.
std::string FindMediaFolder();

// The script that the product config prescribes for all recipes; empty for none.
std::string OverridingScript();

// Writes {"recipeParams":...} with a copy of `params`, the place of the media, and without what the layer of
// messages puts into payloads. Whoever reads the file finds the old text or the new one. False when it cannot
// be written.
bool WriteStorageFile(const std::string& path, const KXP::Value& params, const std::string& mediaFolder);

// The places where the montage process is looked for, beside a program in `folder`.
std::vector<std::string> ExecutablePlaces(const std::string& folder);

// What lay at the place of the output before, so that what was there already is not taken for the montage.
class OutputPlace {
  public:
    explicit OutputPlace(std::string path);

    // Deletes the file unless it is the one from before, as it was.
    void DeleteIfMade() const;

  private:
    struct Identity {
        bool exists = false;
        uint64_t device = 0;
        uint64_t file = 0;
        int64_t size = 0;
        int64_t time = 0;  // of the last change, nanoseconds

        bool operator==(const Identity& other) const;
    };

    static Identity Look(const std::string& path);

    const std::string path_;
    const Identity before_;
};

}  // namespace montage
