// The tracker's file, as a program beside the library reads it.
#pragma once

#include <map>
#include <string>

#include "common/Json.h"

struct TrackerRecords {
    std::map<std::string, int> ids;                           // by path
    std::map<std::string, std::map<std::string, int>> games;  // the same by profile name
    uint32_t folderCRC = 0;
    std::string wrong;  // what contradicts itself in the file; empty when nothing does
};

// False when there is no whole text in it, as while it is written.
bool ReadTracker(const std::string& path, TrackerRecords& out);
