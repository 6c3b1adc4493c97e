#include "common/update/signature.h"

#include <array>
#include <sodium.h>

namespace Signature {
namespace {

static_assert(Size == crypto_sign_BYTES && KeySize == crypto_sign_PUBLICKEYBYTES && KeySize == crypto_sign_SEEDBYTES);

using SecretKey = std::array<unsigned char, crypto_sign_SECRETKEYBYTES>;

bool ready() {
    return sodium_init() >= 0;
}

const unsigned char* bytesOf(const QByteArray& bytes) {
    return reinterpret_cast<const unsigned char*>(bytes.constData());
}

unsigned char* bytesOf(QByteArray& bytes) {
    return reinterpret_cast<unsigned char*>(bytes.data());
}

unsigned long long lengthOf(const QByteArray& bytes) {
    return static_cast<unsigned long long>(bytes.size());
}

// The library's secret key is the seed with the public key behind it.
bool expand(const QByteArray& seed, QByteArray& publicKey, SecretKey& secret) {
    publicKey.resize(KeySize);
    return ready() && seed.size() == KeySize &&
           crypto_sign_seed_keypair(bytesOf(publicKey), secret.data(), bytesOf(seed)) == 0;
}

} // namespace

std::optional<KeyPair> makeKeyPair() {
    if (!ready())
        return std::nullopt;
    QByteArray seed(KeySize, '\0');
    randombytes_buf(seed.data(), static_cast<std::size_t>(seed.size()));
    return keyPairOf(seed);
}

std::optional<KeyPair> keyPairOf(const QByteArray& seed) {
    KeyPair pair{seed, {}};
    SecretKey secret;
    const bool ok = expand(seed, pair.publicKey, secret);
    sodium_memzero(secret.data(), secret.size());
    return ok ? std::optional(pair) : std::nullopt;
}

std::optional<QByteArray> sign(const QByteArray& message, const QByteArray& seed) {
    QByteArray publicKey;
    SecretKey secret;
    QByteArray signature(Size, '\0');
    const bool ok =
        expand(seed, publicKey, secret) &&
        crypto_sign_detached(bytesOf(signature), nullptr, bytesOf(message), lengthOf(message), secret.data()) == 0;
    sodium_memzero(secret.data(), secret.size());
    return ok ? std::optional(signature) : std::nullopt;
}

bool verify(const QByteArray& message, const QByteArray& signature, const QByteArray& publicKey) {
    return ready() && signature.size() == Size && publicKey.size() == KeySize &&
           crypto_sign_verify_detached(bytesOf(signature), bytesOf(message), lengthOf(message), bytesOf(publicKey)) ==
               0;
}

QByteArray keyText(const QByteArray& key) {
    return key.toHex() + '\n';
}

QByteArray keyFromText(const QByteArray& text) {
    const QByteArray digits = text.trimmed();
    const QByteArray key = QByteArray::fromHex(digits);
    return key.size() == KeySize && key.toHex() == digits.toLower() ? key : QByteArray();
}

} // namespace Signature
