// Files on their way to their place, while they have a hidden name of their own beside it. Each such name is
// noted in the share folder before the file gets it, so that the next start removes what a killed process has
// left. Without a share folder there is no note, and the file is made all the same.
#pragma once

#include <memory>
#include <string>

#include "base/FileDescriptor.h"
#include "base/WorkNote.h"

namespace KXP {

// The start of the names of these notes.
constexpr const char* kPartNotes = "NewFile_";

// A name that nobody can foresee. Its length does not depend on the file's own name, which may be as long as
// names can be. Its ending keeps everybody from taking the file for what it will be.
std::string NewPartName();

// Notes a name in an open folder for as long as the note lives; null when that fails.
std::unique_ptr<WorkNote> NotePart(const FileDescriptor& folder, const std::string& name);

// Removes the files that processes which have ended have noted and left, and returns their number. Touches
// regular files with such names alone.
int RemoveAbandonedParts();

}  // namespace KXP
