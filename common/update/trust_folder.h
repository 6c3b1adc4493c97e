#pragma once

#include "platform/devicepaths.h"

#include <QByteArray>
#include <QVector>
#include <sys/types.h>

/// What becomes of a package that is not signed as it should be, from the weakest to the strictest.
enum class UpdatePolicy { AllowUnsigned, Warn, Require };

/// The folder that says whom the panel trusts. The panel only reads it.
struct TrustSettings {
    QString folder = DevicePaths::updateTrustFolder();
    uid_t owner = 0; ///< to whom folder and files must belong
};

struct Trust {
    UpdatePolicy policy = UpdatePolicy::AllowUnsigned;
    bool isStated = false;    ///< by a policy file, or by something that must count as one
    QVector<QByteArray> keys; ///< public keys, at most two
};

/// The policy file holds one of "allow-unsigned", "warn" and "require".
inline constexpr char PolicyFile[] = "policy";

/// The public keys, each a text as of Signature::keyText().
inline constexpr const char* KeyFiles[] = {"update-1.pub", "update-2.pub"};

/// Reads the folder. Without the folder, or without a policy file in it, nothing is stated and unsigned packages are
/// allowed. A folder or policy file that is a link, belongs to somebody else, may be written by others than its owner,
/// cannot be read or says something else counts as Require. A key file of which one of these is true is not used.
/// Blocks for a few reads of small files; any thread.
[[nodiscard]] Trust readTrust(const TrustSettings& settings);
