#pragma once

#include "common/wire/channel_record.h"
#include "portable/host/screentexts.h"
#include "portable/widgets/pagegroup.h"
#include "portable/widgets/styles/tokens.h"

#include <QString>
#include <functional>
#include <vector>

namespace Kavor::HandheldGui {

/// A group of label and value pairs that follow a record. A value that is too wide for its place is shown smaller, and
/// at worst on two lines. GUI thread.
class ReadoutGroup : public PageGroup {
    Q_OBJECT

public:
    struct Row {
        QString label;
        QString name; ///< object name of the value
        std::function<QString(const ChannelRecord&)> value;
        bool ofModule = true; ///< greyed when the module cannot be reached
    };

    static constexpr int RowHeight = Style::TableRowHeight;

    /// valueX: where the values begin, in pixels of the group.
    ReadoutGroup(QWidget* parent, const QString& title, const QRect& geometry, int valueX,
                 const std::vector<Row>& rows);

    void readFrom(const ChannelRecord& record);

    /// Where what comes below the rows may begin.
    int rowsEnd() const;

private:
    std::vector<Row> m_rows;
    void showRow(std::size_t row);

    std::vector<QLabel*> m_values;
    std::vector<QString> m_texts; ///< of the record, whether it can be trusted or not
};

/// A text of the record as a label shows it.
template <std::size_t N>
QString recordQText(const char (&field)[N]) {
    return onOneLine(QString::fromStdString(recordText(field)));
}

/// The value of a row that shows a text of the record as it is.
template <std::size_t N>
std::function<QString(const ChannelRecord&)> textField(char (ChannelRecord::*field)[N]) {
    return [field](const ChannelRecord& record) {
        return recordQText(record.*field);
    };
}

} // namespace Kavor::HandheldGui
