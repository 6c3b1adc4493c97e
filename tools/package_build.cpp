#include "tools/package_build.h"

#include "common/update/package_installer.h"
#include "common/update/process_run.h"
#include "tools/console.h"
#include "tools/package_check.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QVector>

namespace {

QString shortestName(PackageType type) {
    return type == PackageType::Software ? "FW" : type == PackageType::Fpga ? "FPGA" : "NMX";
}

QString problemOf(const PackageRequest& request, const QString& name) {
    if (packageType(name) != request.type)
        return QStringLiteral("the instrument would not take a package named \"%1\" for one of this kind").arg(name);
    if (!QRegularExpression("^[A-Za-z0-9][A-Za-z0-9._+-]*$").match(request.version).hasMatch())
        return QStringLiteral("the version is to be letters, digits and \". _ + -\"");
    if (!QRegularExpression("^[A-Za-z0-9][A-Za-z0-9._+-]*$").match(name).hasMatch())
        return QStringLiteral("the name is to be letters, digits and \". _ + -\"");
    const QFileInfo source(request.source);
    if (request.type == PackageType::Software ? !source.isDir() : !source.isFile())
        return QStringLiteral("%1 is no %2")
            .arg(request.source, request.type == PackageType::Software ? "folder" : "file");
    const QString output = QDir(request.output).absolutePath() + '/';
    if (output.startsWith(source.absoluteFilePath() + '/'))
        return QStringLiteral("%1 lies in the folder that is packed").arg(request.output);
    if (QFileInfo::exists(output + "Manifest"))
        return QStringLiteral("%1 holds a manifest already").arg(request.output);
    if (!QDir().mkpath(output))
        return QStringLiteral("%1 cannot be created").arg(request.output);
    return {};
}

QString writePackage(const PackageRequest& request, const QString& path) {
    if (request.type != PackageType::Software) {
        return QFile::copy(request.source, path)
                   ? QString()
                   : QStringLiteral("%1 cannot be copied to %2").arg(request.source, path);
    }
    // The whole folder becomes "patch"; targets of symbolic links stay as they are (S).
    const ProcessResult tar = runProcess("tar",
                                         {"-czf", path, "-C", request.source, "--owner=0", "--group=0",
                                          "--numeric-owner", "--sort=name", "--transform=s,^\\.,patch,S", "."},
                                         InstallSettings().startTimeoutMs);
    return tar.ok ? QString() : QStringLiteral("tar failed: %1").arg(tar.output);
}

QByteArray manifestText(const PackageRequest& request, const QString& name, const QString& package,
                        const QString& hash) {
    QJsonObject manifest{{"manifest_version", "1"},    {"name", name},
                         {"version", request.version}, {"description", request.description},
                         {"package", package},         {"package_sha256", hash}};
    if (request.signing.release > 0)
        manifest.insert("release", request.signing.release);
    if (!request.signing.model.isEmpty())
        manifest.insert("model", request.signing.model);
    QJsonArray components;
    for (const MANIFEST_DATA_COMPONENT& component : request.components) {
        components.append(QJsonObject{{"type", component.type},
                                      {"name", component.name},
                                      {"action", component.action},
                                      {"destination", component.destination}});
    }
    if (!components.isEmpty())
        manifest.insert("components", components);
    return QJsonDocument(manifest).toJson();
}

} // namespace

QStringList buildPackage(const PackageRequest& request) {
    const QString name = request.name.isEmpty() ? shortestName(request.type) : request.name;
    QString problem = problemOf(request, name);
    if (!problem.isEmpty())
        return {problem};
    const QString package = request.type == PackageType::Software ? name + '-' + request.version + ".tar.gz"
                                                                  : QFileInfo(request.source).fileName();
    const QString manifestPath = QDir(request.output).absoluteFilePath("Manifest");
    const QString packagePath = QDir(request.output).absoluteFilePath(package);
    if (QFileInfo::exists(packagePath))
        return {QStringLiteral("%1 is there already").arg(packagePath)};
    QString hash;
    problem = writePackage(request, packagePath);
    if (problem.isEmpty())
        problem = hashOf(packagePath, hash);
    if (problem.isEmpty())
        problem = Console::writeFile(manifestPath, manifestText(request, name, package, hash));
    if (problem.isEmpty() && !request.signing.seed.isEmpty())
        problem = signPackage(manifestPath, request.signing);
    QStringList problems = problem.isEmpty() ? checkPackage(manifestPath) : QStringList{problem};
    if (!problems.isEmpty()) {
        QFile::remove(packagePath);
        QFile::remove(manifestPath);
        removeSignatureOf(manifestPath);
    }
    return problems;
}
