#pragma once

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

/// A folder that lasts as long as this, and short ways to put files there.
class TestFolder {
public:
    QString path() const { return m_dir.path(); }
    QString at(const QString& name) const { return QDir(path()).absoluteFilePath(name); }

    /// Writes a file with its folders; returns its path.
    QString put(const QString& name, const QByteArray& bytes) const {
        QFile file(at(name));
        QDir().mkpath(QFileInfo(file).path());
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("%s cannot be written.", qPrintable(name));
        return file.fileName();
    }

    QString putProgram(const QString& name, const QByteArray& text) const {
        const QString path = put(name, text);
        if (!QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner))
            qFatal("%s cannot be made executable.", qPrintable(name));
        return path;
    }

    QByteArray contentOf(const QString& name) const {
        QFile file(at(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private:
    QTemporaryDir m_dir;
};
