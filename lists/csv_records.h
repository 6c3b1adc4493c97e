#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

/// One line of a table: its fields as they stand between the separators, without quotes.
struct CsvRecord {
    QStringList fields;
    int line = 0; ///< in the file, from 1
};

/// Takes a table of text apart, line by line; blank lines are passed over. The separator is a semicolon where the first
/// line holds one, otherwise a comma. A quoted field may hold separators, ends of line and, doubled, quotes. Any
/// thread.
class CsvRecords {
public:
    /// In UTF-8, or where that cannot be in Latin-1.
    explicit CsvRecords(const QByteArray& content);

    /// False at the end, and with a sentence for a quote that does not end and for more fields than a list can have.
    [[nodiscard]] bool next(CsvRecord& record, QString& error);

    QChar separator() const { return m_separator; }

private:
    bool nextField(QString& field, bool& lastOfLine);
    void endLine();

    QString m_text;
    QChar m_separator = QLatin1Char(',');
    int m_at = 0;
    int m_line = 1;
};
