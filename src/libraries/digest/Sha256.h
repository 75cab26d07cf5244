// The SHA-256 digest of bytes that arrive in pieces.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

struct evp_md_ctx_st;

namespace KXP {

class Sha256 {
  public:
    Sha256();  // throws std::runtime_error when the library has no such digest
    void Add(const char* bytes, size_t size);
    // Lower-case hexadecimal. Nothing can be added afterwards.
    std::string Finish();

  private:
    struct Free {
        void operator()(evp_md_ctx_st* context) const;
    };
    std::unique_ptr<evp_md_ctx_st, Free> context_;
};

}  // namespace KXP
