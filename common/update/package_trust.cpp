#include "common/update/package_trust.h"

#include "common/update/signature.h"

#include <algorithm>

namespace {

bool isHash(const QString& text) {
    const QByteArray digits = text.toLatin1();
    return digits.size() == 64 && QByteArray::fromHex(digits).toHex() == digits.toLower();
}

QString sealProblem(Seal seal) {
    switch (seal) {
    case Seal::Signed:
        break;
    case Seal::Unsigned:
        return QStringLiteral("This package is not signed.");
    case Seal::NotChecked:
        return QStringLiteral("The signature of this package cannot be checked: the instrument has no key.");
    case Seal::Broken:
        return QStringLiteral("The signature of this package is broken: it was changed, or signed by somebody else.");
    }
    return {};
}

QString problemOf(const MANIFEST_DATA& manifest, const InstrumentFacts& facts) {
    if (manifest.seal != Seal::Signed)
        return sealProblem(manifest.seal);
    if (facts.model.isEmpty())
        return QStringLiteral("The model of this instrument is not known; the package is for %1.").arg(manifest.model);
    if (manifest.model != facts.model)
        return QStringLiteral("This package is for %1 and not for %2.").arg(manifest.model, facts.model);
    if (manifest.release < facts.installedRelease)
        return QStringLiteral("This package is release %1: release %2 is installed.")
            .arg(manifest.release)
            .arg(facts.installedRelease);
    return {};
}

} // namespace

QString missingForSigning(const MANIFEST_DATA& manifest) {
    if (!isHash(manifest.package_sha256))
        return QStringLiteral("\"package_sha256\" is to be 64 hexadecimal digits");
    if (manifest.release < 1 || manifest.release > HighestRelease)
        return QStringLiteral("\"release\" is to be a number from 1 to %1").arg(HighestRelease);
    return manifest.model.isEmpty() ? QStringLiteral("there is no \"model\"") : QString();
}

Seal sealOf(const MANIFEST_DATA& manifest, const QVector<QByteArray>& keys) {
    if (manifest.signature.isNull())
        return Seal::Unsigned;
    if (keys.isEmpty())
        return Seal::NotChecked;
    const bool fits = std::any_of(keys.begin(), keys.end(), [&manifest](const QByteArray& key) {
        return Signature::verify(manifest.bytes, manifest.signature, key);
    });
    return fits && missingForSigning(manifest).isEmpty() ? Seal::Signed : Seal::Broken;
}

Verdict judge(const MANIFEST_DATA& manifest, UpdatePolicy policy, const InstrumentFacts& facts) {
    const QString problem = problemOf(manifest, facts);
    if (problem.isEmpty() || (policy == UpdatePolicy::AllowUnsigned && manifest.seal != Seal::Broken))
        return {};
    return {policy == UpdatePolicy::Require ? Verdict::Refuse : Verdict::Ask, problem};
}
