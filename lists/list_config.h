#pragma once

#include <QJsonArray>
#include <QMetaType>
#include <QString>
#include <QStringList>

/// What a column of a list holds.
enum class ListColumnKind { Step = 0, Frequency = 1, Power = 2, Time = 3, Count = 4, Choice = 5 };

struct ListColumn {
    QString title;
    ListColumnKind kind = ListColumnKind::Step;
    bool editable = false;
};

/// What a value editor needs to edit one cell. Travels in queued signals.
struct ListEditRequest {
    int row = -1;
    int column = -1;
    ListColumnKind kind = ListColumnKind::Step;
    QString title;
    QString text;        ///< the present number or choice
    QString unit;        ///< its unit, or the choice again
    QStringList options; ///< units or choices to choose from
    double min = 0;      ///< limits in dBm or nanoseconds, of a power and of a dwell
    double max = 0;
    bool powerRange = false; ///< the power column
    bool enabled = true;
};
Q_DECLARE_METATYPE(ListEditRequest)

/// What a value editor gives back: the number or the choice, and the unit.
struct ListEditValue {
    QString text;
    QString unit;
};

/// A list of steps that can be shown as a table, edited cell by cell and kept in a file, whatever its steps are. Rows
/// and columns count from 0; a list never becomes empty by deleting. What fails returns false, leaves the list as it
/// was and gives a sentence for the user. GUI thread.
///
/// What changes on screen: addDefault() the new last row; deleteRow(r) the rows from r on; applyEdit() the row of the
/// request; insertDefault(r) and repeatRow(r) the rows behind r; moveRow() both rows; clearAndCreateDefault() and
/// fromJson() everything.
class IListConfig {
public:
    virtual ~IListConfig() = default;
    IListConfig(const IListConfig&) = delete;
    IListConfig& operator=(const IListConfig&) = delete;

    virtual int kind() const = 0; ///< 0 for a frequency list, 1 for a pattern

    /// The key that holds the steps in a file.
    virtual QString jsonRootName() const = 0;

    virtual int rowCount() const = 0;
    virtual int columnCount() const = 0;

    /// A column without a title, not editable, for an index outside the table.
    virtual ListColumn column(int index) const = 0;

    /// Empty outside the table.
    virtual QString cellText(int row, int column) const = 0;

    virtual bool isCellEditable(int row, int column) const;

    /// False, with the request left alone, for a cell that cannot be edited.
    [[nodiscard]] virtual bool getEditRequest(int row, int column, ListEditRequest& request) const = 0;

    /// Checks a value and stores it in the cell that the request names. Numbers are stored in their best unit, powers
    /// in dBm.
    [[nodiscard]] virtual bool applyEdit(const ListEditRequest& request, const ListEditValue& value,
                                         QString& error) = 0;

    /// Replaces all steps by one default step.
    [[nodiscard]] virtual bool clearAndCreateDefault(QString& error) = 0;

    /// Appends a default step.
    [[nodiscard]] virtual bool addDefault(QString& error) = 0;

    [[nodiscard]] virtual bool deleteRow(int row, QString& error) = 0;

    /// One object a step, as the step stands.
    virtual QJsonArray toJson() const = 0;

    /// Replaces all steps by those of a file. Elements that are no objects are skipped, missing members take their
    /// defaults, limits are not applied. A list that is refused leaves the present one alone.
    [[nodiscard]] virtual bool fromJson(const QJsonArray& steps, QString& error) = 0;

    /// What an edit that gave the cell its present value would be told; empty for a value within the limits, outside
    /// the table, and where the limits are 0 and 0 or the lower one is above the upper one. A file can bring in
    /// anything.
    virtual QString cellProblem(int row, int column) const;

    /// "Step 3: " and the first problem of a cell; empty when there is none.
    QString firstProblem() const;

    /// A number that stays the same as long as all that a file keeps of the steps does. Some 100 ns a step.
    virtual quint64 fingerprint() const { return 0; }

    /// Puts a default step behind a row.
    [[nodiscard]] virtual bool insertDefault(int row, QString& error);

    /// Puts the same step behind a row once more.
    [[nodiscard]] virtual bool repeatRow(int row, QString& error);

    /// Lets a row change places with the one before it (by -1) or behind it (by 1).
    [[nodiscard]] virtual bool moveRow(int row, int by, QString& error);

protected:
    IListConfig();

    /// Whether limits are limits, and the value is not within them.
    static bool isOutside(double minimum, double maximum, double value);

    /// The text of a number as an editor opens with it: the usual one if it reads as that very number, otherwise all
    /// its digits. Never with an exponent.
    static QString editText(double value, const QString& usual);

    /// A request for a cell, filled as far as its column tells.
    ListEditRequest requestFor(int row, int column) const;

    /// Sets the sentence; false.
    static bool fail(QString& error, const char* sentence);
};
