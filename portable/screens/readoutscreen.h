#pragma once

#include "portable/screens/iguiscreen.h"
#include "portable/screens/readoutgroup.h"

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

} // namespace Kavor::HandheldGui
