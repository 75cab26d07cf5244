// What is done to the product while calls fail or the process is killed.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/faults/Gallery.h"

struct Operation {
    const char* name;
    bool startsStopped;
    // Does it, and waits for the end. True when the product said that it is done.
    std::function<bool(Product&, const SmallGallery&)> run;
    const char* removes;  // a file that may be gone after it, or null
    const char* edits;    // a file that another may have replaced, or null
};

const std::vector<Operation>& Operations();

// The gallery is the one that all is checked in, whatever an operation has left.
bool ChooseGallery(Product& product, const SmallGallery& gallery);
