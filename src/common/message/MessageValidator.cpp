#include "common/message/MessageValidator.h"

#include <utility>

namespace KXP {

bool MessageValidator::SendMsg(std::unique_ptr<JSONMessage> message) {
    const RetVal value = Message::GetReturnValue(*message);
    // A failure carries no result to check. A request that claims to be one slips through here as well, which
    // is why handlers read their parameters with care.
    if (value.Failed()) return ForwardMsg(std::move(message));
    const std::string method = Message::Method(*message);
    const Value& payload = std::as_const(*message).payload();
    if (Message::IsResponse(*message)) {
        const WrittenBody* const written = message->written_body();
        const RetVal verdict = written ? written->verdict : validateJsonMessage(method, payload, "return");
        Message::SetReturnValue(*message, verdict.Failed() ? verdict : value);
    } else if (!Message::IsPersistent(*message)) {
        const RetVal verdict = validateJsonMessage(method, payload, "parameters");
        if (verdict.Failed()) return Refuse(*message, verdict);
    }
    return ForwardMsg(std::move(message));
}

void MessageValidator::WriteBody(JSONMessage& response, const BodySource& body) {
    auto written = std::make_shared<WrittenBody>();
    written->verdict = schemas_.WriteChecked(response.method(), body, written->text);
    response.set_written_body(std::move(written));
}

bool MessageValidator::Refuse(const JSONMessage& request, const RetVal& failure) {
    if (!response_handler()) {
        KXP_LOG(LogFailure, "No response handler to send failed JSON validation to");
        return false;
    }
    auto response = Message::CreateResponse(request);
    Message::SetReturnValue(*response, failure);
    return response_handler()->SendMsg(std::move(response));
}

}  // namespace KXP
