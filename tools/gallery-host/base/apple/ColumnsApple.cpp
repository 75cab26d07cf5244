#include <cwchar>

#include <xlocale.h>

#include "gallery-host/base/Columns.h"

int host::Platform::ColumnsOf(char32_t character) {
    static const locale_t utf8 = newlocale(LC_CTYPE_MASK, "UTF-8", nullptr);
    // Without one it is the C library's own locale.
    return wcwidth_l(static_cast<wchar_t>(character), utf8);
}
