#include "lists/frequency_list_config.h"

#include "values/formatting.h"
#include "values/normalize.h"
#include "values/units.h"

namespace {

enum Column { StepColumn, FrequencyColumn, PowerColumn, DwellColumn, AdvanceColumn, ColumnCount };

constexpr char OutsideFrequency[] = "Frequency is outside the valid range";
constexpr char OutsidePower[] = "Power is outside the valid range";
constexpr char OutsideDwell[] = "Dwell time is outside the valid range";

const QStringList& advances() {
    static const QStringList words{QStringLiteral("Run"), QStringLiteral("Wait")};
    return words;
}

} // namespace

FrequencyListConfig::FrequencyListConfig(std::vector<list_point*>* points, const FrequencyListLimits& limits)
    : StepListModel(points,
                    {"Frequency list storage is not available", "Select a valid list row",
                     "A list must contain at least one step", "List file contains no steps",
                     "List file contains no valid steps"},
                    {{QStringLiteral("Step"), ListColumnKind::Step, false},
                     {QStringLiteral("Frequency"), ListColumnKind::Frequency, true},
                     {QStringLiteral("Power"), ListColumnKind::Power, true},
                     {QStringLiteral("Dwell Time"), ListColumnKind::Time, false},
                     {QStringLiteral("Adv."), ListColumnKind::Choice, true}}),
      m_limits(limits) {}

QString FrequencyListConfig::cellText(int row, int column) const {
    const list_point* const point = pointAt(row);
    if (point == nullptr)
        return {};
    switch (column) {
    case StepColumn:
        return QString::number(point->stepNumber);
    case FrequencyColumn:
        return formatFrequency(point->frequency, point->frequencyUnit);
    case PowerColumn: // always kept in dBm
        return formatNumber(point->power, 6) + QStringLiteral(" dBm");
    case DwellColumn:
        return formatTime(point->dwell, point->dwellUnit);
    case AdvanceColumn:
        return QString::fromStdString(point->advance);
    default:
        return {};
    }
}

bool FrequencyListConfig::getEditRequest(int row, int column, ListEditRequest& request) const {
    if (!isCellEditable(row, column))
        return false;
    const list_point& point = *pointAt(row);
    request = requestFor(row, column);
    switch (column) {
    case FrequencyColumn:
        request.unit = QString::fromStdString(point.frequencyUnit);
        request.text = editText(point.frequency, QString::number(point.frequency, 'f',
                                                                 unitPrecision(UnitQuantity::Frequency, request.unit)));
        request.options = unitNames(UnitQuantity::Frequency);
        break;
    case PowerColumn:
        request.unit = QString::fromStdString(point.powerUnit);
        request.text = editText(point.power, QString::number(point.power, 'g', 6));
        request.options = unitNames(UnitQuantity::Power);
        request.min = m_limits.minPower;
        request.max = m_limits.maxPower;
        request.powerRange = true;
        break;
    case DwellColumn:
        request.unit = QString::fromStdString(point.dwellUnit);
        request.text =
            editText(point.dwell, QString::number(point.dwell, 'f', unitPrecision(UnitQuantity::Time, request.unit)));
        request.options = unitNames(UnitQuantity::Time);
        request.min = m_limits.minDwell;
        request.max = m_limits.maxDwell;
        break;
    default:
        request.unit = QString::fromStdString(point.advance);
        request.text = request.unit;
        request.options = advances();
        break;
    }
    return true;
}

bool FrequencyListConfig::applyEdit(const ListEditRequest& request, const ListEditValue& value, QString& error) {
    list_point* const point = pointAt(request.row);
    if (point == nullptr || request.column <= StepColumn || request.column >= ColumnCount)
        return fail(error, "Invalid list cell");
    if (request.column == AdvanceColumn) {
        if (!advances().contains(value.text))
            return fail(error, "Advance must be Run or Wait");
        point->advance = value.text.toStdString();
        return true;
    }
    double number = 0;
    if (!parseDouble(value.text, number))
        return fail(error, "Invalid numeric value");
    number += 0.0; // files keep no sign of a zero
    std::string unit = value.unit.toStdString();
    switch (request.column) {
    case FrequencyColumn:
        if (!normalizeListFreq(number, unit, m_limits.minFrequency, m_limits.maxFrequency, number, unit, nullptr,
                               QStringLiteral("Frequency")))
            return fail(error, OutsideFrequency);
        point->frequency = number;
        point->frequencyUnit = unit;
        break;
    case PowerColumn: {
        double dBm = 0;
        if (!powerToDbm(number, unit, dBm) || !(m_limits.minPower <= dBm && dBm <= m_limits.maxPower))
            return fail(error, OutsidePower);
        point->power = dBm;
        point->powerUnit = "dBm";
        break;
    }
    default:
        if (!normalizeListTime(number, unit, m_limits.minDwell, m_limits.maxDwell, number, unit, nullptr,
                               QStringLiteral("Dwell Time")))
            return fail(error, OutsideDwell);
        point->dwell = number;
        point->dwellUnit = unit;
        break;
    }
    return true;
}

QString FrequencyListConfig::cellProblem(int row, int column) const {
    const list_point* const point = pointAt(row);
    if (point == nullptr)
        return {};
    double value = 0;
    std::string unit;
    switch (column) {
    case FrequencyColumn:
        value = normalizeListFreq(value, unit, point->frequency, point->frequencyUnit);
        return isOutside(m_limits.minFrequency, m_limits.maxFrequency, value) ? QLatin1String(OutsideFrequency)
                                                                              : QString();
    case PowerColumn:
        return isOutside(m_limits.minPower, m_limits.maxPower, point->power) ? QLatin1String(OutsidePower) : QString();
    case DwellColumn:
        value = normalizeListTime(value, unit, point->dwell, point->dwellUnit);
        return isOutside(m_limits.minDwell, m_limits.maxDwell, value) ? QLatin1String(OutsideDwell) : QString();
    default:
        return {};
    }
}

void FrequencyListConfig::setDwellEditable(bool editable) {
    setColumnEditable(DwellColumn, editable);
}

bool FrequencyListConfig::dwellEditable() const {
    return column(DwellColumn).editable;
}

void FrequencyListConfig::setFixedDwell(double value, const std::string& unit) {
    for (int row = 0; row < rowCount(); ++row) {
        pointAt(row)->dwell = value;
        pointAt(row)->dwellUnit = unit;
    }
}

const JsonMembers<list_point>& FrequencyListConfig::jsonMembers() const {
    static const JsonMembers<list_point> members{
        {QLatin1String("Advance"), &list_point::advance},
        {QLatin1String("DwellTime"), &list_point::dwell},
        {QLatin1String("DwellUnits"), &list_point::dwellUnit},
        {QLatin1String("FreqUnits"), &list_point::frequencyUnit},
        {QLatin1String("Frequency"), &list_point::frequency},
        {QLatin1String("Last"), &list_point::last, false},
        {QLatin1String("Power"), &list_point::power},
        {QLatin1String("PowerUnits"), &list_point::powerUnit},
        {QLatin1String("StepNumber"), &list_point::stepNumber, false},
    };
    return members;
}

list_point FrequencyListConfig::blankPoint() const {
    return {0, 0, "Hz", 0, "dBm", 0, "ns", "Run", false};
}

list_point FrequencyListConfig::defaultPoint() const {
    list_point point = blankPoint();
    point.frequency = m_limits.defaultFrequency;
    point.power = m_limits.defaultPower;
    point.dwell = m_limits.defaultDwell;
    return point;
}

bool FrequencyListConfig::acceptRead(list_point& point, QString& error) const {
    if (!powerToDbm(point.power, point.powerUnit, point.power))
        return fail(error, "List file contains an invalid power value");
    point.powerUnit = "dBm";
    return true;
}
