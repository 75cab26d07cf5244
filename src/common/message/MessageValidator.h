// Checks the payload of each message that passes against the API catalogue: a request's parameters on the way
// in, a response's result on the way out.
#pragma once

#include <memory>
#include <string>

#include "common/message/MessageHandler.h"
#include "common/message/PayloadSchemas.h"

namespace KXP {

class MessageValidator : public MessageHandler<JSONMessage> {
  public:
    // `apiSchema` outlives the validator and is not changed once messages pass.
    explicit MessageValidator(const Document& apiSchema) : schemas_(apiSchema) {}

    // A bad request goes no further and is answered. A bad response goes on with the failure as its result.
    bool SendMsg(std::unique_ptr<JSONMessage> message) override;

    // `kind` is "parameters" or "return". A method or kind that is not listed accepts everything.
    RetVal validateJsonMessage(const std::string& method, const Value& payload, const char* kind) {
        return schemas_.Validate(method, payload, kind);
    }

    // Writes the body of a response, which is checked on the way: SendMsg has nothing left to do with it. Any
    // thread.
    void WriteBody(JSONMessage& response, const BodySource& body);

  private:
    bool Refuse(const JSONMessage& request, const RetVal& failure);

    PayloadSchemas schemas_;
};

}  // namespace KXP
