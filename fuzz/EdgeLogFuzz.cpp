// The text of an activity log: read, written as the pages get it, and read again.
#include <cstdint>
#include <cstdlib>

#include "common/json/JsonHelpers.h"
#include "common/json/JsonParse.h"
#include "fuzz/QuietLog.h"
#include "plugin-modules/Gallery/src/activity/ActivityData.h"

namespace {

// The pages' form of a log; false when it is damaged.
bool Convert(const KXP::Value& log, KXP::Document& out) {
    try {
        ActivityData::CreateActivityJSONValue(ActivityData::ParseActivityJSON(log), out, out.GetAllocator());
        return true;
    } catch (const KXP::JSONFieldError&) {
        return false;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    QuietLog();
    KXP::Document document;
    if (KXP::ParseJSON({reinterpret_cast<const char*>(data), size}, document).IsError()) return 0;
    KXP::Document once;
    if (!Convert(document, once)) return 0;
    KXP::Document twice;
    if (!Convert(once, twice) || once != twice) std::abort();
    return 0;
}
