#pragma once

#include <QString>
#include <optional>
#include <vector>

namespace Sim {

struct BatteryPoint {
    double seconds; ///< since start
    double charge;  ///< percent
    double current; ///< mA, negative while discharging
};

/// Charge and current over time, straight between its points and held before the first and after the last one.
class BatteryCurve {
public:
    /// A battery that stays as it is. Percent and mA.
    static BatteryCurve steady(double charge, double current);

    /// Reads "seconds:percent:current" points separated by commas, such as "0:80:-400,60:10:-400". The seconds must not
    /// fall, the percent lie in 0 to 100. None, with a sentence in error, when the text is anything else.
    [[nodiscard]] static std::optional<BatteryCurve> parse(const QString& text, QString& error);

    bool isSteady() const { return m_points.size() == 1; }

    /// The battery at that many seconds after start.
    BatteryPoint at(double seconds) const;

private:
    BatteryCurve() = default;

    std::vector<BatteryPoint> m_points; ///< at least one
};

} // namespace Sim
