#include <cwchar>

#include <locale.h>

#include "gallery-host/base/Columns.h"

// The width tables follow the locale, and the user's may know ASCII only.
int host::Platform::ColumnsOf(char32_t character) {
    static const locale_t utf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    // For the calling thread alone.
    const locale_t previous = utf8 ? uselocale(utf8) : nullptr;
    const int columns = wcwidth(static_cast<wchar_t>(character));
    if (previous) uselocale(previous);
    return columns;
}
