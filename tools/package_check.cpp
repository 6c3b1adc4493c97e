#include "tools/package_check.h"

#include "common/update/component_plan.h"
#include "common/update/fpga_datagram.h"
#include "common/update/fpga_image.h"
#include "common/update/fpga_trailer.h"
#include "common/update/fpga_update_job.h"
#include "common/update/package_installer.h"
#include "common/update/package_trust.h"
#include "common/update/process_run.h"
#include "common/update/signature.h"
#include "platform/devicepaths.h"
#include "tools/console.h"
#include "tools/package_sign.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

namespace {

QStringList textProblems(const QJsonObject& object, const QStringList& keys, const QString& where) {
    QStringList problems;
    for (auto entry = object.begin(); entry != object.end(); ++entry) {
        if (entry.key() == "components" && where.isEmpty())
            continue;
        if (!keys.contains(entry.key()))
            problems << QStringLiteral("%1\"%2\" is no key of a manifest").arg(where, entry.key());
        else if (entry.key() == "release" ? !entry.value().isDouble() : !entry.value().isString())
            problems << QStringLiteral("%1\"%2\" is no %3")
                            .arg(where, entry.key(), entry.key() == "release" ? "number" : "text");
    }
    return problems;
}

QStringList jsonProblems(const QString& manifestPath) {
    QByteArray bytes;
    const QString problem = Console::readFile(manifestPath, LargestManifest, bytes);
    if (!problem.isEmpty())
        return {problem};
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
    if (!document.isObject()) {
        return {QStringLiteral("%1 is no JSON object: %2 at byte %3")
                    .arg(manifestPath, error.errorString())
                    .arg(error.offset)};
    }
    const QJsonObject object = document.object();
    QStringList problems = textProblems(
        object, {"manifest_version", "name", "version", "description", "package", "package_sha256", "release", "model"},
        "");
    const QJsonValue components = object.value("components");
    if (!components.isUndefined() && !components.isArray())
        problems << QStringLiteral("\"components\" is no list");
    int number = 0;
    for (const QJsonValue& component : components.toArray())
        problems << textProblems(component.toObject(), {"type", "name", "action", "destination"},
                                 QStringLiteral("component %1: ").arg(++number));
    return problems;
}

QString unpackTo(const QTemporaryDir& folder, const QString& package) {
    if (!folder.isValid())
        return folder.errorString();
    const ProcessResult tar =
        runProcess("env", {"LC_ALL=C", "tar", "-zxf", package, "-C", folder.path()}, InstallSettings().startTimeoutMs);
    if (!tar.ok)
        return QStringLiteral("%1 cannot be unpacked: %2").arg(package, tar.output);
    // tar takes what leads out of the folder as something else, and says so on the way.
    if (tar.output.contains("Removing leading"))
        return QStringLiteral("%1 holds names that lead out of it: %2").arg(package, tar.output);
    return {};
}

QString componentProblem(const MANIFEST_DATA_COMPONENT& component, const QString& scratch) {
    const ComponentPlan plan = planComponent(component, scratch);
    if (!plan.known)
        return QStringLiteral("%1: \"%2\"").arg(plan.failure, plan.subject);
    if (!plan.refusal.isEmpty())
        return QStringLiteral("not carried out: %1").arg(plan.refusal);
    if (plan.isCommand)
        return component.name.trimmed().isEmpty() ? QStringLiteral("its command is empty") : QString();
    const bool copiesFolder = component.action == "copy" && component.type == "dir";
    if (copiesFolder && !component.name.endsWith("/.") && !component.destination.endsWith("/.")) {
        return QStringLiteral("\"%1\" becomes %2 or goes into it, as that is there or not: end the name or the "
                              "destination in \"/.\"")
            .arg(component.name, component.destination);
    }
    const QFileInfo target(patchFolder(scratch) + '/' + component.name);
    if (component.type == "file" ? !target.isFile() : !target.isDir())
        return QStringLiteral("the package holds no %1 \"%2\"").arg(component.type, component.name);
    if (component.action == "copy" && !component.destination.startsWith('/'))
        return QStringLiteral("its destination \"%1\" is no absolute path").arg(component.destination);
    return {};
}

QStringList softwareProblems(const MANIFEST_DATA& manifest) {
    const QTemporaryDir scratch;
    const QString problem = unpackTo(scratch, manifest.package_path);
    if (!problem.isEmpty())
        return {problem};
    QStringList problems;
    bool rebooted = false;
    for (std::size_t i = 0; i < manifest.components.size(); ++i) {
        const MANIFEST_DATA_COMPONENT& component = *manifest.components[i];
        const QString wrong =
            rebooted ? QStringLiteral("stands behind the reboot") : componentProblem(component, scratch.path());
        if (!wrong.isEmpty())
            problems << QStringLiteral("component %1: %2").arg(i + 1).arg(wrong);
        rebooted = rebooted || planComponent(component, scratch.path()).reboots;
    }
    return problems;
}

QStringList imageProblems(const MANIFEST_DATA& manifest) {
    QByteArray image;
    const QString problem = Console::readFile(manifest.package_path, FpgaWire::LargestImage + FpgaTrailer::Size, image);
    if (!problem.isEmpty())
        return {problem};
    const FpgaImageCheck check = checkFpgaImage(image);
    if (!check.ok)
        return {manifest.package_path + ": " + check.line};
    if (image.size() == FpgaTrailer::Size)
        return {manifest.package_path + ": there is nothing but the trailer"};
    return {};
}

QStringList packageProblems(const MANIFEST_DATA& manifest) {
    if (manifest.version.isEmpty())
        return {QStringLiteral("there is no version")};
    if (manifest.package.isEmpty() || manifest.package.contains('/'))
        return {QStringLiteral("\"package\" is to name a file beside the manifest")};
    const QFileInfo package(manifest.package_path);
    if (!package.isFile() || package.size() == 0)
        return {QStringLiteral("%1 is no file, or empty").arg(manifest.package_path)};
    QString hash;
    const QString unread = hashOf(manifest.package_path, hash);
    if (!unread.isEmpty())
        return {unread};
    if (!manifest.package_sha256.isEmpty() && manifest.package_sha256.toLower() != hash)
        return {QStringLiteral("\"package_sha256\" is not the hash of %1").arg(manifest.package_path)};
    switch (packageType(manifest.name)) {
    case PackageType::Software:
        return softwareProblems(manifest);
    case PackageType::Fpga:
        return imageProblems(manifest);
    case PackageType::Module:
        return {};
    case PackageType::Unknown:
        break;
    }
    return {QStringLiteral("the name \"%1\" is of no known kind of package").arg(manifest.name)};
}

QString stepOf(const MANIFEST_DATA_COMPONENT& component, const QString& deviceScratch, const QString& unpacked) {
    const ComponentPlan onDevice = planComponent(component, deviceScratch);
    const QString refusal = planComponent(component, unpacked).refusal;
    if (!onDevice.known)
        return QStringLiteral("%1: %2%3").arg(onDevice.failure, onDevice.subject, onDevice.stops ? "; stops here" : "");
    if (!refusal.isEmpty())
        return QStringLiteral("not run, %1: %2").arg(refusal, onDevice.command);
    if (onDevice.reboots)
        return QStringLiteral("rm -rf %1, then %2").arg(patchFolder(deviceScratch), onDevice.command);
    return onDevice.command + (onDevice.stops ? "   (a failure stops the installation)" : "");
}

QStringList softwareSteps(const MANIFEST_DATA& manifest) {
    const QString scratch = InstallSettings().scratchFolder;
    QStringList steps{QStringLiteral("copy the package to the instrument and check the copy"),
                      QStringLiteral("remove %1 and make it anew").arg(scratch),
                      QStringLiteral("unpack %1 into it").arg(manifest.package)};
    const QTemporaryDir unpacked;
    const QString problem = unpackTo(unpacked, manifest.package_path);
    if (!problem.isEmpty())
        return steps << problem;
    for (const auto& component : manifest.components)
        steps << stepOf(*component, scratch, unpacked.path());
    return steps;
}

} // namespace

QStringList checkPackage(const QString& manifestPath, const QByteArray& publicKey) {
    QStringList problems = jsonProblems(manifestPath);
    if (!problems.isEmpty())
        return problems;
    const fwData data({manifestPath});
    const MANIFEST_DATA& manifest = *data.manifests().front();
    problems = packageProblems(manifest);
    if (!manifest.signature.isNull() || !publicKey.isEmpty()) {
        const QString missing = missingForSigning(manifest);
        if (!missing.isEmpty())
            problems << missing;
    }
    if (!publicKey.isEmpty() && manifest.signature.isNull())
        problems << QStringLiteral("it is not signed");
    else if (!publicKey.isEmpty() && !Signature::verify(manifest.bytes, manifest.signature, publicKey))
        problems << QStringLiteral("it is not signed with this key");
    return problems;
}

QStringList describePackage(const QString& manifestPath) {
    const fwData data({manifestPath});
    const MANIFEST_DATA& manifest = *data.manifests().front();
    QString hash;
    if (!hashOf(manifest.package_path, hash).isEmpty())
        return {};
    QStringList lines{QStringLiteral("%1: %2 bytes, SHA-256 %3")
                          .arg(manifest.package)
                          .arg(QFileInfo(manifest.package_path).size())
                          .arg(hash)};
    if (manifest.signature.isNull())
        lines << QStringLiteral("not signed");
    else
        lines << QStringLiteral("signed, release %1 for %2").arg(manifest.release).arg(manifest.model);
    return lines;
}

QStringList listPackage(const QString& manifestPath) {
    const fwData data({manifestPath});
    const MANIFEST_DATA& manifest = *data.manifests().front();
    switch (packageType(manifest.name)) {
    case PackageType::Software:
        return softwareSteps(manifest);
    case PackageType::Fpga:
        return {QStringLiteral("copy the package to the instrument and check the copy"),
                QStringLiteral("check the trailer of %1").arg(manifest.package),
                QStringLiteral("send the image to the boards of the channels, of %1, port %2")
                    .arg(DevicePaths::fpgaAddresses().join(", "))
                    .arg(FpgaUpdateSettings().port),
                QStringLiteral("wait until each has burnt and verified it")};
    case PackageType::Module:
        return {QStringLiteral("copy the package to the instrument and check the copy"),
                QStringLiteral("copy %1 to %2").arg(manifest.package, DevicePaths::moduleDropFolder()),
                QStringLiteral("ask the RF module to update itself")};
    case PackageType::Unknown:
        break;
    }
    return {QStringLiteral("nothing: the name \"%1\" is of no known kind of package").arg(manifest.name)};
}
