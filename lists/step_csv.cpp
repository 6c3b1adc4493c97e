#include "lists/step_csv.h"

#include "lists/csv_records.h"
#include "lists/list_content.h"
#include "values/formatting.h"
#include "values/units.h"

#include <QJsonObject>
#include <QRegularExpression>
#include <cmath>
#include <limits>

namespace {

constexpr int MostQuoted = 24; ///< characters of a cell in a sentence

enum class Kind { Frequency, Power, Time, Count, Advance };

struct Column {
    const char* name;
    const char* key;     ///< of the value in a step's object
    const char* unitKey; ///< of its unit; null: it has none
    Kind kind;
    bool mayBeMissing;
};

using Columns = std::vector<Column>;

const Columns& columnsOf(const QString& root) {
    static const Columns list{{"frequency", "Frequency", "FreqUnits", Kind::Frequency, false},
                              {"power", "Power", "PowerUnits", Kind::Power, false},
                              {"dwell", "DwellTime", "DwellUnits", Kind::Time, false},
                              {"advance", "Advance", nullptr, Kind::Advance, true}};
    static const Columns pattern{{"on", "OnTime", "OnTimeTimeUnits", Kind::Time, false},
                                 {"off", "OffTime", "OffTimeTimeUnits", Kind::Time, false},
                                 {"repetition", "Loops", nullptr, Kind::Count, true}};
    return root == QLatin1String("VeldaPattern") ? pattern : list;
}

UnitQuantity quantityOf(Kind kind) {
    switch (kind) {
    case Kind::Frequency:
        return UnitQuantity::Frequency;
    case Kind::Power:
        return UnitQuantity::Power;
    case Kind::Time:
        return UnitQuantity::Time;
    case Kind::Count:
    case Kind::Advance:
        break;
    }
    return UnitQuantity::Unitless;
}

/// The panel's spelling of a unit; empty for none that it knows. Without one, a number stands for hertz, dBm or
/// seconds.
QString unitOf(Kind kind, const QString& text) {
    if (text.isEmpty())
        return kind == Kind::Frequency ? QStringLiteral("Hz")
               : kind == Kind::Power   ? QStringLiteral("dBm")
                                       : QStringLiteral("s");
    QString unit = text;
    unit.replace(QChar(0x03BC), QChar(0x00B5)); // the Greek letter for the sign that looks like it
    if (kind == Kind::Frequency && unit == QLatin1String("kHz"))
        unit = QStringLiteral("KHz");
    return unitNames(quantityOf(kind)).contains(unit) ? unit : QString();
}

bool readNumber(const QString& text, bool decimalComma, double& number, QString& rest) {
    static const QRegularExpression form(QRegularExpression::anchoredPattern(
        QStringLiteral("([+-]?(?:[0-9]+[.]?[0-9]*|[.][0-9]+)(?:[eE][+-]?[0-9]{1,3})?)"
                       "\\s*([^0-9.,\\s]*)")));
    QString pointed = text.simplified(); // a blank that does not break is one too
    if (decimalComma)
        pointed.replace(QLatin1Char(','), QLatin1Char('.'));
    const QRegularExpressionMatch match = form.match(pointed);
    bool isNumber = false;
    number = match.captured(1).toDouble(&isNumber);
    rest = match.captured(2);
    return isNumber && std::isfinite(number);
}

bool readCell(const Column& column, const QString& text, bool decimalComma, QJsonObject& step) {
    const QString key = QLatin1String(column.key);
    if (column.kind == Kind::Advance) {
        for (const char* word : {"Run", "Wait"}) {
            if (text.compare(QLatin1String(word), Qt::CaseInsensitive) == 0) {
                step.insert(key, QLatin1String(word));
                return true;
            }
        }
        return false;
    }
    double number = 0;
    QString rest;
    if (!readNumber(text, decimalComma, number, rest))
        return false;
    if (column.kind == Kind::Count) {
        number = rest == QLatin1String("K") ? number * 1000 : number;
        step.insert(key, number);
        const bool isCount = number == std::floor(number) && number >= 0 && number <= std::numeric_limits<int>::max();
        return isCount && (rest.isEmpty() || rest == QLatin1String("K"));
    }
    const QString unit = unitOf(column.kind, rest);
    step.insert(key, number);
    step.insert(QLatin1String(column.unitKey), unit);
    double dBm = 0;
    return !unit.isEmpty() && (column.kind != Kind::Power || powerToDbm(number, unit.toStdString(), dBm));
}

bool fail(QString& error, const CsvRecord& record, int field, const QString& what) {
    error = QStringLiteral("Line %1, column %2: %3").arg(record.line).arg(field + 1).arg(what);
    return false;
}

QString quoted(const QString& text) {
    QString line = text.simplified();
    line.truncate(MostQuoted + 1);
    for (QChar& c : line)
        c = c.isPrint() ? c : QChar(QChar::ReplacementCharacter); // or nobody sees what is wrong
    return QLatin1Char('"') + (line.size() > MostQuoted ? line.left(MostQuoted - 1) + QChar(0x2026) : line) +
           QLatin1Char('"');
}

/// For each field of a line its column. All that must be there are.
bool readHeader(const CsvRecord& header, const Columns& columns, std::vector<const Column*>& order, QString& error) {
    for (int field = 0; field < header.fields.size(); ++field) {
        const QString name = header.fields.at(field).trimmed();
        const Column* found = nullptr;
        for (const Column& column : columns) {
            if (name.compare(QLatin1String(column.name), Qt::CaseInsensitive) == 0)
                found = &column;
        }
        if (!found)
            return fail(error, header, field, QStringLiteral("%1 is no column of this list").arg(quoted(name)));
        if (std::find(order.begin(), order.end(), found) != order.end())
            return fail(error, header, field, QStringLiteral("%1 is there twice").arg(quoted(name)));
        order.push_back(found);
    }
    for (const Column& column : columns) {
        if (!column.mayBeMissing && std::find(order.begin(), order.end(), &column) == order.end())
            return fail(error, header, header.fields.size(),
                        QStringLiteral("\"%1\" is missing").arg(QLatin1String(column.name)));
    }
    return true;
}

bool readLine(const CsvRecord& record, const std::vector<const Column*>& order, bool decimalComma, QJsonObject& step,
              QString& error) {
    const int count = static_cast<int>(order.size());
    for (int field = 0; field < qMax(count, record.fields.size()); ++field) {
        const QString text = record.fields.value(field).trimmed();
        if (field >= count) {
            if (!text.isEmpty())
                return fail(error, record, field, QStringLiteral("%1 has no column").arg(quoted(text)));
            continue;
        }
        const Column& column = *order[static_cast<std::size_t>(field)];
        if (text.isEmpty())
            return fail(error, record, field, QStringLiteral("no %1").arg(QLatin1String(column.name)));
        if (!readCell(column, text, decimalComma, step))
            return fail(error, record, field,
                        QStringLiteral("%1 is no %2").arg(quoted(text), QLatin1String(column.name)));
    }
    return true;
}

/// The shortest text that is read as the very number.
QString exact(double number) {
    const double size = std::abs(number);
    const bool plain = number == 0 || (size >= 1e-15 && size < 1e15);
    return plain ? plainNumber(number) : QString::number(number, 'g', std::numeric_limits<double>::max_digits10);
}

} // namespace

bool StepCsv::read(const QByteArray& content, const QString& root, QJsonArray& steps, QString& error) {
    CsvRecords records(content);
    CsvRecord record;
    if (!records.next(record, error)) {
        if (error.isEmpty())
            error = QStringLiteral("List file contains no steps");
        return false;
    }
    std::vector<const Column*> order;
    if (!readHeader(record, columnsOf(root), order, error))
        return false;
    QJsonArray read;
    while (records.next(record, error)) {
        if (read.size() == ListContent::MostSteps)
            return ListContent::refuseSize(error);
        QJsonObject step;
        if (!readLine(record, order, records.separator() == QLatin1Char(';'), step, error))
            return false;
        read.append(step);
    }
    if (!error.isEmpty())
        return false;
    steps = read;
    return true;
}

bool StepCsv::write(const QJsonArray& steps, const QString& root, QByteArray& content, QString& error) {
    const Columns& columns = columnsOf(root);
    QStringList names;
    for (const Column& column : columns)
        names << QLatin1String(column.name);
    QString text = QChar(QChar::ByteOrderMark) + names.join(QLatin1Char(',')); // or a spreadsheet takes it for Latin-1
    int number = 0;
    for (const QJsonValue value : steps) {
        const QJsonObject step = value.toObject();
        ++number;
        QStringList cells;
        for (const Column& column : columns) {
            const QJsonValue held = step.value(QLatin1String(column.key));
            QString cell = column.kind == Kind::Advance ? held.toString() : exact(held.toDouble());
            if (column.unitKey)
                cell += QLatin1Char(' ') + step.value(QLatin1String(column.unitKey)).toString();
            QJsonObject again;
            const QString unitKey = QLatin1String(column.unitKey ? column.unitKey : "");
            if (!readCell(column, cell, false, again) || again.value(unitKey) != step.value(unitKey)) {
                error = QStringLiteral("Step %1: %2 cannot be written as CSV").arg(number).arg(quoted(cell));
                return false;
            }
            cells << cell;
        }
        text += QLatin1String("\r\n") + cells.join(QLatin1Char(','));
    }
    content = (text + QLatin1String("\r\n")).toUtf8();
    return true;
}
