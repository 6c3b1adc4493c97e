#include "rig/updatestick.h"

#include "common/update/fpga_image.h"
#include "common/update/fpga_trailer.h"
#include "common/update/signature.h"

#include <QDir>
#include <unistd.h>

namespace {

// Everything but the reboot is carried out, as the user of the test.
const QByteArray Sudo = "#!/bin/sh\necho \"$@\" >>\"$VELDA_TEST_SUDO_LOG\"\n[ \"$1\" = reboot ] || exec \"$@\"\n";

} // namespace

UpdateStick::UpdateStick() {
    putProgram("bin/sudo", Sudo);
    QDir().mkpath(at("media/tester"));
    set("PATH", QFile::encodeName(at("bin")) + ':' + qgetenv("PATH"));
    set("VELDA_TEST_SUDO_LOG", QFile::encodeName(at("sudo.log")));
    set("VELDA_HOME", QFile::encodeName(at("home")));
    set("VELDA_MEDIA", QFile::encodeName(at("media")));
    set("VELDA_USER", "tester");
    set("VELDA_UPDATE_TRUST", QFile::encodeName(at("trust")));
}

UpdateStick::~UpdateStick() {
    for (auto it = m_before.constBegin(); it != m_before.constEnd(); ++it) {
        if (it.value().isNull())
            qunsetenv(it.key().constData());
        else
            qputenv(it.key().constData(), it.value());
    }
}

void UpdateStick::set(const char* variable, const QByteArray& value) {
    m_before.insert(variable, qgetenv(variable));
    qputenv(variable, value);
}

void UpdateStick::build(PackageRequest request, PackageType type, const QString& name, const QString& version) const {
    request.type = type;
    request.version = version;
    request.output = package(name);
    request.signing = signing;
    const QStringList problems = buildPackage(request);
    if (!problems.isEmpty())
        qFatal("%s", qPrintable(problems.join("; ")));
}

void UpdateStick::addSoftware(const QString& name, const QString& version, const QStringList& components,
                              const QString& manifestName) {
    put("source/" + name + "/app", "the application");
    PackageRequest request;
    request.name = manifestName;
    request.source = at("source/" + name);
    for (QString component : components) {
        const QStringList words = component.replace("%D", path()).split('|');
        request.components << MANIFEST_DATA_COMPONENT{words.value(0), words.value(1), words.value(2), words.value(3)};
    }
    build(request, PackageType::Software, name, version);
}

void UpdateStick::addFpga(const QString& name, const QString& version, const QByteArray& image) {
    FpgaTrailer trailer;
    trailer.design = FpgaDesign;
    put("source/" + name + ".img", withFpgaTrailer(image, trailer));
    PackageRequest request;
    request.source = at("source/" + name + ".img");
    build(request, PackageType::Fpga, name, version);
}

void UpdateStick::addModule(const QString& name, const QString& version, const QByteArray& bytes) {
    put("source/" + name + ".bin", bytes);
    PackageRequest request;
    request.source = at("source/" + name + ".bin");
    build(request, PackageType::Module, name, version);
}

void UpdateStick::spoil(const QString& name, const QString& file, const QByteArray& bytes) const {
    put("media/tester/" + name + '/' + file, bytes);
    const QString manifest = "media/tester/" + name + "/Manifest";
    put(manifest, contentOf(manifest).replace("package_sha256", "former_sha256"));
}

void UpdateStick::trust(const QByteArray& publicKey, const QByteArray& policy) const {
    put(QStringLiteral("trust/") + KeyFiles[0], Signature::keyText(publicKey));
    if (policy.isEmpty())
        QFile::remove(at(QStringLiteral("trust/") + PolicyFile));
    else
        put(QStringLiteral("trust/") + PolicyFile, policy + '\n');
}

TrustSettings UpdateStick::trustSettings() const {
    TrustSettings settings;
    settings.owner = ::geteuid();
    return settings;
}

QStringList UpdateStick::sudoed() const {
    return QString::fromUtf8(contentOf("sudo.log")).replace(path(), "%D").split('\n', Qt::SkipEmptyParts);
}
