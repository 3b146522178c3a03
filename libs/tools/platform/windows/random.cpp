// SPDX-License-Identifier: Apache-2.0
// Both come from the system's library of cryptography. Sizes go there in portions, since it
// counts in 32 bits.
#include "tools/platform/host.h"
#include "tools/platform/windows/errors.h"

#include <algorithm>
#include <cerrno>
#include <windows.h>
// Behind windows.h.
#include <bcrypt.h>

namespace kaz::host {

namespace {

/// The codes of this library are no errors of the system, which errnoOf() would know.
int succeeded(NTSTATUS status) {
    return status >= 0 ? 0 : failWith(EIO);
}

/// A digest that is being made.
class Hash {
public:
    Hash() {
        if (BCryptOpenAlgorithmProvider(&algorithm_, BCRYPT_SHA1_ALGORITHM, nullptr, 0) < 0)
            algorithm_ = nullptr;
        else if (BCryptCreateHash(algorithm_, &hash_, nullptr, 0, nullptr, 0, 0) < 0)
            hash_ = nullptr;
    }
    Hash(const Hash&) = delete;
    Hash& operator=(const Hash&) = delete;
    ~Hash() {
        if (hash_ != nullptr)
            BCryptDestroyHash(hash_);
        if (algorithm_ != nullptr)
            BCryptCloseAlgorithmProvider(algorithm_, 0);
    }

    int add(const void* data, std::size_t size) const {
        const auto* next = static_cast<const unsigned char*>(data);
        while (size > 0) {
            const auto part = static_cast<ULONG>(std::min<std::size_t>(size, 1U << 30));
            if (succeeded(BCryptHashData(hash_, const_cast<unsigned char*>(next), part, 0)) != 0)
                return -1;
            next += part;
            size -= part;
        }
        return 0;
    }

    int finish(Sha1Digest& digest) const {
        return succeeded(BCryptFinishHash(hash_, digest, sizeof digest, 0));
    }

    bool isOpen() const { return hash_ != nullptr; }

private:
    BCRYPT_ALG_HANDLE algorithm_ = nullptr;
    BCRYPT_HASH_HANDLE hash_ = nullptr;
};

} // namespace

int randomBytes(void* to, std::size_t size) {
    auto* out = static_cast<unsigned char*>(to);
    while (size > 0) {
        const auto part = static_cast<ULONG>(std::min<std::size_t>(size, 1U << 30));
        if (succeeded(BCryptGenRandom(nullptr, out, part, BCRYPT_USE_SYSTEM_PREFERRED_RNG)) != 0)
            return -1;
        out += part;
        size -= part;
    }
    return 0;
}

/// Nothing forks here.
unsigned processGeneration() {
    return 0;
}

int sha1(const void* first, std::size_t firstSize, const void* second, std::size_t secondSize,
         Sha1Digest& digest) {
    const Hash hash;
    if (!hash.isOpen())
        return failWith(EIO);
    return hash.add(first, firstSize) == 0 && hash.add(second, secondSize) == 0
               ? hash.finish(digest)
               : -1;
}

} // namespace kaz::host
