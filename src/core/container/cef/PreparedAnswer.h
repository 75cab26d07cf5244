// Answers without a result, which are made before they are needed: when they are, there may be no memory.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "common/json/Json.h"
#include "common/message/JSONMessage.h"

enum class LostBy { Memory, End };

// The answer to one request.
class PreparedAnswer {
  public:
    // Takes all the memory that Complete needs; throws std::bad_alloc.
    explicit PreparedAnswer(const KXP::JSONMessage& request);

    // The whole text, valid as long as this object. Once.
    const char* Complete(LostBy reason) noexcept;

  private:
    KXP::JsonBuffer text_;
};

// The same for a request that could not be read for want of memory, from the text that came. Takes none.
class UnreadAnswer {
  public:
    // Null if the text is no request, or its names are too long. Valid as long as this object.
    const char* Make(std::string_view json) noexcept;

  private:
    char text_[4096];
};
