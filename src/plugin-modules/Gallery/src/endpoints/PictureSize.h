// The size of a picture in the parameters of a request.
#pragma once

#include "common/json/Json.h"

// Reads a width or height in pixels: 0 when `key` is missing. Throws std::invalid_argument, with a text that
// calls it `name`, when it is zero, and KXP::JSONFieldError when it is not an unsigned number.
unsigned int ReadSide(const KXP::Value& params, const char* key, const char* name);
