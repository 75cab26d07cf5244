#include "importing/PictureDigest.h"

#include <stdexcept>

#include <openssl/evp.h>

namespace importing {

void PictureDigest::Free::operator()(evp_md_ctx_st* context) const {
    EVP_MD_CTX_free(context);
}

PictureDigest::PictureDigest() : context_(EVP_MD_CTX_new()) {
    if (!context_ || EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr) != 1)
        throw std::runtime_error("SHA-256 is not available");
}

void PictureDigest::Add(const char* bytes, size_t size) {
    EVP_DigestUpdate(context_.get(), bytes, size);
}

std::string PictureDigest::Finish() {
    unsigned char whole[EVP_MAX_MD_SIZE];
    unsigned size = 0;
    EVP_DigestFinal_ex(context_.get(), whole, &size);
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (unsigned i = 0; i < size; ++i) {
        text += kDigits[whole[i] >> 4];
        text += kDigits[whole[i] & 15];
    }
    return text;
}

}  // namespace importing
