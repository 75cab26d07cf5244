// The indexes against plain walks over a list, through random changes.
#include <algorithm>
#include <random>

#include <gtest/gtest.h>

#include "plugin-modules/Gallery/src/tracker/record/RecordStore.h"

namespace {

class RecordStoreTest : public testing::Test {
  protected:
    TrackedUGC Make() {
        TrackedUGC record;
        record.id = Pick(40);  // ids and paths repeat, as in a file that somebody has edited
        record.profileName = "game" + std::to_string(Pick(3));
        record.path = "/g/" + record.profileName + "/" + std::to_string(Pick(60));
        if (Pick(2) == 0) {
            record.fileSource = "OVS_SDK";
            record.fileSubType = "Highlight";
            record.highlightGroupId = "group" + std::to_string(Pick(2));
        }
        return record;
    }
    int Pick(int below) { return static_cast<int>(random_() % static_cast<unsigned>(below)); }

    void Erase(const std::string& path) {
        for (size_t i = 0; i < model_.size();) {
            if (model_[i].path != path) {
                ++i;
                continue;
            }
            TrackedUGCGame& game = games_[model_[i].profileName];
            const auto erase = [&](std::vector<int>& ids) {
                ids.erase(std::remove(ids.begin(), ids.end(), model_[i].id), ids.end());
            };
            const auto group = game.groups.find(model_[i].highlightGroupId);
            if (TrackedUGC::IsAHighlight(model_[i]) && group != game.groups.end()) {
                erase(group->second);
                if (group->second.empty()) game.groups.erase(group);
            }
            erase(game.recents);
            if (game.recents.empty() && game.groups.empty()) games_.erase(model_[i].profileName);
            model_.erase(model_.begin() + static_cast<std::ptrdiff_t>(i));
        }
    }

    void Compare() {
        const auto snapshot = store_.Snapshot();
        ASSERT_EQ(snapshot.size(), model_.size());
        for (size_t i = 0; i < model_.size(); ++i)
            ASSERT_EQ(snapshot[i]->path + std::to_string(snapshot[i]->id),
                      model_[i].path + std::to_string(model_[i].id));
        ASSERT_EQ(store_.games().size(), games_.size());
        for (const auto& [name, game] : games_) {
            ASSERT_EQ(store_.games().at(name).recents, game.recents);
            ASSERT_EQ(store_.games().at(name).groups, game.groups);
        }
        const auto first = [&](auto matches) {
            const auto found = std::find_if(model_.begin(), model_.end(), matches);
            return found == model_.end() ? "" : found->path + std::to_string(found->id);
        };
        const auto text = [](const RecordStore::RecordPtr& record) {
            return record ? record->path + std::to_string(record->id) : "";
        };
        const TrackedUGC probe = Make();
        ASSERT_EQ(text(store_.FindByPath(probe.path)), first([&](auto& r) { return r.path == probe.path; }));
        ASSERT_EQ(text(store_.FindById(probe.id)), first([&](auto& r) { return r.id == probe.id; }));
        const std::string prefix = "/g/" + probe.profileName + "/";
        ASSERT_EQ(static_cast<std::ptrdiff_t>(store_.Under(prefix).size()),
                  std::count_if(model_.begin(), model_.end(),
                                [&](auto& r) { return r.path.compare(0, prefix.size(), prefix) == 0; }));
        std::vector<int> expected, ids;
        for (const TrackedUGC& record : model_)
            expected.push_back(record.id);
        std::sort(expected.rbegin(), expected.rend());
        RecordStore::IdKey end = RecordStore::NewestEnd();
        for (auto next = store_.Newest(7, end); !next.empty(); next = store_.Newest(7, end))
            for (const auto& record : next)
                ids.push_back(record->id);
        ASSERT_EQ(ids, expected);
    }

    std::mt19937 random_{1};
    RecordStore store_;
    std::vector<TrackedUGC> model_;
    RecordStore::Games games_;
};

TEST_F(RecordStoreTest, AgreesWithPlainWalks) {
    for (int step = 0; step < 2000; ++step) {
        const TrackedUGC record = Make();
        if (Pick(3) < 2) {
            store_.Track(record);
            model_.push_back(record);
            TrackedUGCGame& game = games_[record.profileName];
            game.recents.push_back(record.id);
            if (!record.highlightGroupId.empty()) game.groups[record.highlightGroupId].push_back(record.id);
        } else {
            const std::string other = Make().path;
            store_.Remove({record.path, other, record.path});
            Erase(record.path);
            Erase(other);
        }
        ASSERT_NO_FATAL_FAILURE(Compare()) << step;
        if (model_.size() > 60) {
            store_.Clear();
            model_.clear();
            games_.clear();
        }
    }
}

}  // namespace
