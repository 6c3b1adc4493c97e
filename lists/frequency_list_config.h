#pragma once

#include "lists/step_list_model.h"

/// Inclusive limits of edited values, and the values of a new step: hertz, dBm, nanoseconds. Limits of 0 and 0 let
/// nothing but 0 pass.
struct FrequencyListLimits {
    double minFrequency = 0;
    double maxFrequency = 0;
    double defaultFrequency = 0;
    double minPower = 0;
    double maxPower = 0;
    double defaultPower = 0;
    double minDwell = 0;
    double maxDwell = 0;
    double defaultDwell = 0;
};

/// A list of frequency steps. Columns: step, frequency, power, dwell, advance.
class FrequencyListConfig : public StepListModel<list_point> {
public:
    FrequencyListConfig(std::vector<list_point*>* points, const FrequencyListLimits& limits);

    int kind() const override { return 0; }
    QString jsonRootName() const override { return QStringLiteral("VeldaList"); }
    QString cellText(int row, int column) const override;
    bool getEditRequest(int row, int column, ListEditRequest& request) const override;
    bool applyEdit(const ListEditRequest& request, const ListEditValue& value, QString& error) override;
    QString cellProblem(int row, int column) const override;

    /// The limits that the next edits and new steps get; present steps stay as they are.
    void setLimits(const FrequencyListLimits& limits) { m_limits = limits; }
    const FrequencyListLimits& limits() const { return m_limits; }

    /// Whether each step's dwell can be edited; not, until set.
    void setDwellEditable(bool editable);
    bool dwellEditable() const;

    /// Gives every step the same dwell, as it stands.
    void setFixedDwell(double value, const std::string& unit);

protected:
    const JsonMembers<list_point>& jsonMembers() const override;
    list_point blankPoint() const override;
    list_point defaultPoint() const override;
    bool acceptRead(list_point& point, QString& error) const override;

private:
    FrequencyListLimits m_limits;
};
