#include "importing/PictureMemory.h"

#include "base/ReadWrite.h"

namespace importing {
namespace {

constexpr uint64_t kMost = uint64_t{16} << 20;
// So that pictures of about one size need no more of it.
constexpr size_t kStep = size_t{1} << 20;

}  // namespace

std::string_view PictureMemory::Read(const KXP::FileDescriptor& file, uint64_t size) {
    if (size > kMost) return {};
    const auto wanted = static_cast<size_t>(size);
    if (wanted > capacity_) {
        bytes_.reset();
        capacity_ = (wanted / kStep + 1) * kStep;
        bytes_.reset(static_cast<char*>(KXP::AllocateInSlab(capacity_)));
    }
    return {bytes_.get(), KXP::ReadAt(file, 0, bytes_.get(), wanted) == wanted ? wanted : 0};
}

}  // namespace importing
