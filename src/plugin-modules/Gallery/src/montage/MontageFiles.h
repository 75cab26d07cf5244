// The files of a montage: its recipe, the input of the montage process, and its output.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/json/Json.h"

// The folder of recipes, relative to the folders of data files.
extern const char* const RECIPE_PATH;
// The montage process's folder among those of other applications, and the file in it with its input.
extern const char* const MONTAGE_APP;
extern const char* const STORAGE_FILE;
// The executable on platforms without bundles.
extern const char* const MONTAGE_EXE;
extern const char* const MONTAGE_EXE_STAGE;

namespace montage {

// Returns the path of a recipe's script, whose name is relative to RECIPE_PATH. Empty when there is none or
// the name leads out of that folder.
std::string FindRecipeScript(const std::string& recipe);

// Returns the folder of the recipes' media; empty when there is none.
std::string FindMediaFolder();

// Returns the script that the product config sets for all recipes; empty for none.
std::string OverridingScript();

// Writes {"recipeParams":...}: a copy of `params` with the media folder, without the members that the message
// layer adds. A reader finds either the old text or the new one, whole. False when it cannot be written.
bool WriteStorageFile(const std::string& path, const KXP::Value& params, const std::string& mediaFolder);

// Returns the paths at which the montage process may be, for a program in `folder`.
std::vector<std::string> ExecutablePlaces(const std::string& folder);

// Remembers what is at the output's path before the montage, so that an older file is not taken for it.
class OutputPlace {
  public:
    explicit OutputPlace(std::string path);

    // Deletes the file unless it is the older one, unchanged.
    void DeleteIfMade() const;

  private:
    struct Identity {
        bool exists = false;
        uint64_t device = 0;
        uint64_t file = 0;
        int64_t size = 0;
        int64_t time = 0;  // last modification, in nanoseconds

        bool operator==(const Identity& other) const;
    };

    static Identity Look(const std::string& path);

    const std::string path_;
    const Identity before_;
};

}  // namespace montage
