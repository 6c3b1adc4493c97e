#include "portable/update/update_staging.h"

#include "common/update/package_trust.h"
#include "portable/widgets/boxes.h"

namespace Kavor::HandheldGui {

namespace {

/// What the user reads when a package could not be made ready, and the same in a few words.
struct Told {
    QString box;
    QString end;
};

Told whatHappened(PackageStaging::Result result, const QString& why, const QString& notFound) {
    switch (result) {
    case PackageStaging::Result::Ok:
        break;
    case PackageStaging::Result::NoPackage:
        return {notFound, {}};
    case PackageStaging::Result::NoRoom:
        return {QStringLiteral("There is no room for the package on the instrument:\n%1.").arg(why),
                QStringLiteral("not begun: no room for the package")};
    case PackageStaging::Result::NotCopied:
        return {
            QStringLiteral("The package could not be copied to the instrument:\n%1.\nNothing was installed.").arg(why),
            QStringLiteral("not begun: the package could not be copied")};
    case PackageStaging::Result::Changed:
        return {QStringLiteral("The medium gave another manifest than the one that you were asked about.\n"
                               "Nothing was installed."),
                QStringLiteral("not begun: the manifest changed")};
    case PackageStaging::Result::Damaged:
        return {QStringLiteral("The package is not the one that its manifest describes: it is damaged, or was "
                               "exchanged.\nNothing was installed."),
                QStringLiteral("not begun: the package is damaged")};
    }
    return {};
}

} // namespace

StagedPackage stagePackage(MANIFEST_DATA& package, const QString& model, const QString& notFound, QWidget* parent,
                           const UpdateBoxes& boxes, const UpdateSettings& settings) {
    const Trust trust = readTrust(settings.trust);
    settings.memory.remember(trust); // what cannot be written is told of with the update's end
    const UpdatePolicy policy = settings.memory.policyInForce(trust);
    const InstrumentFacts facts{model, settings.memory.installedRelease(packageType(package.name))};
    package.seal = sealOf(package, trust.keys);
    const Verdict verdict = judge(package, policy, facts);
    if (verdict.what == Verdict::Refuse) {
        boxes.failure(verdict.why + QStringLiteral("\nThis instrument does not install it."));
        return {};
    }
    if (verdict.what == Verdict::Ask &&
        !confirmAction(parent, verdict.why, QStringLiteral("Install it all the same?"), Answer::Destroys))
        return {};
    auto copies = std::make_unique<PackageStaging>(settings.stagingParent);
    PackageStaging::Result result = PackageStaging::Result::NotCopied;
    boxes.runAside(
        QStringLiteral("Copying the package..."),
        [&](const UpdateBoxes::Percent& tell) { result = copies->stage(package, trust.keys, tell); },
        QStringLiteral("Leave the stick in its place"));
    // What the user was not asked about must not have come in with the copies.
    if (result == PackageStaging::Result::Ok) {
        const Verdict again = judge(copies->manifest(), policy, facts);
        if (again.what != Verdict::Install && again.why != verdict.why)
            result = PackageStaging::Result::Changed;
    }
    if (result == PackageStaging::Result::Ok)
        return {std::move(copies), {}};
    const Told told = whatHappened(result, copies->why(), notFound);
    copies.reset();
    boxes.failure(told.box);
    return {nullptr, told.end};
}

} // namespace Kavor::HandheldGui
