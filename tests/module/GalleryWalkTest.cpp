// A long random walk of file operations, with the library held against a model after each spell of them.
// GALLERY_WALK_SEED gives another walk, GALLERY_WALK_STEPS a longer one.
#include <cstdlib>

#include <gtest/gtest.h>

#include "tests/module/GalleryWalk.h"
#include "tests/support/LogCapture.h"

namespace {

unsigned FromEnvironment(const char* name, unsigned otherwise) {
    const char* const text = std::getenv(name);
    return text ? static_cast<unsigned>(std::strtoul(text, nullptr, 10)) : otherwise;
}

TEST(GalleryWalk, TheRecordIsTrueToTheDisk) {
    const unsigned seed = FromEnvironment("GALLERY_WALK_SEED", 1);
    int left = static_cast<int>(FromEnvironment("GALLERY_WALK_STEPS", 45));
    SCOPED_TRACE("GALLERY_WALK_SEED=" + std::to_string(seed));
    const LogCapture quiet;  // of this process
    GalleryWalk walk(seed);
    while (left > 0) {
        const int steps = walk.Spell();
        ASSERT_FALSE(HasFailure()) << left << " steps were left";
        left -= steps;
    }
    walk.End();
}

}  // namespace
