// What killed processes have left of trims in place.
#pragma once

#include <string>

// Finishes what the notes in the share folder describe, except those of living processes; on a start, before
// there is a tracker. A clip that is not whole is removed. A whole one takes the place of its capture, or is
// removed if the capture is no longer the one that was cut. Because anybody can edit the notes, nothing is
// touched but a regular file at the clip's path that can be the one of the note.
void FinishInterruptedEdits(const std::string& shareFolder);
