#include "lists/lists_ops.h"

#include "lists/list_config.h"
#include "lists/list_content.h"
#include "platform/durable_file.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>

namespace {

const QString& suffix() {
    static const QString text = QStringLiteral(".json");
    return text;
}

bool fail(QString& error, const char* sentence) {
    error = QLatin1String(sentence);
    return false;
}

} // namespace

QString ListsOps::channelDirectory(unsigned int channel) const {
    return QDir(m_base).filePath(QString::number(quint64{channel} + 1));
}

QString ListsOps::normalizedFilename(const QString& name) const {
    const QString trimmed = name.trimmed();
    const QString file = trimmed.mid(trimmed.lastIndexOf(QLatin1Char('/')) + 1);
    return file.endsWith(suffix(), Qt::CaseInsensitive) ? file : file + suffix();
}

QString ListsOps::filePath(const QString& name, unsigned int channel) const {
    return QDir(channelDirectory(channel)).filePath(normalizedFilename(name));
}

// A row of the browser stands for one file, whatever somebody has named it: " a.json" is not "a.json" then.
QString ListsOps::pathOf(const QString& name, unsigned int channel) const {
    const QString file = normalizedFilename(name);
    if (file != name && !name.contains(QLatin1Char('/')) && name.endsWith(suffix(), Qt::CaseInsensitive)) {
        QString asItStands = QDir(channelDirectory(channel)).filePath(name);
        if (QFileInfo(asItStands).isFile())
            return asItStands;
    }
    return filePath(name, channel);
}

bool ListsOps::ensureChannelDirectory(unsigned int channel, QString& error) const {
    if (m_base.isEmpty())
        return fail(error, "List base directory is empty");
    if (!DurableFile::makeFolder(channelDirectory(channel)))
        return fail(error, "Failed to create list directory");
    return true;
}

bool ListsOps::exists(const QString& name, unsigned int channel) const {
    return QFileInfo::exists(pathOf(name, channel));
}

bool ListsOps::erase(const QString& name, unsigned int channel, QString& error) const {
    if (!exists(name, channel))
        return fail(error, "List file does not exist");
    if (!QFile::remove(pathOf(name, channel)))
        return fail(error, "Failed to delete list file");
    return true;
}

bool ListsOps::enumerate(unsigned int channel, QStringList& names, QString& error) const {
    names.clear();
    if (!ensureChannelDirectory(channel, error))
        return false;
    names = QDir(channelDirectory(channel))
                .entryList({QLatin1Char('*') + suffix()}, QDir::Files | QDir::Hidden, QDir::Name);
    return true;
}

bool ListsOps::save(const QString& name, unsigned int channel, const IListConfig& list, QString& error) const {
    const QString file = normalizedFilename(name);
    if (file.chopped(suffix().size()).trimmed().isEmpty())
        return fail(error, "Filename is empty");
    if (!ensureChannelDirectory(channel, error))
        return false;
    return ListContent::writeFile(pathOf(name, channel), list.toJson(), list.jsonRootName(), error);
}

bool ListsOps::load(const QString& name, unsigned int channel, IListConfig& list, QString& error) const {
    QJsonArray steps;
    return ListContent::readFile(pathOf(name, channel), list.jsonRootName(), steps, error) &&
           list.fromJson(steps, error);
}
