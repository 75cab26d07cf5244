#include "gallery-host/page/Handles.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include <openssl/evp.h>

#include "gallery-host/base/Failure.h"
#include "gallery-host/message/Envelope.h"

namespace host::page {
namespace {

bool IsRecord(const KXP::Value& object) {
    const KXP::Value* path = Find(object, "path");
    const KXP::Value* type = Find(object, "fileType");
    return path && path->IsString() && type && type->IsString();
}

int HexValue(char digit) {
    if (digit >= '0' && digit <= '9') return digit - '0';
    return digit >= 'a' && digit <= 'f' ? digit - 'a' + 10 : -1;
}

}  // namespace

size_t Handles::Hash::operator()(const Digest& digest) const {
    size_t hash = 0;
    std::memcpy(&hash, digest.data(), sizeof hash);
    return hash;
}

void Handles::AddTo(KXP::Value& value, KXP::Allocator& allocator) {
    if (value.IsArray())
        for (KXP::Value& element : value.GetArray())
            AddTo(element, allocator);
    if (!value.IsObject()) return;
    for (auto& member : value.GetObject())
        AddTo(member.value, allocator);
    if (!IsRecord(value)) return;
    const Digest digest = DigestOf(value);
    std::string handle;
    for (const uint8_t byte : digest) {
        handle += "0123456789abcdef"[byte >> 4];
        handle += "0123456789abcdef"[byte & 0x0F];
    }
    value.RemoveMember("handle");
    value.AddMember("handle", KXP::Value(handle, allocator), allocator);
    Remember(digest, {Text(value, "path"), Text(value, "fileType") == "video"});
}

std::optional<Capture> Handles::Find(std::string_view handle) const {
    const std::optional<Digest> digest = Read(handle);
    if (!digest) return std::nullopt;
    const KXP::MutexLock lock(mutex_);
    for (const Captures* captures : {&recent_, &former_}) {
        const auto found = captures->find(*digest);
        if (found != captures->end()) return found->second;
    }
    return std::nullopt;
}

bool Handles::Knows(const std::string& path) const {
    const auto named = [&path](const auto& entry) { return entry.second.path == path; };
    const KXP::MutexLock lock(mutex_);
    return std::any_of(recent_.begin(), recent_.end(), named) ||
           std::any_of(former_.begin(), former_.end(), named);
}

Handles::Digest Handles::DigestOf(const KXP::Value& record) {
    // The members that change with the file's bytes; an "id" changes with the record alone.
    std::string identity = Text(record, "path");
    for (const char* name : {"date", "fileSizeKB", "msDuration", "fileType"}) {
        const KXP::Value* member = host::Find(record, name);
        identity += '\0';
        if (member) identity += ToText(*member);
    }
    unsigned char whole[EVP_MAX_MD_SIZE];
    if (EVP_Digest(identity.data(), identity.size(), whole, nullptr, EVP_sha256(), nullptr) != 1)
        throw Failure(kExitFailed, "SHA-256 is not available");
    Digest digest{};
    std::copy_n(whole, digest.size(), digest.begin());
    return digest;
}

std::optional<Handles::Digest> Handles::Read(std::string_view handle) {
    Digest digest{};
    if (handle.size() != 2 * digest.size()) return std::nullopt;
    for (size_t i = 0; i < digest.size(); ++i) {
        const int high = HexValue(handle[2 * i]);
        const int low = HexValue(handle[2 * i + 1]);
        if (high < 0 || low < 0) return std::nullopt;
        digest[i] = static_cast<uint8_t>(high * 16 + low);
    }
    return digest;
}

void Handles::Remember(const Digest& digest, Capture capture) {
    const KXP::MutexLock lock(mutex_);
    if (recent_.size() >= kept_ && recent_.count(digest) == 0) {
        former_ = std::move(recent_);
        recent_.clear();
    }
    recent_[digest] = std::move(capture);
}

}  // namespace host::page
