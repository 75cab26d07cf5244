#include "common/plugincommon/IContainerConnector.h"

namespace KXP {

void IContainerConnector::SetContainerCallback(ContainerCallback callback, void* context) {
    callback_ = std::move(callback);
    context_ = context;
}

void IContainerConnector::NotifyContainer(NotificationType type, std::unique_ptr<JSONMessage> message) {
    if (callback_) callback_(type, std::move(message), context_);
}

}  // namespace KXP
