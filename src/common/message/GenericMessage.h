// The fields of an envelope as plain strings, for a second channel. Its payload is text and it has no return
// fields. An empty optional text counts as absent.
#pragma once

#include <string>

#include "common/message/JSONMessage.h"
#include "common/text/TextUtil.h"

namespace KXP {

class GenericMessage {
  public:
    // A message with a new uniqueid, ordinary type and nothing else.
    GenericMessage() : uniqueid_(GenerateGUID()) {}

    const char* target_system() const { return target_system_.c_str(); }
    const char* target_module() const { return target_module_.c_str(); }
    const char* method() const { return method_.c_str(); }
    const char* uniqueid() const { return uniqueid_.c_str(); }
    const char* source_system() const { return source_system_.c_str(); }
    const char* source_module() const { return source_module_.c_str(); }
    const char* reference_uniqueid() const { return reference_uniqueid_.c_str(); }
    const std::string& payload() const { return payload_; }
    int type() const { return type_; }

    bool has_source_system() const { return !source_system_.empty(); }
    bool has_source_module() const { return !source_module_.empty(); }
    bool has_reference_uniqueid() const { return !reference_uniqueid_.empty(); }
    bool has_type() const { return has_type_; }

    void set_target_system(const char* text) { target_system_ = text; }
    void set_target_module(const char* text) { target_module_ = text; }
    void set_method(const char* text) { method_ = text; }
    void set_uniqueid(const char* text) { uniqueid_ = text; }
    void set_source_system(const char* text) { source_system_ = text; }
    void set_source_module(const char* text) { source_module_ = text; }
    void set_reference_uniqueid(const char* text) { reference_uniqueid_ = text; }
    void set_payload(const char* text) { payload_ = text; }
    void set_type(int type) {
        type_ = type;
        has_type_ = true;
    }

  private:
    std::string target_system_;
    std::string target_module_;
    std::string method_;
    std::string uniqueid_;
    std::string payload_;
    std::string source_system_;
    std::string source_module_;
    std::string reference_uniqueid_;
    int type_ = JSONMessage::kOrdinary;
    bool has_type_ = true;
};

}  // namespace KXP
