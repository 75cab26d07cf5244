#include <thread>

#include <gtest/gtest.h>

#include "common/Exception.h"
#include "common/JsonParse.h"
#include "common/message/InitQueue.h"
#include "common/message/MessageValidator.h"
#include "common/message/PersistentResponseHandler.h"
#include "common/message/RequestCallbackManager.h"
#include "tests/support/Counter.h"
#include "tests/support/FakeClock.h"
#include "tests/support/LogCapture.h"
#include "tests/support/MessageRecorder.h"

using KXP::JSONMessage;
using KXP::RetVal;
namespace Message = KXP::Message;

namespace {

std::unique_ptr<JSONMessage> Answer(const std::string& reference, const std::string& uniqueid) {
    auto message = PageRequest("Do", uniqueid);
    message->set_reference_uniqueid(reference.c_str());
    return message;
}

std::unique_ptr<JSONMessage> Subscription(const std::string& method, const std::string& uniqueid) {
    auto message = PageRequest(method, uniqueid);
    message->set_type(JSONMessage::kPersistent);
    return message;
}

}  // namespace

TEST(InitQueue, KeepsMessagesAndDeliversThemInOrder) {
    LogCapture log;
    struct SendsWhileDraining : MessageRecorder {
        bool HandleMsg(std::unique_ptr<JSONMessage> message) override {
            const bool first = size() == 0;
            MessageRecorder::HandleMsg(std::move(message));
            if (first) gate->SendMsg(PageRequest("Do", "late"));
            if (size() == 2) throw KXP::Exception(-1, "one bad message does not keep the gate shut", 0);
            return true;
        }
        KXP::InitQueue* gate = nullptr;
    } end;
    KXP::InitQueue gate;
    end.gate = &gate;
    gate.SetRequestHandler(&end);
    for (const char* id : {"1", "2", "3"})
        EXPECT_TRUE(gate.SendMsg(PageRequest("Do", id)));
    EXPECT_EQ(end.size(), 0u);
    EXPECT_EQ(log.Count("Plugin is not yet ready to receive messages. Keeping message in queue"), 3);
    gate.StartForwardingMessages();
    EXPECT_TRUE(gate.SendMsg(PageRequest("Do", "open")));
    EXPECT_EQ(end.Order(), "1 2 3 late open");

    gate.StopForwardingMessages();
    gate.SendMsg(PageRequest("Do", "held"));
    EXPECT_EQ(end.size(), 5u);
    gate.StartForwardingMessages();
    EXPECT_EQ(end.Order(), "1 2 3 late open held");
}

TEST(InitQueue, StopWaitsForAForwardInProgressWhichMaySendAgain) {
    const LogCapture log;
    struct Slow : MessageRecorder {
        bool HandleMsg(std::unique_ptr<JSONMessage> message) override {
            const bool first = std::string(message->uniqueid()) == "1";
            if (first) {
                entered.Add();
                EXPECT_TRUE(leave.WaitFor(1));
                gate->SendMsg(PageRequest("Do", "again"));
            }
            MessageRecorder::HandleMsg(std::move(message));
            if (first) left.Add();
            return true;
        }
        KXP::InitQueue* gate = nullptr;
        Counter entered, leave, left;
    } end;
    KXP::InitQueue gate;
    end.gate = &gate;
    gate.SetRequestHandler(&end);
    gate.StartForwardingMessages();
    std::thread sender([&] { gate.SendMsg(PageRequest("Do", "1")); });
    ASSERT_TRUE(end.entered.WaitFor(1));
    int leftAtStop = 0;
    std::thread stopper([&] {
        gate.StopForwardingMessages();
        leftAtStop = end.left.Get();
    });
    while (log.Count("Keeping message in queue") == 0)
        gate.SendMsg(PageRequest("Do", "until the gate is shut"));
    for (int i = 0; i < 10000; ++i)
        std::this_thread::yield();
    end.leave.Add();
    stopper.join();
    sender.join();
    EXPECT_EQ(leftAtStop, 1);
}

TEST(RequestCallbacks, AnswerTimeoutAndStrangers) {
    FakeClock clock;
    KXP::TaskQueue queue("test", clock);
    KXP::RequestCallbackManager<JSONMessage> manager(queue, KXP::QueueResponses);
    MessageRecorder out;
    MessageRecorder module;
    manager.SetRequestHandler(&out);
    manager.SetResponseHandler(&module);
    std::string told;
    const auto tell = [&](const std::string& mark) {
        return [&told, &manager, mark](std::unique_ptr<JSONMessage> message, const RetVal& value) {
            told += mark + (message ? ":answer:" : ":none:") + value.text + " ";
            // A callback may send again.
            manager.SendRequest(PageRequest("Next", "next"), nullptr, 0);
        };
    };
    EXPECT_TRUE(manager.SendRequest(PageRequest("Do", "a"), tell("a"), 1000));
    EXPECT_TRUE(manager.SendRequest(PageRequest("Do", "b"), tell("b"), 500));
    EXPECT_TRUE(manager.SendRequest(Subscription("Do", "c"), tell("c"), 100));
    EXPECT_EQ(out.Order(), "a b c");

    EXPECT_TRUE(manager.SendMsg(Answer("a", "1")));
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE(queue.Step());
    EXPECT_EQ(told, "a:answer:Success b:none:Timed out ");
    // The answer came too late, the other belongs to nobody: the module sees both.
    manager.SendMsg(Answer("b", "2"));
    manager.SendMsg(Answer("c", "3"));
    for (int i = 0; i < 2; ++i)
        ASSERT_TRUE(queue.Step());
    EXPECT_EQ(module.Order(), "2 3");
    EXPECT_EQ(out.Order(), "a b c next next");
}

TEST(PersistentResponses, EverySubscriberGetsItsOwnCopy) {
    FakeClock clock;
    KXP::TaskQueue queue("test", clock);
    KXP::PersistentResponseHandler<JSONMessage> handler(queue, KXP::QueueRequests);
    struct SubscribesAgain : MessageRecorder {
        bool HandleMsg(std::unique_ptr<JSONMessage> message) override {
            handler->SendMsg(Subscription("Saved", "from inside"));
            return MessageRecorder::HandleMsg(std::move(message));
        }
        KXP::PersistentResponseHandler<JSONMessage>* handler = nullptr;
    } container;
    container.handler = &handler;
    MessageRecorder module;
    handler.SetRequestHandler(&module);
    handler.SetResponseHandler(&container);

    const auto notify = [&] {
        auto notification = Message::CreateNotification("Saved", "CobalixNative", "Gallery");
        notification->set_uniqueid("n");
        EXPECT_TRUE(handler.SendMsg(std::move(notification)));
    };
    notify();  // nobody has subscribed: goes on as it is
    ASSERT_EQ(container.size(), 1u);
    EXPECT_STREQ(container[0].reference_uniqueid(), "Saved");

    EXPECT_TRUE(handler.SendMsg(Subscription("Saved", "s1")));
    EXPECT_TRUE(handler.SendMsg(Subscription("Saved", "s2")));
    notify();
    ASSERT_EQ(container.size(), 4u) << "the one from inside, and the two";
    EXPECT_STREQ(container[1].reference_uniqueid(), "from inside");
    EXPECT_STREQ(container[2].reference_uniqueid(), "s1");
    EXPECT_STREQ(container[3].reference_uniqueid(), "s2");
    EXPECT_STREQ(container[3].target_system(), "Web");
    EXPECT_STREQ(container[3].target_module(), "Page");
    EXPECT_EQ(module.size(), 0u);
}

TEST(Validator, ABadResponseTravelsWithTheFailure) {
    KXP::Document api;
    KXP::ParseJSON(R"({"definitions":{"Do":{"return":{"required":["b"]}}}})", api);
    KXP::MessageValidator validator(api);
    MessageRecorder container;
    validator.SetResponseHandler(&container);
    const auto respond = [&](const char* payload) {
        auto response = PageRequest("Do", "r", payload);
        response->set_reference_uniqueid("1");
        EXPECT_TRUE(validator.SendMsg(std::move(response)));
        return Message::GetReturnValue(container[container.size() - 1]);
    };
    EXPECT_EQ(respond(R"({"b":1,"_return_code":1,"_return_status":"as it was"})").text, "as it was");
    EXPECT_EQ(static_cast<uint32_t>(respond(R"({"c":1})").code), 0x8008F001u);
    EXPECT_EQ(respond(R"({"_return_code":-5})").code, -5) << "a failure is not checked";
}
