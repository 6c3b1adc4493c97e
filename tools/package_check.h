#pragma once

#include "common/update/datafw.h"

/// What is wrong with a package, one sentence each; empty when the instrument will take it as a whole. Stricter than
/// the instrument, which lists and skips much that no release should hold. With a public key the package must be signed
/// with its pair. Unpacks a software package to a temporary folder of its own. Blocks while tar runs.
[[nodiscard]] QStringList checkPackage(const QString& manifestPath, const QByteArray& publicKey = {});

/// What the package is: its file, size and SHA-256, and what its manifest says for the policy of the instrument.
[[nodiscard]] QStringList describePackage(const QString& manifestPath);

/// What an installation of a package would do, one step each, with the paths of the instrument. Nothing is run but the
/// unpacking that checkPackage does.
[[nodiscard]] QStringList listPackage(const QString& manifestPath);
