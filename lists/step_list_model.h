#pragma once

#include "common/wire/step_points.h"
#include "lists/list_config.h"
#include "lists/step_json.h"

#include <utility>
#include <vector>

/// What lists of every kind of step share: the sequence of steps, its numbering, its way from and to JSON. Works on a
/// vector that its owner (a screen) keeps, or on none; the steps in it belong to the model, which deletes the ones that
/// it takes out. They outlive the model: destroyPoints() is for the owner to call.
template <typename Point>
class StepListModel : public IListConfig {
public:
    int rowCount() const override;
    int columnCount() const override { return static_cast<int>(m_columns.size()); }
    ListColumn column(int index) const override;
    bool clearAndCreateDefault(QString& error) override;
    bool addDefault(QString& error) override;
    bool deleteRow(int row, QString& error) override;
    QJsonArray toJson() const override;
    bool fromJson(const QJsonArray& steps, QString& error) override;
    quint64 fingerprint() const override;
    bool insertDefault(int row, QString& error) override;
    bool repeatRow(int row, QString& error) override;
    bool moveRow(int row, int by, QString& error) override;

    /// Null outside the list.
    Point* pointAt(int row) const;

    std::vector<Point*>* points() { return m_points; }
    const std::vector<Point*>* points() const { return m_points; }

    /// Gives the steps their numbers from 1 and marks the last one. Needed after a change of the vector from outside.
    void renumber();

    /// Deletes all steps.
    void destroyPoints();

protected:
    struct Messages {
        const char* noStorage;
        const char* noRow;
        const char* onlyStep;
        const char* fileEmpty;
        const char* fileWithoutSteps;
    };

    StepListModel(std::vector<Point*>* points, const Messages& messages, std::vector<ListColumn> columns)
        : m_points(points), m_messages(messages), m_columns(std::move(columns)) {}

    void setColumnEditable(int index, bool editable) { m_columns[static_cast<std::size_t>(index)].editable = editable; }

    virtual const JsonMembers<Point>& jsonMembers() const = 0;

    /// A step of which a file says nothing.
    virtual Point blankPoint() const = 0;

    /// What addDefault() appends.
    virtual Point defaultPoint() const = 0;

    /// Checks a step as a file has it and brings it into the form of the list. False, with a sentence, refuses the
    /// whole file.
    [[nodiscard]] virtual bool acceptRead(Point& point, QString& error) const = 0;

private:
    bool insertBehind(int row, const Point& point, QString& error);

    std::vector<Point*>* const m_points;
    const Messages m_messages;
    std::vector<ListColumn> m_columns;
};

extern template class StepListModel<list_point>;
extern template class StepListModel<pattern_point>;
