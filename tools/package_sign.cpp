#include "tools/package_sign.h"

#include "common/update/package_trust.h"
#include "common/update/signature.h"
#include "tools/console.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <fcntl.h>
#include <sys/stat.h>

namespace {

constexpr qint64 LargestKey = 256;

// The secret must not be readable for a moment, so the file is made with its permissions.
QString writeSecret(const QString& path, const QByteArray& text) {
    const int descriptor =
        ::open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
    QFile file;
    if (descriptor >= 0 && file.open(descriptor, QIODevice::WriteOnly, QFile::AutoCloseHandle) &&
        file.write(text) == text.size() && file.flush())
        return {};
    if (descriptor >= 0) // half a key; what was there before is not ours
        QFile::remove(path);
    return QStringLiteral("%1 cannot be written").arg(path);
}

} // namespace

QString writeKeyPair(const QString& path) {
    const QString publicPath = path + QStringLiteral(".pub");
    for (const QString& there : {path, publicPath}) {
        if (QFileInfo::exists(there))
            return QStringLiteral("%1 is there already").arg(there);
    }
    const auto pair = Signature::makeKeyPair();
    if (!pair)
        return QStringLiteral("no key can be made");
    QString problem = writeSecret(path, Signature::keyText(pair->seed));
    if (!problem.isEmpty())
        return problem;
    problem = Console::writeFile(publicPath, Signature::keyText(pair->publicKey));
    if (!problem.isEmpty())
        QFile::remove(path);
    return problem;
}

QString readKey(const QString& path, QByteArray& key) {
    QByteArray text;
    const QString problem = Console::readFile(path, LargestKey, text);
    if (!problem.isEmpty())
        return problem;
    key = Signature::keyFromText(text);
    return key.isEmpty() ? QStringLiteral("%1 holds no key").arg(path) : QString();
}

QString hashOf(const QString& path, QString& hash) {
    QFile file(path);
    QCryptographicHash sum(QCryptographicHash::Sha256);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly) || !sum.addData(&file) ||
        file.error() != QFileDevice::NoError)
        return QStringLiteral("%1 cannot be read").arg(path);
    hash = QString::fromLatin1(sum.result().toHex());
    return {};
}

QString signPackage(const QString& manifestPath, const Signing& signing) {
    QByteArray text;
    QString problem = Console::readFile(manifestPath, LargestManifest, text);
    if (!problem.isEmpty())
        return problem;
    QJsonObject object = QJsonDocument::fromJson(text).object();
    const QString folder = QFileInfo(manifestPath).absolutePath();
    QString hash;
    problem = hashOf(manifestFromJson(text, folder)->package_path, hash);
    if (!problem.isEmpty())
        return problem;
    object.insert("package_sha256", hash);
    if (signing.release > 0)
        object.insert("release", signing.release);
    if (!signing.model.isEmpty())
        object.insert("model", signing.model);
    const QByteArray bytes = QJsonDocument(object).toJson();
    problem = missingForSigning(*manifestFromJson(bytes, folder));
    if (!problem.isEmpty())
        return problem;
    const auto signature = Signature::sign(bytes, signing.seed);
    if (!signature)
        return QStringLiteral("the key cannot sign");
    removeSignatureOf(manifestPath); // a manifest without one is unsigned, one with an old one is broken
    problem = Console::writeFile(manifestPath, bytes);
    return problem.isEmpty() ? Console::writeFile(signaturePath(manifestPath), *signature) : problem;
}

void removeSignatureOf(const QString& manifestPath) {
    QFile::remove(signaturePath(manifestPath));
}
