#include "common/plugincommon/IContainerConnector.h"

namespace KXP {

void IContainerConnector::SetContainerCallback(ContainerCallback callback) {
    callback_ = std::move(callback);
}

void IContainerConnector::NotifyContainer(NotificationType type, std::unique_ptr<JSONMessage> message) {
    if (callback_) callback_(type, std::move(message));
}

}  // namespace KXP
