#include <thread>

#include <gtest/gtest.h>

#include "common/json/JsonParse.h"
#include "common/message/InitQueue.h"
#include "common/message/MessageValidator.h"
#include "common/message/PersistentResponseHandler.h"
#include "common/message/RequestCallbackManager.h"
#include "common/results/Exception.h"
#include "tests/support/Counter.h"
#include "tests/support/FakeClock.h"
#include "tests/support/LogCapture.h"
#include "tests/support/MessageRecorder.h"

using KXP::JSONMessage;
using KXP::RetVal;
namespace Message = KXP::Message;

namespace {

std::unique_ptr<JSONMessage> Answer(const std::string& reference, const std::string& uniqueid,
                                    const char* payload = "{}") {
    auto message = PageRequest("Do", uniqueid, payload);
    message->set_reference_uniqueid(reference.c_str());
    return message;
}

std::unique_ptr<JSONMessage> Subscription(const std::string& uniqueid) {
    auto message = PageRequest("Saved", uniqueid);
    message->set_type(JSONMessage::kPersistent);
    return message;
}

void RunSteps(KXP::TaskQueue& queue, int steps) {
    for (int i = 0; i < steps; ++i)
        ASSERT_TRUE(queue.Step());
}

}  // namespace

TEST(InitQueue, KeepsMessagesAndDeliversThemInOrder) {
    const LogCapture log;
    KXP::InitQueue gate;
    MessageRecorder end;
    end.onMessage = [&](const JSONMessage&) {
        if (end.size() == 1) gate.SendMsg(PageRequest("Do", "late"));
        if (end.size() == 2) throw KXP::Exception(-1, "one bad message does not keep the gate shut", 0);
    };
    gate.SetRequestHandler(&end);
    for (const char* id : {"1", "2", "3"})
        EXPECT_TRUE(gate.SendMsg(PageRequest("Do", id)));
    EXPECT_EQ(end.Order(), "");
    EXPECT_EQ(log.Count("Plugin is not yet ready to receive messages. Keeping message in queue"), 3);
    gate.StartForwardingMessages();
    EXPECT_TRUE(gate.SendMsg(PageRequest("Do", "open")));
    EXPECT_EQ(end.Order(), "1 2 3 late open");
}

TEST(InitQueue, StopWaitsForAForwardInProgressWhichMaySendAgain) {
    const LogCapture log;
    KXP::InitQueue gate;
    MessageRecorder end;
    Counter entered, leave, left;
    end.onMessage = [&](const JSONMessage& message) {
        if (std::string(message.uniqueid()) != "1") return;
        entered.Add();
        EXPECT_TRUE(leave.WaitFor(1));
        gate.SendMsg(PageRequest("Do", "again"));
        left.Add();
    };
    gate.SetRequestHandler(&end);
    gate.StartForwardingMessages();
    std::thread sender([&] { gate.SendMsg(PageRequest("Do", "1")); });
    ASSERT_TRUE(entered.WaitFor(1));
    int leftAtStop = 0;
    std::thread stopper([&] {
        gate.StopForwardingMessages();
        leftAtStop = left.Get();
    });
    while (log.Count("Keeping message in queue") == 0)
        gate.SendMsg(PageRequest("Do", "until the gate is shut"));
    for (int i = 0; i < 10000; ++i)
        std::this_thread::yield();
    leave.Add();
    stopper.join();
    sender.join();
    EXPECT_EQ(leftAtStop, 1);
}

TEST(RequestCallbacks, AnswerTimeoutAndStrangers) {
    FakeClock clock;
    KXP::TaskQueue queue("test", clock);
    KXP::RequestCallbackManager<JSONMessage> manager(queue, KXP::QueueResponses);
    MessageRecorder out, module;
    manager.SetRequestHandler(&out);
    manager.SetResponseHandler(&module);
    std::string called;
    const auto note = [&](std::unique_ptr<JSONMessage> message, const RetVal& value) {
        called += (message ? message->uniqueid() : "none") + (":" + value.text) + " ";
        // A callback may send again.
        manager.SendRequest(PageRequest("Next", "next"), nullptr, 0);
    };
    EXPECT_TRUE(manager.SendRequest(PageRequest("Do", "a"), note, 1000));
    EXPECT_TRUE(manager.SendRequest(PageRequest("Do", "b"), note, 500));
    EXPECT_TRUE(manager.SendRequest(Subscription("c"), note, 100));
    EXPECT_TRUE(manager.SendMsg(Answer("a", "1")));
    RunSteps(queue, 3);
    EXPECT_EQ(called, "1:Success none:Timed out ");
    // One answer came too late, the other belongs to nobody: the module receives both.
    manager.SendMsg(Answer("b", "2"));
    manager.SendMsg(Answer("c", "3"));
    RunSteps(queue, 2);
    EXPECT_EQ(module.Order(), "2 3");
    EXPECT_EQ(out.Order(), "a b c next next");
}

TEST(PersistentResponses, EverySubscriberGetsItsOwnCopy) {
    FakeClock clock;
    KXP::TaskQueue queue("test", clock);
    KXP::PersistentResponseHandler<JSONMessage> handler(queue, KXP::QueueRequests);
    MessageRecorder container, module;
    std::string received;
    container.onMessage = [&](const JSONMessage& message) {
        handler.SendMsg(Subscription("from inside"));
        received += message.reference_uniqueid() + ("," + std::string(message.target_system())) + "." +
                    message.target_module() + " ";
    };
    handler.SetRequestHandler(&module);
    handler.SetResponseHandler(&container);
    const auto notify = [&] {
        received.clear();
        EXPECT_TRUE(handler.SendMsg(Message::CreateNotification("Saved", "CobalixNative", "Gallery")));
        return received;
    };
    EXPECT_EQ(notify(), "Saved,. ") << "passed on as it is, because nobody has subscribed";
    EXPECT_TRUE(handler.SendMsg(Subscription("s1")));
    EXPECT_TRUE(handler.SendMsg(Subscription("s2")));
    EXPECT_EQ(notify(), "from inside,Web.Page s1,Web.Page s2,Web.Page ");
    EXPECT_EQ(module.size(), 0u);
}

TEST(Validator, ABadResponseTravelsWithTheFailure) {
    KXP::Document api;
    KXP::ParseJSON(R"({"definitions":{"Do":{"return":{"required":["b"]}}}})", api);
    KXP::MessageValidator validator(api);
    MessageRecorder container;
    validator.SetResponseHandler(&container);
    const auto respond = [&](const char* payload) {
        EXPECT_TRUE(validator.SendMsg(Answer("1", "r", payload)));
        return Message::GetReturnValue(container[container.size() - 1]);
    };
    EXPECT_EQ(respond(R"({"b":1,"_return_code":1,"_return_status":"as it was"})").text, "as it was");
    EXPECT_EQ(static_cast<uint32_t>(respond(R"({"c":1})").code), 0x8008F001u);
    EXPECT_EQ(respond(R"({"_return_code":-5})").code, -5) << "a failure is not checked";

    // The same when the body is written ahead; whatever the check says, it is whole.
    for (const char* name : {"b", "c"}) {
        auto response = Answer("1", "r", "{}");
        validator.WriteBody(*response, [&](KXP::IJsonSink& sink) {
            const KXP::Value value("text");
            sink.StartObject();
            sink.Key(name);
            value.Accept(sink);
            sink.EndObject(1);
        });
        Message::SetReturnValue(*response, {});
        EXPECT_TRUE(validator.SendMsg(Message::CreateCopy(*response)));
        const JSONMessage& sent = container[container.size() - 1];
        EXPECT_EQ(Message::GetReturnValue(sent).Failed(), *name == 'c');
        KXP::JsonBuffer text;
        EXPECT_TRUE(sent.Serialize(text));
        const JSONMessage read(text.GetString(), nullptr, nullptr);
        EXPECT_STREQ(read.payload()[name].GetString(), "text");
        EXPECT_TRUE(read.payload().HasMember("_return_code"));
    }
}
