// What a call throws, as the value that a request would end in.
#pragma once

#include <string>

#include "common/Exception.h"
#include "common/RetVal.h"

// "0x80070057[0]: text", with the internal number in brackets.
template <typename Call>
std::string Thrown(Call call) {
    try {
        call();
    } catch (...) {
        return KXP::ToStr(KXP::ExceptionToRetVal());
    }
    return "nothing thrown";
}
