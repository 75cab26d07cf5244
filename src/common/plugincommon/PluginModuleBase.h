// The base of a plug-in module. It owns the task queue and the handler chain, holds the tables from method
// name to handler, and dispatches every message on the queue's worker. A concrete module supplies the hooks
// and registers its endpoints from them.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <utility>

#include "common/message/InitQueue.h"
#include "common/message/MessageValidator.h"
#include "common/message/PersistentResponseHandler.h"
#include "common/message/RequestCallbackManager.h"
#include "common/plugincommon/IContainerConnector.h"
#include "common/task/StuckWork.h"
#include "common/task/TaskQueue.h"

namespace KXP {

class PluginModuleBase : public IContainerConnector,
                         public MessageSink<JSONMessage>,
                         public MessageSink<GenericMessage> {
  public:
    using RequestHandler = std::function<RetVal(std::unique_ptr<JSONMessage>, Value&, Allocator&)>;
    using NotificationListener = std::function<void(std::unique_ptr<JSONMessage>)>;

    class CommandQueue;

    // `apiSchemaText` is the catalogue that messages are checked against; it outlives the module.
    PluginModuleBase(std::string systemName, std::string moduleName, std::string_view apiSchemaText);
    ~PluginModuleBase() override;

    // Passes `module` to its own command queue, which is what a container holds, and to the threads of its
    // tasks.
    static IContainerConnector* HandOver(std::shared_ptr<PluginModuleBase> module);
    // Releases the module that owns `instance`: it ends now, or with the last thread that still uses it. Does
    // nothing for null.
    static void TakeBack(IContainerConnector* instance);

    int Initialize(IMessageHandler<JSONMessage>* jsonHandler, std::unique_ptr<JSONMessage> initMessage,
                   IMessageHandler<GenericMessage>* genericHandler) override;
    int Start(std::shared_ptr<JSONMessage> message) override;
    int Stop(std::shared_ptr<JSONMessage> message) override;
    int Pause(std::shared_ptr<JSONMessage> message) override;
    int Resume(std::shared_ptr<JSONMessage> message) override;
    int Uninitialize(std::shared_ptr<JSONMessage> message) override;
    std::string GetSystemName() const override { return systemName_; }
    std::string GetModuleName() const override { return moduleName_; }

    // Called when the module could not be ended because something in it is stuck, and is left to itself. It
    // ends when that goes on. Must not wait. On the thread of the container.
    virtual void Abandon() {}
    // Afterwards nothing may be done that a later instance could not expect. Any thread.
    bool IsAbandoned() const { return abandoned_; }

    // Called once for every failed request.
    virtual void ReportError(const RetVal& value, const std::string& method);

    // The module's hooks; one that is not overridden succeeds. An exception counts as false.
    virtual bool Initialize() { return true; }
    virtual bool Start() { return true; }
    virtual bool Stop() { return true; }
    virtual bool Pause() { return true; }
    virtual bool Resume() { return true; }
    virtual void Uninitialize() {}

    bool HandleMsg(std::unique_ptr<JSONMessage> message) override;
    bool HandleMsg(std::unique_ptr<GenericMessage> message) override;

    // Sends an answer or a notification as this module, from any thread.
    virtual bool SendResponse(std::unique_ptr<JSONMessage> response, const RetVal& value);

    // Writes and checks the body of a response ahead, so that sending it takes the worker no time. Any
    // thread.
    void WriteBody(JSONMessage& response, const BodySource& body);

    // Runs an asynchronous task now.
    void RunTask(ITask* task) { taskQueue_.ExecuteTask(task, taskQueue_.Now()); }

    TaskQueue& task_queue() { return taskQueue_; }

  protected:
    // The payload of the container's init message.
    const Value& configuration() const { return configuration_; }

    // Registration is for the Initialize and Start hooks; the tables are read without a lock afterwards.
    // A synchronous method writes its results into the value it is given.
    template <typename T, typename Base>
    void RegisterSyncMethod(const std::string& name, T* object,
                            RetVal (Base::*method)(std::unique_ptr<JSONMessage>, Value&, Allocator&)) {
        apiHandlers_[name] = [object, method](std::unique_ptr<JSONMessage> message, Value& result,
                                              Allocator& allocator) {
            return (object->*method)(std::move(message), result, allocator);
        };
    }

    // `factory(module, message)` makes the task that answers.
    template <typename Factory>
    void RegisterAsyncTask(const std::string& name, Factory factory) {
        apiHandlers_[name] = [this, factory](std::unique_ptr<JSONMessage> message, Value&, Allocator&) {
            RunTask(factory(*this, std::move(message)));
            return RetVal::Pending();
        };
    }

    // Listens to the notification `method` of another module, and subscribes to it the first time; later
    // calls, as at another start, replace the listener.
    void RegisterNotificationSyncFn(const std::string& system, const std::string& module,
                                    const std::string& method, NotificationListener listener);

    template <typename T, typename Base>
    void RegisterNotificationSyncMethod(const std::string& system, const std::string& module,
                                        const std::string& method, T* object,
                                        void (Base::*member)(std::unique_ptr<JSONMessage>)) {
        RegisterNotificationSyncFn(system, module, method,
                                   [object, member](std::unique_ptr<JSONMessage> message) {
                                       (object->*member)(std::move(message));
                                   });
    }

    template <typename Factory>
    void RegisterNotificationAsyncTask(const std::string& system, const std::string& module,
                                       const std::string& method, Factory factory) {
        RegisterNotificationSyncFn(system, module, method,
                                   [this, factory](std::unique_ptr<JSONMessage> message) {
                                       RunTask(factory(*this, std::move(message)));
                                   });
    }

    // A module that is not started refuses every message.
    bool started_ = true;

  private:
    // The nodes between the container and the module; made by Initialize.
    struct Chain {
        std::shared_ptr<InitQueue> inboundQueue;
        std::shared_ptr<InitQueue> outboundQueue;
        std::shared_ptr<RequestCallbackManager<JSONMessage>> requestCallbacks;
        std::shared_ptr<RequestCallbackManager<GenericMessage>> genericCallbacks;
        std::shared_ptr<PersistentResponseHandler<JSONMessage>> persistentResponses;
        std::shared_ptr<MessageValidator> validator;
        std::shared_ptr<MessageResponder<JSONMessage>> responder;
    };

    void BuildChain(IMessageHandler<GenericMessage>* genericHandler);
    bool ReadConfiguration();
    bool RunInitializeHook();
    bool RunHook(const char* name, bool (PluginModuleBase::*hook)());
    void LeaveContainer();
    void AbandonAll();
    bool HandleResponse(const std::string& method, std::unique_ptr<JSONMessage> message);
    bool AnswerUnknown(const std::string& method, std::unique_ptr<JSONMessage> response);
    static RetVal CallHandler(const RequestHandler& handler, std::unique_ptr<JSONMessage> message,
                              JSONMessage& response);

    const std::string systemName_;
    const std::string moduleName_;
    const std::string_view apiSchemaText_;

    // Filled by Initialize and the hooks on the worker, read there afterwards.
    Document apiSchema_;
    Document configuration_;
    std::unordered_map<std::string, RequestHandler> apiHandlers_;
    std::unordered_map<std::string, NotificationListener> notificationListeners_;
    IMessageHandler<JSONMessage>* jsonHandler_ = nullptr;

    Chain chain_;  // the validator reads the schema above
    std::atomic<bool> abandoned_{false};

    // After the chain, so that the worker ends before what its entries use.
    TaskQueue taskQueue_;
    std::unique_ptr<CommandQueue> commandQueue_;
};

// What the container holds in place of a module: it moves each lifecycle command onto the module's worker and
// reports to the container how the command ended.
class PluginModuleBase::CommandQueue : public IContainerConnector {
  public:
    CommandQueue(PluginModuleBase& module, TaskQueue& taskQueue, std::string systemName,
                 std::string moduleName);

    // All but Uninitialize return Accepted at once.
    int Initialize(IMessageHandler<JSONMessage>* jsonHandler, std::unique_ptr<JSONMessage> initMessage,
                   IMessageHandler<GenericMessage>* genericHandler) override;
    int Start(std::shared_ptr<JSONMessage> message) override;
    int Stop(std::shared_ptr<JSONMessage> message) override;
    int Pause(std::shared_ptr<JSONMessage> message) override;
    int Resume(std::shared_ptr<JSONMessage> message) override;
    // Ends the worker, then the module, which it finds quiet. If either gets stuck, the module is abandoned.
    int Uninitialize(std::shared_ptr<JSONMessage> message) override;
    std::string GetSystemName() const override { return systemName_; }
    std::string GetModuleName() const override { return moduleName_; }

  private:
    friend class PluginModuleBase;
    using Command = int (IContainerConnector::*)(std::shared_ptr<JSONMessage>);

    // The end of a command, which is notified once.
    struct Report {
        std::atomic<bool> made{false};
        WorkEnd end;
    };

    int Enqueue(std::shared_ptr<JSONMessage> message, Command command);
    template <typename Work>
    void Run(std::unique_ptr<JSONMessage> response, const Work& command, Report* report = nullptr) noexcept;
    // What the command throws is in the response.
    template <typename Work>
    static int ResultOf(const Work& command, JSONMessage& response);
    void WatchStop(std::shared_ptr<JSONMessage> message, const std::shared_ptr<Report>& report);
    void ReportStuck(const JSONMessage& message) noexcept;
    void EndWatch();

    PluginModuleBase& module_;
    TaskQueue& taskQueue_;
    const std::string systemName_;
    const std::string moduleName_;
    std::shared_ptr<PluginModuleBase> owned_;
    // Of the last stop; for the thread of the container.
    std::shared_ptr<Report> stopReport_;
    std::thread stopWatch_;
};

}  // namespace KXP
