// Engravings into hostile boxes, carried out in memory. After each batch of writes there is a whole movie; in
// the end nothing has changed but user data and free space, and the text is found.
#include <string>
#include <vector>

#include "fuzz/Plain.h"
#include "plugin-modules/Gallery/src/engraving/EngravingPlan.h"
#include "plugin-modules/Gallery/src/media/Mp4Walk.h"

namespace {

using engraving::Box;
using engraving::Mp4Layout;
using plain::Demand;

Mp4Layout LayoutOf(const std::string& file) {
    media::MemorySource source(file);
    return engraving::ReadLayout(source, file.size());
}

std::vector<Box> BoxesIn(const std::string& file, uint64_t from, uint64_t to) {
    media::MemorySource source(file);
    return engraving::ReadBoxes(source, from, to, engraving::ListEnd::MayBeZero);
}

std::string BytesOf(const std::string& file, const Box& box) {
    return file.substr(box.offset, box.size);
}

// What players need of the movie.
std::string Parts(const std::string& file) {
    std::string parts;
    for (const Box& part : LayoutOf(file).parts)
        if (part.type != "udta" && !part.IsFree()) parts += BytesOf(file, part);
    return parts;
}

// What others have put into the movie's user data.
std::string UserData(const std::string& file) {
    std::string kept;
    for (const Box& part : LayoutOf(file).parts)
        if (part.type == "udta")
            for (const Box& box : BoxesIn(file, part.content(), part.end()))
                if (box.type != "tagc" && !box.IsFree()) kept += BytesOf(file, box);
    return kept;
}

void Carry(const engraving::Batch& batch, std::string& file) {
    const std::string before = file;
    for (const engraving::Write& write : batch) {
        Demand(write.at <= file.size());
        const std::string bytes =
            write.bytes + std::string(plain::At(before, write.copyFrom, write.copySize));
        Demand(bytes.size() == write.bytes.size() + write.copySize);
        // Copies are read while the batch is written.
        Demand(write.copySize == 0 || plain::At(file, write.copyFrom, write.copySize) ==
                                          plain::At(before, write.copyFrom, write.copySize));
        file.resize(std::max<size_t>(file.size(), write.at + bytes.size()));
        file.replace(write.at, bytes.size(), bytes);
    }
}

void Engrave(std::string& file, const std::string& text) {
    media::MemorySource source(file);
    const Mp4Layout layout = LayoutOf(file);
    const engraving::Plan plan = engraving::PlanEngraving(source, layout, text);
    const std::string before = file;
    Demand(plan.length == layout.end && plan.length <= file.size());
    file.resize(plan.length);
    for (const engraving::Batch& batch : plan.batches) {
        Carry(batch, file);
        Demand(Parts(file) == Parts(before));
    }
    Demand(UserData(file) == UserData(before));
    for (const Box& box : BoxesIn(before, 0, layout.end))
        if (box.type != "moov" && !box.IsFree()) Demand(BytesOf(file, box) == BytesOf(before, box));
    media::MemorySource engraved(file);
    media::ByteCursor cursor(engraved);
    media::SniffResult result;
    media::WalkMp4(cursor, result);
    Demand(result.isOwn && result.fileSource == "OVS_Share" && file.find(text) != std::string::npos);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string file(reinterpret_cast<const char*>(data), size);
    // The inner object is {}.
    const std::string text = R"({"Source":"Ovirastream SHARE","B64":"e30="})";
    try {
        Engrave(file, text);
        Engrave(file, text + std::string(40, ' '));
    } catch (const engraving::EngravingError&) {
        return 0;
    }
    return 0;
}
