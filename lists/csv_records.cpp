#include "lists/csv_records.h"

#include <QTextCodec>
#include <algorithm>

namespace {

constexpr int MostFields = 64;

bool isEnd(QChar c) {
    return c == QLatin1Char('\n') || c == QLatin1Char('\r');
}

} // namespace

CsvRecords::CsvRecords(const QByteArray& content) {
    QTextCodec::ConverterState state;
    m_text = QTextCodec::codecForName("UTF-8")->toUnicode(content.constData(), content.size(), &state);
    if (state.invalidChars > 0)
        m_text = QString::fromLatin1(content);
    if (m_text.startsWith(QChar(QChar::ByteOrderMark)))
        m_text.remove(0, 1);
    const int end = static_cast<int>(std::find_if(m_text.cbegin(), m_text.cend(), isEnd) - m_text.cbegin());
    if (m_text.leftRef(end).contains(QLatin1Char(';')))
        m_separator = QLatin1Char(';');
}

bool CsvRecords::next(CsvRecord& record, QString& error) {
    bool isBlank = true;
    while (isBlank && m_at < m_text.size()) {
        record.line = m_line;
        record.fields.clear();
        for (bool last = false; !last;) {
            QString field;
            if (!nextField(field, last)) {
                error = QStringLiteral("Line %1, column %2: a quote does not end")
                            .arg(record.line)
                            .arg(record.fields.size() + 1);
                return false;
            }
            isBlank = isBlank && field.trimmed().isEmpty();
            record.fields << field;
            if (record.fields.size() > MostFields) {
                error = QStringLiteral("Line %1: too many columns").arg(record.line);
                return false;
            }
        }
    }
    return !isBlank;
}

bool CsvRecords::nextField(QString& field, bool& lastOfLine) {
    int from = m_at;
    while (from < m_text.size() && m_text.at(from) == QLatin1Char(' '))
        ++from;
    bool isQuoted = from < m_text.size() && m_text.at(from) == QLatin1Char('"');
    if (isQuoted)
        m_at = from + 1;
    for (; m_at < m_text.size(); ++m_at) {
        const QChar c = m_text.at(m_at);
        if (isQuoted) {
            const bool doubled = c == QLatin1Char('"') && m_text.mid(m_at + 1, 1) == QLatin1String("\"");
            if (c == QLatin1Char('"') && !doubled) {
                isQuoted = false;
                continue;
            }
            m_line += c == QLatin1Char('\n') ? 1 : 0;
            m_at += doubled ? 1 : 0;
        } else if (c == m_separator) {
            ++m_at;
            return true;
        } else if (isEnd(c)) {
            break;
        }
        field += c;
    }
    lastOfLine = true;
    endLine();
    return !isQuoted;
}

void CsvRecords::endLine() {
    if (m_at >= m_text.size())
        return;
    const bool pair = m_text.at(m_at) == QLatin1Char('\r') && m_text.mid(m_at + 1, 1) == QLatin1String("\n");
    m_at += pair ? 2 : 1;
    ++m_line;
}
