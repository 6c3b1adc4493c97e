#include "sim/battery_curve.h"

#include <QStringList>
#include <algorithm>
#include <cmath>

namespace Sim {
namespace {

std::optional<BatteryPoint> parsePoint(const QString& text) {
    const QStringList parts = text.split(':');
    if (parts.size() != 3)
        return std::nullopt;
    double numbers[3] = {};
    for (int i = 0; i < 3; ++i) {
        bool ok = false;
        numbers[i] = parts.at(i).trimmed().toDouble(&ok);
        if (!ok || !std::isfinite(numbers[i]))
            return std::nullopt;
    }
    const bool plausible = numbers[0] >= 0 && numbers[1] >= 0 && numbers[1] <= 100 && std::fabs(numbers[2]) <= 32767;
    return plausible ? std::optional<BatteryPoint>({numbers[0], numbers[1], numbers[2]}) : std::nullopt;
}

} // namespace

BatteryCurve BatteryCurve::steady(double charge, double current) {
    BatteryCurve curve;
    curve.m_points.push_back({0, charge, current});
    return curve;
}

std::optional<BatteryCurve> BatteryCurve::parse(const QString& text, QString& error) {
    BatteryCurve curve;
    const QStringList parts = text.split(',');
    for (const QString& part : parts) {
        const std::optional<BatteryPoint> point = parsePoint(part);
        if (!point || (!curve.m_points.empty() && point->seconds < curve.m_points.back().seconds)) {
            error =
                QString("\"%1\" is no battery point after the one before it; give seconds:percent:current").arg(part);
            return std::nullopt;
        }
        curve.m_points.push_back(*point);
    }
    return curve;
}

BatteryPoint BatteryCurve::at(double seconds) const {
    const auto next = std::find_if(m_points.begin(), m_points.end(),
                                   [seconds](const BatteryPoint& point) { return point.seconds > seconds; });
    if (next == m_points.begin())
        return m_points.front();
    const BatteryPoint& before = *(next - 1);
    if (next == m_points.end())
        return before;
    const double share = (seconds - before.seconds) / (next->seconds - before.seconds);
    return {seconds, before.charge + share * (next->charge - before.charge),
            before.current + share * (next->current - before.current)};
}

} // namespace Sim
