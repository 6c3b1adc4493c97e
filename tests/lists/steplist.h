#pragma once

#include "lists/frequency_list_config.h"
#include "lists/pattern_list_config.h"

#include <vector>

/// A list model with the vector of steps that it works on, gone with the object.
template <typename Config, typename Point, typename Limits>
class StepList {
public:
    explicit StepList(const Limits& limits, int steps = 1) : config(&points, limits) {
        QString error;
        for (int i = 0; i < steps; ++i) {
            if (!config.addDefault(error))
                qFatal("%s", qPrintable(error));
        }
    }
    ~StepList() { config.destroyPoints(); }
    StepList(const StepList&) = delete;
    StepList& operator=(const StepList&) = delete;

    /// All cells, rows separated by ";", columns by ",".
    QString text() const {
        QStringList rows;
        for (int row = 0; row < config.rowCount(); ++row) {
            QStringList cells;
            for (int column = 0; column < config.columnCount(); ++column)
                cells << config.cellText(row, column);
            rows << cells.join(',');
        }
        return rows.join(';');
    }

    /// Numbers run from 1 and the last step alone is marked.
    bool isNumbered() const {
        for (std::size_t i = 0; i < points.size(); ++i) {
            if (points[i]->stepNumber != i + 1 || points[i]->last != (i + 1 == points.size()))
                return false;
        }
        return true;
    }

    std::vector<Point*> points;
    Config config;
};

constexpr FrequencyListLimits ListLimits{9e3, 6e9, 1e8, -120, 20, 5, 1e3, 1e10, 5e5};
constexpr PatternListLimits PatternLimits{10, 1e10, 800, 1, 10000, 3};

class FrequencySteps : public StepList<FrequencyListConfig, list_point, FrequencyListLimits> {
public:
    explicit FrequencySteps(int steps = 1) : StepList(ListLimits, steps) {}
};

class PatternSteps : public StepList<PatternListConfig, pattern_point, PatternListLimits> {
public:
    explicit PatternSteps(int steps = 1) : StepList(PatternLimits, steps) {}
};

/// A list of each kind, of which a test row looks at one.
struct BothSteps {
    explicit BothSteps(int steps) : list(steps), pattern(steps) {}

    IListConfig& of(bool isPattern) { return isPattern ? static_cast<IListConfig&>(pattern.config) : list.config; }
    QString text(bool isPattern) const { return isPattern ? pattern.text() : list.text(); }
    bool isNumbered() const { return list.isNumbered() && pattern.isNumbered(); }

    FrequencySteps list;
    PatternSteps pattern;
};
