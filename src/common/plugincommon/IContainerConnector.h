// What a container drives: the life of one plug-in.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "common/message/MessageHandler.h"

namespace KXP {

class IContainerConnector {
  public:
    enum NotificationType {
        CommandFailed = 0,
        ContainerEvent = 1,
        CommandSucceeded = 2,
        ContainerMessage = 5,
    };
    using ContainerCallback = std::function<void(NotificationType, std::unique_ptr<JSONMessage>, void*)>;

    // The result of a lifecycle command; any other value means failure.
    enum CommandResult { Failed = 0, Succeeded = 1, Accepted = 2 };

    virtual ~IContainerConnector() = default;

    // Accepted commands report their end through the container callback. The handlers live until Uninitialize
    // has returned; the generic one may be null.
    virtual int Initialize(IMessageHandler<JSONMessage>* jsonHandler,
                           std::unique_ptr<JSONMessage> initMessage,
                           IMessageHandler<GenericMessage>* genericHandler) = 0;
    virtual int Start(std::shared_ptr<JSONMessage> message) = 0;
    virtual int Stop(std::shared_ptr<JSONMessage> message) = 0;
    virtual int Pause(std::shared_ptr<JSONMessage> message) = 0;
    virtual int Resume(std::shared_ptr<JSONMessage> message) = 0;
    virtual int Uninitialize(std::shared_ptr<JSONMessage> message) = 0;
    virtual void SetContainerCallback(ContainerCallback callback, void* context);
    virtual std::string GetSystemName() const = 0;
    virtual std::string GetModuleName() const = 0;

    // Defined by the one module that is linked into the library.
    static IContainerConnector* CreatePluginInstance();
    // Releases what CreatePluginInstance returned; does nothing for null.
    static void DestroyPluginInstance(IContainerConnector* instance);

  protected:
    // Without a callback the message is dropped.
    void NotifyContainer(NotificationType type, std::unique_ptr<JSONMessage> message);

  private:
    ContainerCallback callback_;
    void* context_ = nullptr;
};

}  // namespace KXP
