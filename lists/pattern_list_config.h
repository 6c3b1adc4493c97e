#pragma once

#include "lists/step_list_model.h"

/// Inclusive limits of edited values, and the values of a new step. Times in nanoseconds; limits of 0 and 0 let
/// nothing but 0 pass.
struct PatternListLimits {
    double minTime = 0;
    double maxTime = 0;
    double defaultTime = 0;
    std::uint32_t minRepetition = 1;
    std::uint32_t maxRepetition = 1;
    std::uint32_t defaultRepetition = 1;
};

/// An on/off timing pattern. Columns: step, on time, off time, repetition.
class PatternListConfig : public StepListModel<pattern_point> {
public:
    PatternListConfig(std::vector<pattern_point*>* points, const PatternListLimits& limits);

    int kind() const override { return 1; }
    QString jsonRootName() const override { return QStringLiteral("VeldaPattern"); }
    QString cellText(int row, int column) const override;
    bool getEditRequest(int row, int column, ListEditRequest& request) const override;
    bool applyEdit(const ListEditRequest& request, const ListEditValue& value, QString& error) override;
    QString cellProblem(int row, int column) const override;

    /// The limits that the next edits and new steps get; present steps stay as they are.
    void setLimits(const PatternListLimits& limits) { m_limits = limits; }
    const PatternListLimits& limits() const { return m_limits; }

protected:
    const JsonMembers<pattern_point>& jsonMembers() const override;
    pattern_point blankPoint() const override;
    pattern_point defaultPoint() const override;
    bool acceptRead(pattern_point& point, QString& error) const override;

private:
    PatternListLimits m_limits;
};
