#include "libraries/digest/Sha256.h"

#include <stdexcept>

#include <openssl/evp.h>

namespace KXP {
namespace {

void Require(bool done) {
    if (!done) throw std::runtime_error("SHA-256 is not available");
}

}  // namespace

void Sha256::Free::operator()(evp_md_ctx_st* context) const {
    EVP_MD_CTX_free(context);
}

Sha256::Sha256() : context_(EVP_MD_CTX_new()) {
    Require(context_ && EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr) == 1);
}

void Sha256::Add(const char* bytes, size_t size) {
    Require(EVP_DigestUpdate(context_.get(), bytes, size) == 1);
}

std::string Sha256::Finish() {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned size = 0;
    Require(EVP_DigestFinal_ex(context_.get(), digest, &size) == 1);
    std::string text;
    for (unsigned i = 0; i < size; ++i) {
        text += "0123456789abcdef"[digest[i] >> 4];
        text += "0123456789abcdef"[digest[i] & 0x0F];
    }
    return text;
}

}  // namespace KXP
