#include "plugin-modules/Gallery/src/endpoints/MontageRequests.h"

#include <string>
#include <utility>

#include "CobalixUtil.h"
#include "common/json/JsonHelpers.h"
#include "common/product/Config.h"
#include "plugin-modules/Gallery/src/montage/MontageFiles.h"

using KXP::RetVal;

RetVal MontageRequests::CancelMontage(std::unique_ptr<KXP::JSONMessage>, KXP::Value&, KXP::Allocator&) {
    api_.GetTranscoder()->CancelMontage();
    return {};
}

RetVal MontageRequests::GetMontageCloudConfig(std::unique_ptr<KXP::JSONMessage> message, KXP::Value& response,
                                              KXP::Allocator& allocator) {
    KXP_LOG(KXP::LogMilestone, "%s", message->method());
    RetVal result;
    const std::string path =
        KXP::Config::Instance().FindAppData(std::string(RECIPE_PATH) + "MontageConfig.json");
    if (path.empty()) {
        KXP_LOG(KXP::LogFailure, "Failed to find MontageConfig.json");
        result.code = KXP::Code::kFailure;
        return result;
    }
    KXP::Document config;
    if (!KXP::ReadJSON(path, config)) {
        KXP_LOG(KXP::LogFailure, "Could not read MontageConfig.json");
        result.code = KXP::Code::kNotFound;
        return result;
    }
    response.AddMember("montageConfig", KXP::Value(config, allocator), allocator);
    return result;
}

RetVal MontageRequests::UpdateMontageProgress(std::unique_ptr<KXP::JSONMessage> message, KXP::Value&,
                                              KXP::Allocator&) {
    return KXP::RunRequest([&]() -> RetVal {
        api_.HandleMsg(std::move(message));
        return {};
    });
}
