// The hub over a module that records notifications instead of sending them.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "common/json/JsonHelpers.h"
#include "common/json/JsonParse.h"
#include "common/message/PayloadSchemas.h"
#include "common/threads/Mutex.h"
#include "plugin-modules/Gallery/plugin/ApiCatalogue.h"
#include "plugin-modules/Gallery/src/ZvGalleryAPI.h"
#include "tests/support/Counter.h"
#include "tests/support/LogCapture.h"
#include "tests/support/MessageRecorder.h"
#include "tests/support/TemporaryHome.h"

// Its queue has no worker, so that a test may call what only the worker may.
class RecordingModule : public KXP::PluginModuleBase {
  public:
    RecordingModule() : PluginModuleBase("CobalixNative", "Gallery", "{}") {
        EXPECT_FALSE(KXP::ParseJSON(ApiCatalogueText(), catalogue_).IsError());
    }

    bool SendResponse(std::unique_ptr<KXP::JSONMessage> message, const KXP::RetVal& value) override {
        EXPECT_FALSE(value.Failed());
        EXPECT_TRUE(KXP::Message::IsPersistent(*message) && KXP::Message::IsResponse(*message));
        const KXP::Value& payload = std::as_const(*message).payload();
        EXPECT_EQ(Check(message->method(), payload), "Success");
        if (onSend) onSend();
        KXP::MutexLock lock(mutex_);
        sent_.push_back(message->method() + (" " + KXP::WriteJSONToString(payload)));
        return accepts;
    }

    // Returns what was sent since the last call, as "Name payload|Name payload|".
    std::string TakeSent() {
        KXP::MutexLock lock(mutex_);
        std::string text;
        for (const std::string& one : std::exchange(sent_, {}))
            text += one + "|";
        return text;
    }

    // What the catalogue finds wrong with the answer to a request, or "Success".
    std::string Check(const std::string& request, const KXP::Value& answer) {
        return schemas_.Validate(request, answer, "return").text;
    }
    const KXP::Document& catalogue() const { return catalogue_; }

    bool accepts = true;
    std::function<void()> onSend;  // on the thread that sends

  private:
    // The tracker's worker sends too.
    KXP::Mutex mutex_;
    std::vector<std::string> sent_ GUARDED_BY(mutex_);
    KXP::Document catalogue_;
    KXP::PayloadSchemas schemas_{catalogue_};
};

class HubTest : public testing::Test {
  protected:
    HubTest() {
        // Until the tracker has scanned its empty gallery, it writes settings too.
        EXPECT_TRUE(Soon([&] { return log_.Has("Tracker update done"); }));
        settings().SetTotalDiskSpaceMB(1000);
        settings().SetCurrentSizeMB(7);
    }

    template <typename Requests>
    using Endpoint = KXP::RetVal (Requests::*)(std::unique_ptr<KXP::JSONMessage>, KXP::Value&,
                                               KXP::Allocator&);

    // Returns the members of the answer, which the catalogue must know; result_ is its result.
    template <typename Requests>
    std::string Ask(const char* name, Requests& requests, Endpoint<Requests> endpoint,
                    const std::string& payload = "{}") {
        KXP::Document response(rapidjson::kObjectType);
        result_ = (requests.*endpoint)(PageRequest(name, "id", payload), response, response.GetAllocator());
        if (!result_.Failed()) {
            EXPECT_EQ(module_.Check(name, response), "Success") << name;
        }
        return KXP::WriteJSONToString(response);
    }

    // The hub as a task takes it; this fixture keeps owning it.
    std::shared_ptr<ZvGalleryAPI> SharedHub() { return {std::shared_ptr<void>(), &hub_}; }

    Settings& settings() { return *hub_.GetGallerySettings(); }

    // Makes the gallery's folder one that cannot be created, as on a drive that was unplugged.
    std::string UnplugTheGallery() {
        std::string gallery = home_ / "drive/gallery";
        EXPECT_TRUE(settings().SetUserGalleryPath(gallery));
        std::filesystem::remove_all(home_ / "drive");
        home_.folder().Write("drive", "no folder");
        return gallery;
    }

    const LogCapture log_;
    const TemporaryHome home_;
    RecordingModule module_;
    ZvGalleryAPI hub_{module_, module_.task_queue()};
    KXP::RetVal result_;
};
