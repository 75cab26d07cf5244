// Files whose content is being changed, or read for a change: who engraves or cuts one waits for the others.
#pragma once

#include <string>

#include "common/threads/Turns.h"

namespace media {

// The process's.
KXP::Turns& Edits();

// The name of a file's turn, the same for all paths to it.
std::string EditedFile(const std::string& path);

}  // namespace media
