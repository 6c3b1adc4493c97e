#include "lists/pattern_list_config.h"

#include "values/formatting.h"
#include "values/normalize.h"
#include "values/units.h"

#include <limits>

namespace {

enum Column { StepColumn, OnTimeColumn, OffTimeColumn, RepetitionColumn, ColumnCount };

constexpr char OutsideTime[] = "Pattern time is outside the valid range";
constexpr char OutsideRepetition[] = "Repetition count is outside the valid range";

// The two time columns differ in the fields that they show.
struct TimeField {
    double pattern_point::*value;
    std::string pattern_point::*unit;
};

TimeField timeField(int column) {
    return column == OnTimeColumn ? TimeField{&pattern_point::onTime, &pattern_point::onTimeUnit}
                                  : TimeField{&pattern_point::offTime, &pattern_point::offTimeUnit};
}

const QString& thousands() {
    static const QString unit = QStringLiteral("K");
    return unit;
}

// Truncated toward zero; what no count can be becomes the nearest one.
std::uint32_t toCount(double number) {
    if (!(number > 0))
        return 0;
    constexpr auto Most = std::numeric_limits<std::uint32_t>::max();
    return number < Most ? static_cast<std::uint32_t>(number) : Most;
}

} // namespace

PatternListConfig::PatternListConfig(std::vector<pattern_point*>* points, const PatternListLimits& limits)
    : StepListModel(points,
                    {"Pattern list storage is not available", "Select a valid pattern row",
                     "A pattern must contain at least one step", "Pattern file contains no steps",
                     "Pattern file contains no valid steps"},
                    {{QStringLiteral("Step"), ListColumnKind::Step, false},
                     {QStringLiteral("On Time"), ListColumnKind::Time, true},
                     {QStringLiteral("Off Time"), ListColumnKind::Time, true},
                     {QStringLiteral("Repetition"), ListColumnKind::Count, true}}),
      m_limits(limits) {}

QString PatternListConfig::cellText(int row, int column) const {
    const pattern_point* const point = pointAt(row);
    if (point == nullptr)
        return {};
    switch (column) {
    case StepColumn:
        return QString::number(point->stepNumber);
    case OnTimeColumn:
    case OffTimeColumn: {
        const TimeField time = timeField(column);
        return formatTime(point->*time.value, point->*time.unit);
    }
    case RepetitionColumn:
        return QString::number(point->loops);
    default:
        return {};
    }
}

bool PatternListConfig::getEditRequest(int row, int column, ListEditRequest& request) const {
    if (!isCellEditable(row, column))
        return false;
    const pattern_point& point = *pointAt(row);
    request = requestFor(row, column);
    if (column == RepetitionColumn) {
        request.text = QString::number(point.loops);
        request.options = QStringList{QString(), thousands()};
        return true;
    }
    const TimeField time = timeField(column);
    request.text = editText(point.*time.value, QString::number(point.*time.value, 'g', 6));
    request.unit = QString::fromStdString(point.*time.unit);
    request.options = unitNames(UnitQuantity::Time);
    return true;
}

bool PatternListConfig::applyEdit(const ListEditRequest& request, const ListEditValue& value, QString& error) {
    pattern_point* const point = pointAt(request.row);
    if (point == nullptr || request.column <= StepColumn || request.column >= ColumnCount)
        return fail(error, "Invalid pattern cell");
    double number = 0;
    if (!parseDouble(value.text, number))
        return fail(error, "Invalid numeric value");
    number += 0.0; // files keep no sign of a zero
    if (request.column == RepetitionColumn) {
        const std::uint32_t count = toCount(value.unit == thousands() ? number * 1000 : number);
        if (count < m_limits.minRepetition || count > m_limits.maxRepetition)
            return fail(error, OutsideRepetition);
        point->loops = count;
        return true;
    }
    std::string unit = value.unit.toStdString();
    if (!normalizeListTime(number, unit, m_limits.minTime, m_limits.maxTime, number, unit, nullptr,
                           column(request.column).title))
        return fail(error, OutsideTime);
    const TimeField time = timeField(request.column);
    point->*time.value = number;
    point->*time.unit = unit;
    return true;
}

QString PatternListConfig::cellProblem(int row, int column) const {
    const pattern_point* const point = pointAt(row);
    if (point == nullptr || column <= StepColumn || column >= ColumnCount)
        return {};
    if (column == RepetitionColumn)
        return isOutside(m_limits.minRepetition, m_limits.maxRepetition, point->loops)
                   ? QLatin1String(OutsideRepetition)
                   : QString();
    const TimeField time = timeField(column);
    double value = 0;
    std::string unit;
    value = normalizeListTime(value, unit, point->*time.value, point->*time.unit);
    return isOutside(m_limits.minTime, m_limits.maxTime, value) ? QLatin1String(OutsideTime) : QString();
}

const JsonMembers<pattern_point>& PatternListConfig::jsonMembers() const {
    static const JsonMembers<pattern_point> members{
        {QLatin1String("Last"), &pattern_point::last, false},
        {QLatin1String("Loops"), &pattern_point::loops},
        {QLatin1String("OffTime"), &pattern_point::offTime},
        {QLatin1String("OffTimeTimeUnits"), &pattern_point::offTimeUnit},
        {QLatin1String("OnTime"), &pattern_point::onTime},
        {QLatin1String("OnTimeTimeUnits"), &pattern_point::onTimeUnit},
        {QLatin1String("StepNumber"), &pattern_point::stepNumber, false},
    };
    return members;
}

pattern_point PatternListConfig::blankPoint() const {
    return {0, 0, "ns", 0, "ns", 1, false};
}

pattern_point PatternListConfig::defaultPoint() const {
    pattern_point point = blankPoint();
    point.onTime = m_limits.defaultTime;
    point.offTime = m_limits.defaultTime;
    point.loops = m_limits.defaultRepetition;
    return point;
}

bool PatternListConfig::acceptRead(pattern_point&, QString&) const {
    return true;
}
