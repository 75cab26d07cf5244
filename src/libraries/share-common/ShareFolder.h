// Where the product keeps the files of its sharing features.
#pragma once

#include <string>
#include <vector>

// The product data folder and "Share" in it, in the form that KXP::CreateDirectoryPath takes. Makes nothing.
std::vector<std::string> GetShareFolderPath();
