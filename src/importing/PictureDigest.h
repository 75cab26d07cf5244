// The digest by which an import knows a picture or a video again, whatever its metadata.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

struct evp_md_ctx_st;

namespace importing {

class PictureDigest {
  public:
    PictureDigest();  // throws std::runtime_error when there is no SHA-256
    void Add(const char* bytes, size_t size);
    // Lower-case hexadecimal. Nothing can be added afterwards.
    std::string Finish();

  private:
    struct Free {
        void operator()(evp_md_ctx_st* context) const;
    };
    std::unique_ptr<evp_md_ctx_st, Free> context_;
};

}  // namespace importing
