// Keeps the product's log lines, of which hostile input makes many, from standard error.
#pragma once

#include "CobalixUtil.h"

inline void QuietLog() {
    static const bool quiet = [] {
        KXP::LogInit(
            KXP::LocalApp, [](const char*, void*) {}, nullptr);
        return true;
    }();
    (void)quiet;
}
