// Looks at what the product keeps about captures, and at the captures themselves.
#pragma once

#include <string>

#include "gallery-host/doctor/Finding.h"
#include "gallery-host/doctor/FolderChecks.h"

namespace host {

// Where the settings say that things are, or where they are without settings; adds what it finds of these.
// Makes nothing.
ProductFolders ReadFolders(Findings& findings);

// Opens each capture on record, with a progress bar.
Findings CheckRecord(const ProductFolders& folders);

}  // namespace host
