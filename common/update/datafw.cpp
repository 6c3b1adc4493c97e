#include "common/update/datafw.h"

#include "common/update/signature.h"
#include "platform/logger.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <stdexcept>

namespace {

// A signature is small; one that is there and cannot be read is a wrong one.
QByteArray readSignature(const QString& path) {
    const QFileInfo info(path);
    if (!info.exists() && !info.isSymLink())
        return {};
    QFile file(path);
    QByteArray bytes;
    if (info.isFile() && file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        bytes = file.read(Signature::Size + 1);
    return bytes.isEmpty() ? QByteArray("") : bytes; // not null: there is one
}

// A stick may hold anything under this name: a pipe would block the reading, a huge file fill the memory.
QByteArray readBounded(const QString& path) {
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        VELDA_LOG("update", QtInfoMsg, "no manifest can be opened at %s", path);
        return {};
    }
    QByteArray bytes;
    while (bytes.size() <= LargestManifest) {
        const QByteArray piece = file.read(LargestManifest + 1 - bytes.size());
        if (file.error() != QFileDevice::NoError)
            throw std::runtime_error(file.errorString().toStdString());
        if (piece.isEmpty())
            return bytes;
        bytes += piece;
    }
    VELDA_LOG("update", QtInfoMsg, "the manifest %s is too large", path);
    return {};
}

template <typename Record>
struct Text {
    const char* key;
    QString Record::*field;
};

constexpr Text<MANIFEST_DATA> ManifestTexts[] = {
    {"manifest_version", &MANIFEST_DATA::manifest_version},
    {"name", &MANIFEST_DATA::name},
    {"version", &MANIFEST_DATA::version},
    {"description", &MANIFEST_DATA::description},
    {"package", &MANIFEST_DATA::package},
    {"package_sha256", &MANIFEST_DATA::package_sha256},
    {"model", &MANIFEST_DATA::model},
};

constexpr Text<MANIFEST_DATA_COMPONENT> ComponentTexts[] = {
    {"name", &MANIFEST_DATA_COMPONENT::name},
    {"type", &MANIFEST_DATA_COMPONENT::type},
    {"action", &MANIFEST_DATA_COMPONENT::action},
    {"destination", &MANIFEST_DATA_COMPONENT::destination},
};

template <typename Record, std::size_t N>
void takeTexts(const QJsonObject& object, const Text<Record> (&texts)[N], Record& record) {
    for (const Text<Record>& text : texts)
        record.*text.field = object.value(QLatin1String(text.key)).toString();
}

} // namespace

PackageType packageType(const QString& name) {
    constexpr struct {
        const char* word;
        PackageType type;
    } Types[] = {{"FW", PackageType::Software}, {"FPGA", PackageType::Fpga}, {"NMX", PackageType::Module}};
    for (const auto& row : Types) {
        if (name.contains(QLatin1String(row.word)))
            return row.type;
    }
    return PackageType::Unknown;
}

std::unique_ptr<MANIFEST_DATA> manifestFromJson(const QByteArray& json, const QString& folder) {
    const QJsonObject object = QJsonDocument::fromJson(json).object();
    auto manifest = std::make_unique<MANIFEST_DATA>();
    takeTexts(object, ManifestTexts, *manifest);
    manifest->release = std::max(object.value(QLatin1String("release")).toInt(), 0);
    manifest->bytes = json;
    manifest->package_path = folder + '/' + manifest->package;
    const QJsonArray components = object.value(QLatin1String("components")).toArray();
    for (const QJsonValue& element : components) {
        auto component = std::make_unique<MANIFEST_DATA_COMPONENT>();
        takeTexts(element.toObject(), ComponentTexts, *component);
        manifest->components.push_back(std::move(component));
    }
    return manifest;
}

fwData::fwData(const QStringList& manifestPaths) {
    init_cmd_config(manifestPaths);
}

void fwData::init_cmd_config(const QStringList& manifestPaths) {
    for (const QString& path : manifestPaths) {
        try {
            auto manifest = manifestFromJson(readBounded(path), QFileInfo(path).absolutePath());
            manifest->manifest_path = path;
            manifest->signature = readSignature(signaturePath(path));
            m_manifests.push_back(std::move(manifest));
        } catch (const std::exception& error) {
            throw std::runtime_error("Error reading fw file " + path.toStdString() + ": " + error.what());
        }
    }
}

std::unique_ptr<MANIFEST_DATA> fwData::takeFirst() {
    auto first = std::move(m_manifests.front());
    m_manifests.erase(m_manifests.begin());
    return first;
}
