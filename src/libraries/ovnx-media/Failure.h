// How everything in this library fails: by an exception with the status that the C interface returns.
#pragma once

#include <stdexcept>
#include <string>

#include "OvnxMedia.h"

namespace ovnxmedia {

class Failure : public std::runtime_error {
  public:
    Failure(OvnxMediaStatus status, const std::string& text) : std::runtime_error(text), status_(status) {}

    OvnxMediaStatus status() const { return status_; }

  private:
    const OvnxMediaStatus status_;
};

}  // namespace ovnxmedia
