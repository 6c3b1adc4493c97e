#include "sim/scpi_text.h"

#include "common/instrument/scpi_words.h"

#include <QList>
#include <QLocale>
#include <QString>

#include <algorithm>
#include <cmath>

namespace Sim {
namespace {

QByteArray bareHeader(QByteArray header) {
    header = header.trimmed();
    if (header.startsWith(':'))
        header.remove(0, 1);
    if (header.endsWith('?'))
        header.chop(1);
    return header;
}

bool equalInAnyCase(const QByteArray& a, const QByteArray& b) {
    return a.size() == b.size() && a.compare(b, Qt::CaseInsensitive) == 0;
}

QByteArray shortForm(const QByteArray& word) {
    QByteArray capitals;
    std::copy_if(word.begin(), word.end(), std::back_inserter(capitals), [](char c) { return c < 'a' || c > 'z'; });
    return capitals;
}

} // namespace

ScpiLine splitLine(const QByteArray& line) {
    const QByteArray text = line.trimmed();
    int end = 0;
    while (end < text.size() && text.at(end) != ' ' && text.at(end) != '\t')
        ++end;
    const QByteArray header = text.left(end);
    return {bareHeader(header), text.mid(end).trimmed(), header.endsWith('?')};
}

bool wordMatches(const QByteArray& pattern, const QByteArray& word) {
    return equalInAnyCase(pattern, word) || equalInAnyCase(shortForm(pattern), word);
}

bool headerMatches(const QByteArray& pattern, const QByteArray& header) {
    const QList<QByteArray> expected = bareHeader(pattern).split(':');
    const QList<QByteArray> nodes = header.split(':');
    return expected.size() == nodes.size() && std::equal(expected.begin(), expected.end(), nodes.begin(), wordMatches);
}

std::optional<double> parseNumber(const QByteArray& text) {
    bool ok = false;
    const double number = text.toDouble(&ok);
    if (!ok || !std::isfinite(number))
        return std::nullopt;
    return number;
}

QByteArray unquoted(const QByteArray& text) {
    const bool quoted = text.size() >= 2 && text.startsWith('"') && text.endsWith('"');
    return quoted ? text.mid(1, text.size() - 2) : text;
}

QByteArray numberText(double value) {
    return QString::number(value, 'g', QLocale::FloatingPointShortest).toUtf8();
}

QByteArray refusal(int code, const QByteArray& sentence) {
    return QByteArray(Scpi::Refusal) + ' ' + QByteArray::number(code) + ',' + sentence;
}

} // namespace Sim
