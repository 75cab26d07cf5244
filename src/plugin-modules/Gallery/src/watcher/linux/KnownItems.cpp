#include "plugin-modules/Gallery/src/watcher/linux/KnownItems.h"

#include <functional>
#include <utility>

namespace watcher {
namespace {

// At most three quarters of the slots are taken.
size_t SlotsFor(size_t count) {
    size_t slots = 4;
    while (slots / 4 * 3 < count)
        slots *= 2;
    return slots;
}

}  // namespace

// The slot of the name, or the free one where it belongs.
size_t KnownItems::SlotOf(std::string_view name) const {
    const size_t mask = slots_.size() - 1;
    size_t slot = std::hash<std::string_view>{}(name)&mask;
    while (slots_[slot] != 0 && NameOf(rows_[slots_[slot] - 1]) != name)
        slot = (slot + 1) & mask;
    return slot;
}

void KnownItems::Reserve(size_t count) {
    if (SlotsFor(count) > slots_.size()) Rebuild(count);
}

// Drops what is gone.
void KnownItems::Rebuild(size_t count) {
    KnownItems made;
    made.rows_.reserve(count);
    made.slots_.resize(SlotsFor(count));
    ForEach([&made](std::string_view name, const Stamp& stamp) { made.Set(name, stamp); });
    *this = std::move(made);
}

void KnownItems::Set(std::string_view name, const Stamp& stamp) {
    if (rows_.size() + 1 > slots_.size() / 4 * 3) Rebuild(2 * count_ + 1);
    const size_t slot = SlotOf(name);
    if (slots_[slot] == 0) {
        rows_.push_back({0, 0, 0, static_cast<uint32_t>(names_.size()), false, true});
        slots_[slot] = static_cast<uint32_t>(rows_.size());
        names_.append(name).push_back('\0');
    }
    Row& row = rows_[slots_[slot] - 1];
    if (row.gone) ++count_;
    row = {stamp.inode, stamp.size, stamp.modifiedNs, row.name, stamp.folder, false};
}

void KnownItems::Erase(std::string_view name) {
    if (slots_.empty()) return;
    const size_t slot = SlotOf(name);
    if (slots_[slot] == 0 || rows_[slots_[slot] - 1].gone) return;
    rows_[slots_[slot] - 1].gone = true;
    --count_;
}

std::optional<Stamp> KnownItems::Find(std::string_view name) const {
    if (slots_.empty()) return std::nullopt;
    const uint32_t found = slots_[SlotOf(name)];
    return found == 0 || rows_[found - 1].gone ? std::nullopt : std::optional(StampOf(rows_[found - 1]));
}

}  // namespace watcher
