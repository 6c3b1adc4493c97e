#include "lists/list_config.h"

#include "values/formatting.h"

#include <QLocale>
#include <limits>

IListConfig::IListConfig() {
    static const int registered = qRegisterMetaType<ListEditRequest>("ListEditRequest");
    Q_UNUSED(registered)
}

bool IListConfig::isCellEditable(int row, int column) const {
    return row >= 0 && row < rowCount() && column >= 0 && column < columnCount() && this->column(column).editable;
}

ListEditRequest IListConfig::requestFor(int row, int column) const {
    const ListColumn described = this->column(column);
    ListEditRequest request;
    request.row = row;
    request.column = column;
    request.kind = described.kind;
    request.title = described.title;
    return request;
}

QString IListConfig::cellProblem(int, int) const {
    return {};
}

QString IListConfig::firstProblem() const {
    for (int row = 0; row < rowCount(); ++row) {
        for (int column = 0; column < columnCount(); ++column) {
            const QString problem = cellProblem(row, column);
            if (!problem.isEmpty())
                return QStringLiteral("Step %1: %2").arg(row + 1).arg(problem);
        }
    }
    return {};
}

bool IListConfig::insertDefault(int, QString& error) {
    return fail(error, "Select a valid list row");
}

bool IListConfig::repeatRow(int, QString& error) {
    return fail(error, "Select a valid list row");
}

bool IListConfig::moveRow(int, int, QString& error) {
    return fail(error, "Select a valid list row");
}

bool IListConfig::isOutside(double minimum, double maximum, double value) {
    const bool isLimited =
        minimum <= maximum && (minimum != 0 || maximum != 0) && maximum < std::numeric_limits<double>::max();
    return isLimited && !(minimum <= value && value <= maximum);
}

QString IListConfig::editText(double value, const QString& usual) {
    const bool isExact = !usual.contains(QLatin1Char('e')) && usual.toDouble() == value;
    return isExact ? usual : plainNumber(value);
}

bool IListConfig::fail(QString& error, const char* sentence) {
    error = QLatin1String(sentence);
    return false;
}
