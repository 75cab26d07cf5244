// Carries out an engraving on a file.
#pragma once

#include <string>

#include "base/NewFile.h"
#include "base/ReadWrite.h"
#include "plugin-modules/Gallery/src/engraving/EngravingPlan.h"

namespace engraving {

// The file of an engraving, open for reading and writing.
class EngravingFile {
  public:
    // Throws EngravingError for anything but a regular file that can be written.
    explicit EngravingFile(const std::string& path);
    // The same of a file that is open for both, and may have no name yet.
    explicit EngravingFile(KXP::FileDescriptor file);

    uint64_t size() const { return size_; }
    media::ByteSource& source() { return source_; }

    // Throws EngravingError when the disk does not take it; a failure of the first batch leaves no trace.
    // Without durability, for a file that nobody has yet, a loss of power may leave a part of it.
    void CarryOut(const Plan& plan, KXP::Durability durability = KXP::Durability::Content);

  private:
    class Source final : public media::ByteSource {
      public:
        explicit Source(const KXP::FileDescriptor& file) : file_(file) {}

        size_t ReadAt(uint64_t position, char* out, size_t count) override {
            return KXP::ReadAt(file_, position, out, count);
        }

      private:
        const KXP::FileDescriptor& file_;
    };

    bool WriteBatch(const Batch& batch, KXP::Durability durability);
    bool Copy(const Write& write);

    uint64_t size_ = 0;
    KXP::FileDescriptor file_;
    Source source_{file_};
};

}  // namespace engraving
