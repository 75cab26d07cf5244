// Lets others see what one walk through a tree of folders finds, so that the disk is asked only once.
#pragma once

#include <string>

struct stat;

namespace KXP {

// Called by the thread that walks, for one folder after another. A folder that is entered and not left could
// not be read to its end.
class IFolderVisitor {
  public:
    virtual ~IFolderVisitor() = default;
    // The folder at the path is about to be read.
    virtual void Enter(const std::string& folder) = 0;
    // An entry of the folder other than "." and ".."; `status` is that of what a link leads to.
    virtual void Found(const char* name, bool isLink, const struct stat& status) = 0;
    // All of its entries were found; `status` is the folder's own, from before they were read.
    virtual void Leave(const struct stat& status) = 0;
};

}  // namespace KXP
