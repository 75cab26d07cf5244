// A module of the test behind the real entry calls: what the container sees of the module base, the
// asynchronous tasks and the life cycle.

#include <gtest/gtest.h>

#include "base/SlabMemory.h"
#include "common/json/JsonHelpers.h"
#include "common/json/JsonParse.h"
#include "common/plugincommon/JsonResponseAsync.h"
#include "common/results/Exception.h"
#include "tests/support/Counter.h"
#include "tests/support/FakeContainer.h"
#include "tests/unit/messaging/ScarceMemory.h"

using KXP::JSONMessage;
using KXP::RetVal;
using KXP::Value;

namespace {

// What a test makes the module do.
struct Behaviour {
    Counter running;
    Counter release;
    Counter abandoned;
    Counter destroyed;
};
std::shared_ptr<Behaviour> behaviour;

class WorkTask : public KXP::JsonResponseAsync<WorkTask> {
  public:
    using JsonResponseAsync::JsonResponseAsync;

    RetVal ExecuteAsync(const Value& payload) override {
        const std::string what = KXP::jsonGetValueOrDefault<std::string>(payload, "do", "");
        if (what == "fail") return {KXP::Code::kNotFound, "nothing there", 3};
        if (what == "throw 1") throw 1;
        finish_ = what;
        if (what == "block") {
            const std::shared_ptr<Behaviour> kept = behaviour;
            kept->running.Add();
            kept->release.WaitFor(1);
        }
        if (what == "pend") return RetVal::Pending();
        if (what == "later") {
            module().task_queue().FinishAsync(*this);
            return RetVal::Pending();
        }
        return {};
    }
    void FinishAsync(Value& result, KXP::Allocator& allocator) override {
        if (finish_ == "throw in finish") throw KXP::Exception(KXP::Code::kInvalidArgument, "too late", 0);
        result.AddMember("done", true, allocator);
    }

  private:
    std::string finish_;
};

class TestModule : public KXP::PluginModuleBase {
  public:
    TestModule() : PluginModuleBase("CobalixNative", "Gallery", R"({"definitions":{}})") {}
    ~TestModule() override { kept_->destroyed.Add(); }

    using PluginModuleBase::Initialize;
    using PluginModuleBase::Start;
    bool Initialize() override {
        RegisterSyncMethod("Echo", this, &TestModule::Echo);
        RegisterSyncMethod("Block", this, &TestModule::Block);
        RegisterAsyncTask("Work", &WorkTask::Launch);
        return true;
    }
    bool Start() override { return true; }

    // As on a disk that does not answer.
    RetVal Block(std::unique_ptr<JSONMessage>, Value&, KXP::Allocator&) {
        kept_->running.Add();
        kept_->release.WaitFor(1);
        return {};
    }
    void Abandon() override { kept_->abandoned.Add(); }

    RetVal Echo(std::unique_ptr<JSONMessage> message, Value& result, KXP::Allocator& allocator) {
        const JSONMessage& request = *message;
        result.AddMember("echo", KXP::jsonGetValue<int>(request.payload(), "number"), allocator);
        return {};
    }

  private:
    const std::shared_ptr<Behaviour> kept_ = behaviour;
};

RetVal Result(const std::string& text) {
    return KXP::Message::GetReturnValue(*KXP::Message::CreateMessage(text.c_str()));
}

}  // namespace

KXP::IContainerConnector* KXP::IContainerConnector::CreatePluginInstance() {
    return PluginModuleBase::HandOver(std::make_shared<TestModule>());
}

void KXP::IContainerConnector::DestroyPluginInstance(IContainerConnector* instance) {
    PluginModuleBase::TakeBack(instance);
}

class PluginTest : public testing::Test {
  protected:
    PluginTest() { behaviour = std::make_shared<Behaviour>(); }
    ~PluginTest() override { plugin_.Uninitialize(); }

    static void Callback(ZvCefPluginNotification_t notification, const char* text, void* context) {
        const SparedMemory mine;
        FakeContainer::Callback(notification, text, context);
    }

    void Up() {
        ASSERT_EQ(plugin_.Initialize(&Callback, "{}", &container_), 2);
        ASSERT_EQ(container_.WaitFor(1).text, "_CmdInit_");
        ASSERT_EQ(plugin_.Start(), 2);
        ASSERT_EQ(container_.WaitFor(1, "_CmdStart_").text, "_CmdStart_");
    }

    std::string Ask(const std::string& method, const std::string& payload, const std::string& id = "id") {
        plugin_.OnJsonMessage(Envelope(method, id, payload).c_str());
        return container_.WaitFor(3, "\"reference_uniqueid\":\"" + id + "\"").text;
    }

    // What became of a request: "aborted " or "done " for each of its answers.
    std::string Answers(const std::string& id) const {
        std::string answers;
        for (const FakeContainer::Told& told : container_.All(3, "\"reference_uniqueid\":\"" + id + "\"")) {
            const RetVal result = Result(told.text);
            answers += static_cast<uint32_t>(result.code) == 0x80004004 ? "aborted "
                       : result.text == "Success"                       ? "done "
                                                                        : result.text;
        }
        return answers;
    }

    ZvCefPluginInfo& plugin_ = *ZvCefPluginGetInfo();
    FakeContainer container_;
};

TEST_F(PluginTest, RunsTheWholeLifeCycle) {
    EXPECT_EQ(
        plugin_.Start() + plugin_.Stop() + plugin_.Suspend() + plugin_.Resume() + plugin_.Uninitialize(), 0);
    EXPECT_EQ(plugin_.OnJsonMessage("no JSON"), 0) << "there is no instance yet";
    EXPECT_EQ(plugin_.version, 1);
    EXPECT_STREQ(plugin_.pluginName, "plugin_test");
    EXPECT_STREQ(plugin_.moduleList, "Gallery");
    ASSERT_EQ(plugin_.Initialize(&FakeContainer::Callback, nullptr, &container_), 2);
    ASSERT_EQ(container_.WaitFor(1).text, "_CmdInit_");
    EXPECT_EQ(plugin_.Suspend(), 0);
    EXPECT_FALSE(container_.All(6, "Suspend CefPlugin NOT IMPLEMENTED").empty());

    plugin_.OnJsonMessage(Envelope("Echo", "early", R"({"number":1})").c_str());
    EXPECT_EQ(plugin_.Start(), 2);
    const FakeContainer::Told answer = container_.WaitFor(3, "early");
    EXPECT_NE(answer.text.find("\"echo\":1"), std::string::npos);
    EXPECT_NE(answer.thread, std::this_thread::get_id());
    EXPECT_EQ(plugin_.Stop(), 2);
    ASSERT_EQ(container_.WaitFor(1, "_CmdStop_").text, "_CmdStop_");
    EXPECT_EQ(plugin_.Uninitialize(), 1);
    EXPECT_EQ(behaviour->destroyed.Get(), 1);
    EXPECT_EQ(plugin_.Uninitialize(), 0);

    EXPECT_EQ(plugin_.Initialize(&FakeContainer::Callback, "{", &container_), 0) << "no JSON";
    EXPECT_NE(container_.WaitFor(6, "Unable to parse JSON payload").text, "");
    EXPECT_EQ(plugin_.Start(), 0);
}

TEST_F(PluginTest, TasksAnswerWhateverHappens) {
    Up();
    const std::tuple<const char*, uint32_t, const char*> rows[] = {
        {"work", 0, "Success"},
        {"fail", 0x80070002, "nothing there"},
        {"throw 1", 0x8000FFFF, "Success"},
        {"throw in finish", 0x80070057, "too late"},
        {"later", 0, "Success"},
    };
    for (const auto& [what, code, text] : rows) {
        const std::string answer = Ask("Work", std::string(R"({"do":")") + what + "\"}", what);
        const RetVal result = Result(answer);
        EXPECT_EQ(result.code, static_cast<int32_t>(code)) << what;
        EXPECT_EQ(result.text, text);
        EXPECT_EQ(answer.find("\"done\":true") != std::string::npos, code == 0) << answer;
    }
    EXPECT_FALSE(
        container_.All(6, "Caught exception while calling ExecuteAsync: 0x8000ffff[0]: Success").empty());
}

TEST_F(PluginTest, ASecondInitializeEndsTheFirstInstance) {
    Up();
    FakeContainer second;
    ASSERT_EQ(plugin_.Initialize(&FakeContainer::Callback, "{}", &second), 2);
    EXPECT_EQ(behaviour->destroyed.Get(), 1);
    const size_t before = container_.All(6).size();
    EXPECT_EQ(second.WaitFor(1).text, "_CmdInit_");
    EXPECT_EQ(container_.All(6).size(), before) << "the first callback hears no more";
    EXPECT_EQ(plugin_.Uninitialize(), 1);
}

TEST_F(PluginTest, CallbacksMayMisbehave) {
    ASSERT_EQ(plugin_.Initialize(nullptr, "{}", nullptr), 2);
    EXPECT_EQ(plugin_.Uninitialize(), 1);

    int refused = -1;
    container_.React([&](int notification, const std::string& text) {
        if (notification == 1 && text == "_CmdStart_") refused = plugin_.Uninitialize();
        if (notification == 3) throw 5;
    });
    Up();
    Ask("Echo", R"({"number":1})");
    EXPECT_NE(container_.WaitFor(6, "The container's callback threw").text, "");
    EXPECT_EQ(refused, 0);
    EXPECT_FALSE(container_.All(6, "must not be called from inside the callback").empty());
}

TEST_F(PluginTest, AStuckTaskDoesNotHoldTheShutdown) {
    Up();
    plugin_.OnJsonMessage(Envelope("Work", "stuck", R"({"do":"block"})").c_str());
    ASSERT_TRUE(behaviour->running.WaitFor(1));
    EXPECT_EQ(plugin_.Uninitialize(), 1);
    EXPECT_EQ(behaviour->destroyed.Get(), 0) << "the task still uses the module";
    behaviour->release.Add();
    EXPECT_TRUE(behaviour->destroyed.WaitFor(1));
    EXPECT_EQ(Answers("stuck"), "aborted ");
}

TEST_F(PluginTest, AStuckWorkerFailsTheStopAndIsAbandonedAtTheEnd) {
    Up();
    plugin_.OnJsonMessage(Envelope("Block", "stuck").c_str());
    ASSERT_TRUE(behaviour->running.WaitFor(1));
    plugin_.OnJsonMessage(Envelope("Echo", "behind", R"({"number":1})").c_str());
    EXPECT_EQ(plugin_.Stop(), 2);
    EXPECT_NE(container_.WaitFor(2, "_CmdStop_").text.find("\"The worker is stuck\""), std::string::npos);
    EXPECT_EQ(plugin_.Uninitialize(), 1);
    EXPECT_EQ(Answers("stuck") + Answers("behind"), "aborted aborted ");
    EXPECT_EQ(behaviour->abandoned.Get(), 1);
    EXPECT_EQ(behaviour->destroyed.Get(), 0);
    // The next instance has nothing to do with it.
    const std::shared_ptr<Behaviour> first = behaviour;
    behaviour = std::make_shared<Behaviour>();
    FakeContainer next;
    ASSERT_EQ(plugin_.Initialize(&Callback, "{}", &next), 2);
    ASSERT_EQ(next.WaitFor(1).text, "_CmdInit_");
    const size_t notified = container_.All(2).size() + container_.All(3).size() + container_.All(6).size();
    first->release.Add();
    EXPECT_TRUE(first->destroyed.WaitFor(1));
    EXPECT_EQ(container_.All(2).size() + container_.All(3).size() + container_.All(6).size(), notified);
    EXPECT_EQ(next.All(2).size() + next.All(3).size(), 0u);
    EXPECT_EQ(plugin_.Uninitialize(), 1);
    EXPECT_EQ(behaviour->destroyed.Get(), 1);
}

TEST_F(PluginTest, TheEndAnswersWhatIsOpen) {
    Up();
    // The worker is busy until the stop, so that the requests after it are on their way at each place.
    plugin_.OnJsonMessage(Envelope("Work", "result", R"({"do":"block"})").c_str());
    plugin_.OnJsonMessage(Envelope("Work", "forgotten", R"({"do":"pend"})").c_str());
    ASSERT_TRUE(behaviour->running.WaitFor(1));
    EXPECT_EQ(plugin_.Stop(), 2);
    ASSERT_EQ(container_.WaitFor(1, "_CmdStop_").text, "_CmdStop_");
    plugin_.OnJsonMessage(Envelope("Echo", "held", R"({"number":1})").c_str());
    plugin_.OnJsonMessage(Envelope("JOIN", "join").c_str());
    container_.WaitFor(6, "Keeping message in queue");
    behaviour->release.Add();
    container_.React([&](int notification, const std::string& text) {
        // A page that asks again at each failure must not keep the end waiting.
        if (notification == 3 && text.find("-2147467260") != std::string::npos)
            plugin_.OnJsonMessage(Envelope("Echo", "again", R"({"number":1})").c_str());
    });
    EXPECT_EQ(plugin_.Uninitialize(), 1);
    EXPECT_EQ(Answers("result") + Answers("forgotten") + Answers("held"), "done aborted aborted ");
    EXPECT_EQ(Answers("join"), "") << "nobody expects one";
}

TEST_F(PluginTest, WhatWasSentToAnInstanceThatNeverStartedDiesWithIt) {
    ASSERT_EQ(plugin_.Initialize(&FakeContainer::Callback, "{}", &container_), 2);
    ASSERT_EQ(container_.WaitFor(1).text, "_CmdInit_");
    plugin_.OnJsonMessage(Envelope("Echo", "early", R"({"number":1})").c_str());
    EXPECT_EQ(plugin_.Uninitialize(), 1);
    EXPECT_EQ(Answers("early"), "");
}

TEST_F(PluginTest, TheMemoryOfABurstGoesBack) {
    ASSERT_EQ(plugin_.Initialize(&Callback, "{}", &container_), 2);
    ASSERT_EQ(container_.WaitFor(1).text, "_CmdInit_");
    constexpr size_t kRequests = 2000;
    for (size_t i = 0; i < kRequests; ++i)
        plugin_.OnJsonMessage(Envelope(i % 2 == 0 ? "Echo" : "Work", "id", R"({"number":1})").c_str());
    container_.WaitFor(6, "Keeping message in queue", kRequests);
    EXPECT_EQ(plugin_.Start(), 2);
    ASSERT_NE(container_.WaitFor(3, "\"id\"", kRequests).text, "");
    Ask("Echo", R"({"number":1})", "after");
    EXPECT_LE(KXP::SlabBytes(), size_t{2} << 20);
    EXPECT_EQ(plugin_.Uninitialize(), 1);
    EXPECT_LE(KXP::SlabBytes(), (size_t{1} << 20) + (size_t{768} << 10)) << "what is spare, and a few in use";
}

// Every allocation between a request and its answer fails once, alone and with all that follow.
TEST_F(PluginTest, WithoutMemoryEachRequestIsAnsweredOnce) {
    const SparedMemory mine;
    Up();
    const std::pair<const char*, const char*> requests[] = {
        {"Echo", R"({"number":7,"a comment":[{"}":"\"]"}]} /* " */)"},
        {"Echo", "{}"},
        {"Work", R"({"do":"work"})"},
        {"Work", R"({"do":"later"})"},
        {"Work", R"({"do":"throw 1"})"},
        {"Missing", "{}"}};
    int number = 0;
    for (const auto which : {ScarceMemory::Fails::One, ScarceMemory::Fails::AllFromThereOn}) {
        for (const auto& [method, payload] : requests) {
            bool failed = true;
            long nth = 0;
            while (failed) {
                const std::string id = "request " + std::to_string(++number);
                const std::string envelope = Envelope(method, id + " \\u00e9", payload);
                {
                    const ScarceMemory scarce(++nth, which);
                    std::thread([&] { plugin_.OnJsonMessage(envelope.c_str()); }).join();
                    ASSERT_NE(container_.WaitFor(3, id + " ").text, "")
                        << method << payload << " failed at " << nth;
                    failed = scarce.HasFailed();
                }
                // Behind all that the request has left.
                Ask("Echo", R"({"number":1})", "after " + std::to_string(number));
                ASSERT_EQ(container_.All(3, id + " ").size(), 1u) << method << payload << nth;
            }
            EXPECT_GT(nth, 10) << "too few allocations have failed: " << method << payload;
        }
    }
}

TEST_F(PluginTest, WithoutMemoryEachCommandEndsOnce) {
    const SparedMemory mine;
    for (const auto which : {ScarceMemory::Fails::One, ScarceMemory::Fails::AllFromThereOn}) {
        bool failed = true;
        long nth = 0;
        while (failed) {
            ++nth;
            FakeContainer container;
            Counter ends;
            container.React([&](int notification, const std::string&) {
                if (notification == 1 || notification == 2) ends.Add();
            });
            int accepted = 0;
            {
                const ScarceMemory scarce(nth, which);
                for (const std::function<int()>& command :
                     {std::function<int()>([&] { return plugin_.Initialize(&Callback, "{}", &container); }),
                      std::function<int()>(plugin_.Start), std::function<int()>(plugin_.Stop)}) {
                    int result = 0;
                    std::thread([&] { result = command(); }).join();
                    if (result == 2) ++accepted;
                    ASSERT_TRUE(ends.WaitFor(accepted)) << nth;
                }
                failed = scarce.HasFailed();
            }
            // With memory again, or the instance may outlive the container.
            plugin_.Uninitialize();
            ASSERT_EQ(ends.Get(), accepted) << nth;
        }
        EXPECT_GT(nth, 60);
    }
}
