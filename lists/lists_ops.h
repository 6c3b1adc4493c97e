#pragma once

#include <QString>
#include <QStringList>

class IListConfig;

/// The library of saved lists of one kind: a folder for each channel under a base folder, named by the channel's number
/// from 1, and in it a JSON file for each list, named as the user says and ending in ".json".
///
/// Channels count from 0. What fails returns false and gives a sentence for the user; a list that could not be saved
/// leaves the file as it was, one that could not be loaded leaves the model as it was. The name of a file that is there
/// stands for that file, any other is what a user has typed. Blocks until the disk has it. GUI thread.
class ListsOps {
public:
    explicit ListsOps(const QString& base) : m_base(base) {}

    void setBaseDirectory(const QString& base) { m_base = base; }
    QString baseDirectory() const { return m_base; }

    QString channelDirectory(unsigned int channel) const;

    /// The last part of what the user typed, without blanks around the text, ".json" appended unless it ends so in
    /// whatever case: it cannot lead out of the channel's folder.
    QString normalizedFilename(const QString& name) const;

    QString filePath(const QString& name, unsigned int channel) const;

    [[nodiscard]] bool ensureChannelDirectory(unsigned int channel, QString& error) const;

    bool exists(const QString& name, unsigned int channel) const;
    [[nodiscard]] bool erase(const QString& name, unsigned int channel, QString& error) const;

    /// The names of the channel's files, sorted.
    [[nodiscard]] bool enumerate(unsigned int channel, QStringList& names, QString& error) const;

    /// Overwrites a file of the same name. Refuses a name that leaves nothing before ".json".
    [[nodiscard]] bool save(const QString& name, unsigned int channel, const IListConfig& list, QString& error) const;

    [[nodiscard]] bool load(const QString& name, unsigned int channel, IListConfig& list, QString& error) const;

private:
    QString pathOf(const QString& name, unsigned int channel) const;

    QString m_base;
};
