#pragma once

#include "common/update/datafw.h"

/// Writes a new key pair: the secret key into a file that only its owner may read, the public one beside it with ".pub"
/// behind the name. Refuses where one of the two is there already. Returns why not, or nothing.
[[nodiscard]] QString writeKeyPair(const QString& path);

/// Reads a key that writeKeyPair wrote, secret or public. Returns why not, or nothing.
[[nodiscard]] QString readKey(const QString& path, QByteArray& key);

/// SHA-256 of a file as the manifest has it. Returns why not, or nothing.
[[nodiscard]] QString hashOf(const QString& path, QString& hash);

struct Signing {
    QByteArray seed; ///< of the secret key
    int release = 0; ///< 0 leaves the one that the manifest has
    QString model;   ///< empty leaves the one that the manifest has
};

/// Writes hash, release and model into the manifest of a package and its signature beside it. Returns why not, or
/// nothing; then the manifest is as it was.
[[nodiscard]] QString signPackage(const QString& manifestPath, const Signing& signing);

/// Removes a package's signature, if it has one.
void removeSignatureOf(const QString& manifestPath);
