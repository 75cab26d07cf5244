// The message that the handler chain carries. A message is owned by one unique_ptr at a time and has no lock.
// Messages are made and inspected through the helpers of Message.h.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "base/SlabMemory.h"
#include "common/json/Json.h"
#include "common/message/IOwedAnswer.h"
#include "common/results/RetVal.h"

namespace MessageBusClient {
class IBusMessage;
}

namespace KXP {

// The body of a response as text, a whole object, and what its check said.
struct WrittenBody {
    JsonBuffer text;
    RetVal verdict;
};

// The envelope: one JSON object.
//   system, module, method, uniqueid   strings, not empty
//   payload                            object with parameters or results
//   source_system, source_module       strings, optional
//   reference_uniqueid                 the uniqueid of the request that this message answers, optional
//   type                               kOrdinary or kPersistent, optional
class JSONMessage : public InSlab {
  public:
    using BusMessage = std::shared_ptr<MessageBusClient::IBusMessage>;

    static constexpr int kOrdinary = 3072;
    static constexpr int kPersistent = 3073;

    // Without any field, for one that Parse or CopyFrom fills.
    struct Empty {};

    // With a new uniqueid, ordinary type and nothing else. The bus messages are kept and never used here.
    explicit JSONMessage(BusMessage first = nullptr, BusMessage second = nullptr);
    explicit JSONMessage(Empty) {}
    // Parses and checks an envelope. Throws JSONFieldError.
    JSONMessage(const std::string& json, BusMessage first, BusMessage second);
    // An ordinary message; a null payload stands for an empty object. Throws JSONFieldError for a payload
    // that is no JSON object.
    JSONMessage(const char* system, const char* module, const char* method, const char* uniqueid,
                const char* payload, BusMessage first, BusMessage second);
    JSONMessage(const JSONMessage&) = delete;
    JSONMessage& operator=(const JSONMessage&) = delete;

    // Parses and checks an envelope, which replaces the fields. Throws JSONFieldError, with the text
    // `parseError` when `json` is no JSON object.
    void Parse(std::string_view json, const char* parseError);
    void CopyFrom(const JSONMessage& other);

    // Compact text, without a terminating NUL. False, with a log line, when it cannot be encoded.
    bool Serialize(JsonBuffer& buffer) const;

    // Texts of absent members, and of those that are no strings, are empty.
    const char* target_system() const { return Text(Field::System); }
    const char* target_module() const { return Text(Field::Module); }
    const char* method() const { return Text(Field::Method); }
    const char* uniqueid() const { return Text(Field::UniqueId); }
    const char* source_system() const { return Text(Field::SourceSystem); }
    const char* source_module() const { return Text(Field::SourceModule); }
    const char* reference_uniqueid() const { return Text(Field::ReferenceUniqueId); }
    int type() const;

    bool has_source_system() const { return Has(Field::SourceSystem); }
    bool has_source_module() const { return Has(Field::SourceModule); }
    bool has_reference_uniqueid() const { return Has(Field::ReferenceUniqueId); }
    bool has_type() const;  // there and an integer

    // The payload, or a null value when there is none; that one is not to be written.
    const Value& payload() const;
    Value& payload();
    // For building the payload.
    Allocator& allocator() { return document_.GetAllocator(); }

    void set_target_system(const char* text) { SetText(Field::System, text); }
    void set_target_module(const char* text) { SetText(Field::Module, text); }
    void set_method(const char* text) { SetText(Field::Method, text); }
    void set_uniqueid(const char* text) { SetText(Field::UniqueId, text); }
    void set_source_system(const char* text) { SetText(Field::SourceSystem, text); }
    void set_source_module(const char* text) { SetText(Field::SourceModule, text); }
    void set_reference_uniqueid(const char* text) { SetText(Field::ReferenceUniqueId, text); }
    void set_type(int type);
    // Parses the payload; throws JSONFieldError.
    void set_payload(const char* json);

    // Null for all but requests of the container and the responses to them. No copy has it.
    const std::shared_ptr<IOwedAnswer>& owed_answer() const { return owedAnswer_; }
    void set_owed_answer(std::shared_ptr<IOwedAnswer> owed) { owedAnswer_ = std::move(owed); }

    // The members of the payload that are text already, before those of the payload itself; null for none.
    const WrittenBody* written_body() const { return writtenBody_.get(); }
    void set_written_body(std::shared_ptr<const WrittenBody> body) { writtenBody_ = std::move(body); }

    const Document& document() const { return document_; }

  private:
    // In the order of kFieldNames.
    enum class Field {
        System,
        Module,
        Method,
        UniqueId,
        Payload,
        SourceSystem,
        SourceModule,
        ReferenceUniqueId,
        Type,
        Count
    };

    // Null without that member.
    const Value* Find(Field field) const;
    const char* Text(Field field) const;
    bool Has(Field field) const { return Find(field) != nullptr; }
    Value& Member(Field field);
    void SetText(Field field, const char* text);
    void FindFields();
    void CheckEnvelope();
    void CheckRequiredString(Field field) const;
    bool WriteWithBody(JsonBuffer& buffer) const;

    // Most messages are small, and thousands may wait at once: a chunk of the default size would cost each of
    // them 64 KB.
    static constexpr size_t kFirstBytes = 1024;
    static constexpr size_t kChunkBytes = 2048;
    alignas(std::max_align_t) char firstChunk_[kFirstBytes];
    Allocator pool_{firstChunk_, kFirstBytes, kChunkBytes, &g_jsonAllocator};
    Document document_{rapidjson::kObjectType, &pool_};
    // By the field, the number of the first member of that name, counted from 1; 0 for none. A search for
    // each of the dozens of questions on a message's way is a tenth of a short request.
    std::array<rapidjson::SizeType, static_cast<size_t>(Field::Count)> places_{};
    Value absent_;  // what payload() returns without one; reset by each use
    BusMessage first_;
    BusMessage second_;
    std::shared_ptr<IOwedAnswer> owedAnswer_;
    std::shared_ptr<const WrittenBody> writtenBody_;
};

}  // namespace KXP
