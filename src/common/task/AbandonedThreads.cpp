#include "common/task/AbandonedThreads.h"

#include <dlfcn.h>

namespace KXP {
namespace {

// Raises the library's reference count for good; in a program that is linked whole there is nothing to do.
void KeepLibraryLoaded() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<const void*>(&KeepLibraryLoaded), &info) != 0 && info.dli_fname)
        dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
}

}  // namespace

void AbandonThread(std::thread thread) {
    KeepLibraryLoaded();
    thread.detach();
}

}  // namespace KXP
