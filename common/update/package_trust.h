#pragma once

#include "common/update/datafw.h"
#include "common/update/trust_folder.h"

/// The largest release counter.
inline constexpr int HighestRelease = 1000000000;

/// What the signature of a manifest is worth under these keys; reads nothing. A manifest that is signed and lacks a
/// hash, a release from 1 or a model is broken. Any thread.
[[nodiscard]] Seal sealOf(const MANIFEST_DATA& manifest, const QVector<QByteArray>& keys);

/// What a signed manifest must say beside its name and package; empty when it says all of it.
[[nodiscard]] QString missingForSigning(const MANIFEST_DATA& manifest);

/// What the instrument knows when a package is chosen.
struct InstrumentFacts {
    QString model;            ///< as the module's record has it; empty when nobody knows
    int installedRelease = 0; ///< of the package's kind; 0 when none was installed
};

struct Verdict {
    enum What { Install, Ask, Refuse };
    What what = Install;
    QString why; ///< a sentence for the user, when it is not to be installed at once
};

/// Whether a package may be installed. Under Require it must be signed, its release no lower than the installed one and
/// its model the instrument's own; under Warn the user is asked where it is not. Under AllowUnsigned only a broken
/// signature is asked about. The package's own bytes are not looked at here.
[[nodiscard]] Verdict judge(const MANIFEST_DATA& manifest, UpdatePolicy policy, const InstrumentFacts& facts);
