// The bases of endpoints that may take long. A task is built from its request on the worker, works on a
// thread of its own in ExecuteAsync, and finishes on the worker in FinishAsync, which writes the response. It
// is touched by the two threads in turn, never at once; CancelTask alone may run beside ExecuteAsync.
#pragma once

#include <memory>
#include <utility>

#include "common/plugincommon/PluginModuleBase.h"

namespace KXP {

class JsonResponseAsyncBase : public ITask {
  public:
    JsonResponseAsyncBase(PluginModuleBase& module, std::unique_ptr<JSONMessage> request);

    TaskStatus ExecuteTask(TaskQueue& queue) override;
    // Answers the request, whatever happened.
    void FinishTask() override;
    void FailTask(const RetVal& reason) override { result_ = reason; }

    // The slow work. Code::kPending says that the task calls TaskQueue::FinishAsync itself, later.
    virtual RetVal ExecuteAsync(const Value& payload) = 0;
    // Builds the body of the response; not called for a task that has failed.
    virtual void FinishAsync(Value&, Allocator&) {}
    virtual void sendResponse(std::unique_ptr<JSONMessage> response, const RetVal& value);

  protected:
    PluginModuleBase& module() { return module_; }

  private:
    PluginModuleBase& module_;
    const std::unique_ptr<JSONMessage> request_;
    // For work that has no result, because there was not even the memory for a failure's text.
    RetVal result_{Code::kOutOfMemory, "Out of memory", 0};
};

// Provides T, a task with the constructor T(PluginModuleBase&, std::unique_ptr<JSONMessage>), with the
// factory that PluginModuleBase::RegisterAsyncTask takes.
template <typename T>
class JsonResponseAsync : public JsonResponseAsyncBase {
  public:
    using JsonResponseAsyncBase::JsonResponseAsyncBase;

    static JsonResponseAsyncBase* Launch(PluginModuleBase& module, std::unique_ptr<JSONMessage> request) {
        return new T(module, std::move(request));
    }
};

// Work that a notification starts; no answer is sent.
class JSONAsyncNotificationBase : public ITask {
  public:
    JSONAsyncNotificationBase(PluginModuleBase& module, std::unique_ptr<JSONMessage> message);

    TaskStatus ExecuteTask(TaskQueue& queue) override;
    void FinishTask() override {}
    void FailTask(const RetVal&) override {}

    virtual void ExecuteAsync(const Value& payload) = 0;

  protected:
    PluginModuleBase& module() { return module_; }

  private:
    PluginModuleBase& module_;
    const std::unique_ptr<JSONMessage> message_;
};

}  // namespace KXP
