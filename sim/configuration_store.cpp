#include "sim/configuration_store.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSaveFile>
#include <cstring>

namespace Sim {
namespace {

constexpr char ChannelsKey[] = "channels";

QByteArray encoded(const Records& records) {
    QJsonArray channels;
    for (const ChannelRecord& record : records) {
        const QByteArray bytes(reinterpret_cast<const char*>(&record), sizeof record);
        channels.append(QString::fromLatin1(bytes.toBase64()));
    }
    return QJsonDocument(QJsonObject{{ChannelsKey, channels}}).toJson();
}

std::optional<Records> decoded(const QByteArray& text) {
    Records records;
    const QJsonArray channels = QJsonDocument::fromJson(text).object().value(ChannelsKey).toArray();
    for (const QJsonValue& channel : channels) {
        const QByteArray bytes = QByteArray::fromBase64(channel.toString().toLatin1());
        ChannelRecord record{};
        if (bytes.size() != static_cast<int>(sizeof record))
            return std::nullopt;
        std::memcpy(&record, bytes.constData(), sizeof record);
        records.push_back(record);
    }
    return records.empty() || records.size() > MaxChannels ? std::nullopt : std::optional<Records>(records);
}

} // namespace

ConfigurationStore::ConfigurationStore(const QString& folder) : m_folder(folder) {}

bool ConfigurationStore::isName(const QString& name) {
    static const QRegularExpression pattern("^(?!\\.)[A-Za-z0-9._-]{1,31}$");
    return name != "0" && pattern.match(name).hasMatch();
}

QString ConfigurationStore::fileOf(const QString& name) const {
    return QDir(m_folder).filePath("preset-" + name + ".json");
}

bool ConfigurationStore::store(const QString& name, const Records& records, QString& error) {
    if (m_folder.isEmpty()) {
        m_inMemory.insert(name, encoded(records));
        return true;
    }
    QSaveFile file(fileOf(name));
    const QByteArray text = encoded(records);
    const bool saved =
        QDir().mkpath(m_folder) && file.open(QIODevice::WriteOnly) && file.write(text) == text.size() && file.commit();
    if (!saved)
        error = QString("Configuration %1 cannot be stored: %2").arg(name, file.errorString());
    return saved;
}

std::optional<Records> ConfigurationStore::recall(const QString& name, QString& error) const {
    QByteArray text = m_inMemory.value(name);
    if (!m_folder.isEmpty()) {
        QFile file(fileOf(name));
        text = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    std::optional<Records> records = decoded(text);
    if (!records)
        error =
            text.isEmpty() ? QString("No configuration %1").arg(name) : QString("Damaged configuration %1").arg(name);
    return records;
}

bool ConfigurationStore::clear(const QString& name, QString& error) {
    const bool cleared = m_folder.isEmpty() ? m_inMemory.remove(name) > 0 : QFile::remove(fileOf(name));
    if (!cleared)
        error = QString("No configuration %1").arg(name);
    return cleared;
}

} // namespace Sim
