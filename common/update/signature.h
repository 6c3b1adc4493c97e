#pragma once

#include <QByteArray>
#include <optional>

/// Ed25519 signatures of update packages. All keys are raw bytes; keyText() is what stands in a file. Any thread.
namespace Signature {

inline constexpr int Size = 64;
inline constexpr int KeySize = 32; ///< of a public key, and of the seed that a key pair is made of

struct KeyPair {
    QByteArray seed; ///< whoever has it can sign
    QByteArray publicKey;
};

/// A new pair from the system's random numbers; nothing when the library cannot be started.
[[nodiscard]] std::optional<KeyPair> makeKeyPair();

/// The pair of a seed; nothing when it has not KeySize bytes.
[[nodiscard]] std::optional<KeyPair> keyPairOf(const QByteArray& seed);

/// The Size bytes of a signature; nothing for a seed that is none.
[[nodiscard]] std::optional<QByteArray> sign(const QByteArray& message, const QByteArray& seed);

/// False for a signature or key of any other length too.
[[nodiscard]] bool verify(const QByteArray& message, const QByteArray& signature, const QByteArray& publicKey);

/// A key as a file has it: 64 hexadecimal digits and a line end.
QByteArray keyText(const QByteArray& key);

/// The key in such a text, blanks and line ends around it aside; empty when it is none.
QByteArray keyFromText(const QByteArray& text);

} // namespace Signature
