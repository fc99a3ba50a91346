// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/Signature.h"

#include <memory>
#include <openssl/evp.h>

namespace lorvane::backend {

namespace {
const unsigned char* bytes(std::string_view text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}
} // namespace

bool ed25519Verifies(std::string_view key, std::string_view message, std::string_view signature) {
    if (key.size() != ed25519KeySize || signature.size() != ed25519SignatureSize)
        return false;
    const std::unique_ptr<EVP_PKEY, void (*)(EVP_PKEY*)> open(
        EVP_PKEY_new_raw_public_key(EVP_PKEY_ED25519, nullptr, bytes(key), key.size()), &EVP_PKEY_free);
    const std::unique_ptr<EVP_MD_CTX, void (*)(EVP_MD_CTX*)> context(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
    return open && context &&
           EVP_DigestVerifyInit(context.get(), nullptr, nullptr, nullptr, open.get()) == 1 &&
           EVP_DigestVerify(context.get(), bytes(signature), signature.size(), bytes(message),
                            message.size()) == 1;
}

} // namespace lorvane::backend
