// The bases of endpoints that may take long. A task is built from its request on the worker, and works on a
// thread of its own in ExecuteAsync and then in WriteAsync, which writes the body of the response, so that
// long answers keep nobody else waiting; the worker sends it. The task is touched by the two threads in turn,
// never at once; CancelTask alone may run beside the work.
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

    // The slow work. Code::kPending says that the task calls TaskQueue::FinishAsync itself, later; its
    // response is then written on the worker.
    virtual RetVal ExecuteAsync(const Value& payload) = 0;
    // The body of the response; neither is called for a task that has failed. A body that may be long is
    // written member by member, by WriteAsync, which may be called again if the body turns out wrong; a short
    // one is built by FinishAsync.
    virtual void WriteAsync(IJsonSink& sink);
    virtual void FinishAsync(Value&, Allocator&) {}
    virtual void sendResponse(std::unique_ptr<JSONMessage> response, const RetVal& value);

  protected:
    PluginModuleBase& module() { return module_; }

  private:
    void WriteResponse();

    PluginModuleBase& module_;
    const std::unique_ptr<JSONMessage> request_;
    std::unique_ptr<JSONMessage> response_;  // once it is written
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
