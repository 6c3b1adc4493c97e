#include "platform/log_format.h"

#include <QByteArray>
#include <QStringList>
#include <algorithm>
#include <cmath>
#include <cstring>

namespace Logger {
namespace {

constexpr int MaxWidth = 200;
constexpr int MaxPrecision = 60;

struct Conversion {
    QByteArray flags;
    int width = 0;
    int precision = -1;
    char letter = '\0';
};

bool oneOf(char c, const char* set) {
    return c != '\0' && std::strchr(set, c) != nullptr;
}

int readNumber(const char*& at, int limit) {
    int number = 0;
    for (; *at >= '0' && *at <= '9'; ++at)
        number = std::min(number * 10 + (*at - '0'), limit);
    return number;
}

QString padded(const Conversion& conversion, const QString& text) {
    return conversion.flags.contains('-') ? text.leftJustified(conversion.width)
                                          : text.rightJustified(conversion.width);
}

// The conversion rebuilt from checked pieces; the caller's own text never reaches a printf function.
QByteArray checkedFormat(const Conversion& conversion, const char* length) {
    QByteArray format = "%" + conversion.flags;
    if (conversion.width > 0)
        format += QByteArray::number(conversion.width);
    if (conversion.precision >= 0)
        format += "." + QByteArray::number(conversion.precision);
    return format + length + conversion.letter;
}

bool isReal(const QVariant& value) {
    return value.userType() == QMetaType::Double || value.userType() == QMetaType::Float;
}

bool isNegative(const QVariant& value, qlonglong number) {
    return number < 0 && value.userType() != QMetaType::ULongLong && value.userType() != QMetaType::ULong;
}

QString wholeNumber(const Conversion& conversion, const QVariant& value) {
    Conversion plain = conversion;
    qlonglong number = 0;
    if (isReal(value)) {
        // Beyond the range of 64 bits, and for "not a number", there is no whole number to show.
        const double real = value.toDouble();
        if (!(std::fabs(real) < 9.2e18))
            return padded(conversion, QString::number(real, 'g', 17));
        number = static_cast<qlonglong>(real);
    } else {
        bool ok = false;
        number = value.userType() == QMetaType::ULongLong ? static_cast<qlonglong>(value.toULongLong(&ok))
                                                          : value.toLongLong(&ok);
        if (!ok)
            return padded(conversion, value.toString());
    }
    const bool negative = isNegative(value, number);
    if (oneOf(plain.letter, "xXo")) {
        if (negative && value.userType() == QMetaType::Int)
            number = static_cast<quint32>(number); // bits of the 32-bit value that was given
    } else {
        plain.letter = negative || value.userType() != QMetaType::ULongLong ? 'd' : 'u';
    }
    return QString::asprintf(checkedFormat(plain, "ll").constData(), number);
}

QString realNumber(const Conversion& conversion, const QVariant& value) {
    bool ok = false;
    const double number = value.toDouble(&ok);
    if (!ok)
        return padded(conversion, value.toString());
    return QString::asprintf(checkedFormat(conversion, "").constData(), number);
}

QString character(const Conversion& conversion, const QVariant& value) {
    bool isNumber = false;
    const uint code = value.userType() == QMetaType::Int ? value.toUInt(&isNumber) : 0;
    return padded(conversion, isNumber ? QString(QChar(code & 0xFFFFU)) : value.toString().left(1));
}

QString converted(const Conversion& conversion, const QVariant& value) {
    switch (conversion.letter) {
    case 's':
        return padded(conversion,
                      conversion.precision < 0 ? value.toString() : value.toString().left(conversion.precision));
    case 'c':
        return character(conversion, value);
    case 'p':
        return padded(conversion, "0x" + QString::number(value.toULongLong(), 16));
    default:
        return oneOf(conversion.letter, "fFeEgG") ? realNumber(conversion, value) : wholeNumber(conversion, value);
    }
}

// Reads what follows a per cent sign. Leaves `at` behind the conversion letter when it is a known one.
bool readConversion(const char*& at, Conversion& conversion) {
    const char* next = at;
    for (; oneOf(*next, "-+ #0"); ++next) {
        if (!conversion.flags.contains(*next))
            conversion.flags += *next;
    }
    conversion.width = readNumber(next, MaxWidth);
    if (*next == '.') {
        ++next;
        conversion.precision = readNumber(next, MaxPrecision);
    }
    while (oneOf(*next, "hlLqjzt"))
        ++next;
    if (!oneOf(*next, "diuxXocsfFeEgGp"))
        return false;
    conversion.letter = *next++;
    at = next;
    return true;
}

} // namespace

QString fillFormat(const char* format, const QVector<QVariant>& values) {
    QString text;
    int used = 0;
    const char* at = format ? format : "(no format)";
    while (*at != '\0') {
        const char* plain = at;
        while (*at != '\0' && *at != '%')
            ++at;
        text += QString::fromUtf8(plain, static_cast<int>(at - plain));
        if (*at == '\0')
            break;
        ++at;
        Conversion conversion;
        if (*at == '%') {
            text += '%';
            ++at;
        } else if (!readConversion(at, conversion)) {
            text += '%';
        } else {
            text += used < values.size() ? converted(conversion, values.at(used)) : QStringLiteral("(missing)");
            ++used;
        }
    }
    QStringList surplus;
    for (; used < values.size(); ++used)
        surplus << values.at(used).toString();
    if (!surplus.isEmpty())
        text += " (surplus: " + surplus.join(", ") + ")";
    return text;
}

} // namespace Logger
