#include "plugin-modules/Gallery/src/engraving/EngravingFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

#include "base/FileCalls.h"
#include "base/SlabMemory.h"

namespace engraving {
namespace {

constexpr uint64_t kCopyBlock = 1 << 20;

}  // namespace

EngravingFile::EngravingFile(const std::string& path) : file_(KXP::OpenForUpdate(path, &size_)) {
    if (!file_.IsOpen()) throw EngravingError(std::strerror(errno));
}

EngravingFile::EngravingFile(KXP::FileDescriptor file) : file_(std::move(file)) {
    struct stat status {};
    if (fstat(file_.get(), &status) != 0) throw EngravingError(std::strerror(errno));
    size_ = static_cast<uint64_t>(status.st_size);
}

void EngravingFile::CarryOut(const Plan& plan, KXP::Durability durability) {
    const bool hasRemnant = plan.length < size_;
    if (hasRemnant && ftruncate(file_.get(), static_cast<off_t>(plan.length)) != 0)
        throw EngravingError(std::strerror(errno));
    for (const Batch& batch : plan.batches) {
        if (WriteBatch(batch, durability)) continue;
        const int error = errno;
        // Removes what it has written beyond the end; the rest went into free space.
        if (&batch == &plan.batches.front() && ftruncate(file_.get(), static_cast<off_t>(plan.length)) != 0)
            throw EngravingError(std::strerror(errno));
        throw EngravingError(std::strerror(error));
    }
}

bool EngravingFile::WriteBatch(const Batch& batch, KXP::Durability durability) {
    for (const Write& write : batch) {
        if (!KXP::WriteFullyAt(file_, write.bytes.data(), write.bytes.size(), write.at)) return false;
        if (write.copySize > 0 && !Copy(write)) return false;
    }
    return durability == KXP::Durability::None || KXP::Platform::MakeDurable(file_.get());
}

bool EngravingFile::Copy(const Write& write) {
    KXP::SlabVector<char> block(static_cast<size_t>(std::min(write.copySize, kCopyBlock)));
    for (uint64_t done = 0; done < write.copySize;) {
        const auto size = static_cast<size_t>(std::min<uint64_t>(write.copySize - done, block.size()));
        if (KXP::ReadAt(file_, write.copyFrom + done, block.data(), size) < size) {
            errno = EIO;
            return false;
        }
        if (!KXP::WriteFullyAt(file_, block.data(), size, write.at + write.bytes.size() + done)) return false;
        done += size;
    }
    return true;
}

}  // namespace engraving
