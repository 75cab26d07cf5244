#include "plugin-modules/Gallery/src/engraving/EngravingPlan.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace engraving {
namespace {

constexpr uint64_t kHeaderSize = 8;
constexpr uint64_t kMaxBoxSize = UINT32_MAX;
// User data may hold a cover picture; more than this is not copied through memory.
constexpr uint64_t kMaxUserData = 64 << 20;

std::string ReadBytes(media::ByteSource& source, uint64_t from, uint64_t size) {
    std::string bytes(static_cast<size_t>(size), '\0');
    if (source.ReadAt(from, bytes.data(), bytes.size()) < bytes.size())
        throw EngravingError("it cannot be read");
    return bytes;
}

// The content of a box of user data apart from tags.
std::string OtherUserData(media::ByteSource& source, const Box& userData) {
    std::string kept;
    for (const Box& box : ReadBoxes(source, userData.content(), userData.end(), ListEnd::MayBeZero)) {
        if (box.type == "tagc" || box.IsFree()) continue;
        if (box.size > kMaxUserData - kept.size()) throw EngravingError("too much user data");
        kept += ReadBytes(source, box.offset, box.size);
    }
    return kept;
}

// Where a box of `size` bytes can be put into `hole`: it fits exactly, or what is left makes a box.
bool Fits(uint64_t size, const Box& hole) {
    return hole.headerSize == kHeaderSize && (size == hole.size || size + kHeaderSize <= hole.size);
}

class Planner {
  public:
    Planner(const Mp4Layout& layout, std::string userData, std::vector<Box> oldUserData)
        : layout_(layout), userData_(std::move(userData)), oldUserData_(std::move(oldUserData)) {
        plan_.length = layout.end;
    }

    Plan Make() {
        if (!(IsRead(layout_.movie.offset) && (InsideMovie() || AfterMovie())) && !MovieElsewhere())
            throw EngravingError(layout_.outerUserData
                                     ? "it has user data outside the movie, which hides the movie's"
                                     : "it has fragments, and no room for a larger movie ahead of them");
        return std::move(plan_);
    }

  private:
    // Whether readers, which look into the first user data of a file, find that of a movie at `offset`.
    bool IsRead(uint64_t offset) const { return !layout_.outerUserData || offset < *layout_.outerUserData; }

    // Puts the user data into free space within the movie.
    bool InsideMovie() {
        for (const Box& hole : layout_.parts) {
            if (!hole.IsFree() || !Fits(userData_.size(), hole)) continue;
            FillHole(hole, userData_);
            EndOldUserData();
            return true;
        }
        return false;
    }

    // Puts it at the movie's end, where the file ends too or free space follows: first as a box that players
    // skip, which the movie's new size then includes.
    bool AfterMovie() {
        const Box& movie = layout_.movie;
        if (movie.headerSize == kHeaderSize && movie.size + userData_.size() > kMaxBoxSize) return false;
        if (movie.end() == layout_.end) {
            plan_.batches.push_back({{movie.end(), userData_}});
        } else {
            const Box* hole = HoleAt(movie.end());
            if (!hole) return false;
            FillHole(*hole, userData_);
        }
        const uint64_t size = movie.size + userData_.size();
        if (movie.headerSize == kHeaderSize)
            plan_.batches.push_back({{movie.offset, media::BoxHeader(size, "moov").substr(0, 4)}});
        else
            plan_.batches.push_back(
                {{movie.offset + 8, media::BoxHeader(size >> 32, "").substr(0, 4) +
                                        media::BoxHeader(size & UINT32_MAX, "").substr(0, 4)}});
        EndOldUserData();
        return true;
    }

    // Makes a new movie, in free space or at the file's end; the old one becomes free space.
    bool MovieElsewhere() {
        const uint64_t size = NewMovieSize();
        if (size > kMaxBoxSize) throw EngravingError("the movie's header is too large");
        const auto hole = std::find_if(layout_.free.begin(), layout_.free.end(), [&](const Box& box) {
            return Fits(size, box) && IsRead(box.offset) &&
                   (!layout_.firstFragment || box.end() <= *layout_.firstFragment);
        });
        if (hole != layout_.free.end()) {
            plan_.batches.push_back(NewMovie(hole->offset, size, "free"));
            plan_.batches.front().front().bytes = media::BoxHeader(hole->size, "free");
            AddRest(*hole, size);
            EndDeadMovies();
            plan_.batches.push_back({{hole->offset, media::BoxHeader(size, "moov")}});
        } else if (!layout_.firstFragment && IsRead(layout_.end)) {
            plan_.batches.push_back(NewMovie(layout_.end, size, "moov"));
            EndDeadMovies();
        } else {
            return false;
        }
        plan_.batches.push_back({{layout_.movie.offset + 4, "free"}});
        return true;
    }

    bool IsKept(const Box& part) const { return part.type != "udta" && !part.IsFree(); }

    uint64_t NewMovieSize() const {
        uint64_t size = kHeaderSize + userData_.size();
        for (const Box& part : layout_.parts)
            if (IsKept(part)) size += part.size;
        return size;
    }

    Batch NewMovie(uint64_t at, uint64_t size, const std::string& type) const {
        Batch batch{{at, media::BoxHeader(size, type)}};
        at += kHeaderSize;
        for (const Box& part : layout_.parts) {
            if (!IsKept(part)) continue;
            batch.push_back({at, "", part.offset, part.size});
            at += part.size;
        }
        batch.push_back({at, userData_});
        return batch;
    }

    const Box* HoleAt(uint64_t offset) const {
        for (const Box& hole : layout_.free)
            if (hole.offset == offset && Fits(userData_.size(), hole)) return &hole;
        return nullptr;
    }

    // Writes all but the header, which still says that there is free space; then the header, in one small
    // write.
    void FillHole(const Box& hole, const std::string& box) {
        plan_.batches.push_back({{hole.offset + kHeaderSize, box.substr(kHeaderSize)}});
        AddRest(hole, box.size());
        plan_.batches.push_back({{hole.offset, box.substr(0, kHeaderSize)}});
    }

    void AddRest(const Box& hole, uint64_t used) {
        if (used < hole.size)
            plan_.batches.back().push_back({hole.offset + used, media::BoxHeader(hole.size - used, "free")});
    }

    // Readers use the first user data. The old boxes become free once the new one is in place, the first of
    // them last.
    void EndOldUserData() {
        Batch batch;
        for (auto box = oldUserData_.rbegin(); box != oldUserData_.rend(); ++box)
            batch.push_back({box->offset + 4, "free"});
        if (!batch.empty()) plan_.batches.push_back(std::move(batch));
    }

    // Otherwise one of them would be the first movie once the present one is free.
    void EndDeadMovies() {
        for (const Box& movie : layout_.deadMovies)
            plan_.batches.front().push_back({movie.offset + 4, "free"});
    }

    const Mp4Layout& layout_;
    const std::string userData_;
    const std::vector<Box> oldUserData_;
    Plan plan_;
};

}  // namespace

Plan PlanEngraving(media::ByteSource& source, const Mp4Layout& layout, const std::string& text) {
    // The text comes first, so that readers need not skip the rest.
    std::string content = media::BoxHeader(kHeaderSize + text.size(), "tagc") + text;
    std::vector<Box> old;
    for (const Box& part : layout.parts) {
        if (part.type != "udta") continue;
        content += OtherUserData(source, part);
        old.push_back(part);
    }
    return Planner(layout, media::BoxHeader(kHeaderSize + content.size(), "udta") + content, std::move(old))
        .Make();
}

}  // namespace engraving
