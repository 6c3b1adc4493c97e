#pragma once

#include "common/instrument/channel_record.h"
#include "portable/screens/iguiscreen.h"

#include <QString>
#include <functional>

class QLabel;

namespace Kavor::HandheldGui {

/// A screen with a group of label and value pairs that follow the cached record.
class ReadoutScreen : public IGuiScreen {
    Q_OBJECT

public:
    struct Row {
        QString label;
        std::function<QString(const ChannelRecord&)> value;
    };

    /// header: the header text, empty to leave it as it is.
    ReadoutScreen(QWidget* parent, std::vector<STATE> states, const QString& pageName, const QString& header,
                  const QString& title, const std::vector<Row>& rows);

    void update_from_config(STATE state) override;
    void show() override;
    void hide() override;

private:
    QWidget* m_page;
    QString m_header;
    std::vector<Row> m_rows;
    std::vector<QLabel*> m_values;
};

/// A text of the record as a label shows it.
template <std::size_t N>
QString recordQText(const char (&field)[N]) {
    return QString::fromStdString(recordText(field));
}

} // namespace Kavor::HandheldGui
