#pragma once

#include <QPushButton>

namespace Kavor::HandheldGui {

/// The key of the header row that says which channel the screens show, and opens the overview: amber while any channel
/// radiates. What is wrong with the link stands in its second line. GUI thread.
class ChannelKey : public QPushButton {
    Q_OBJECT

public:
    explicit ChannelKey(QWidget* parent);

    /// radiates: some channel does. open: the overview is shown.
    void setLook(bool radiates, bool open);

    /// Empty when all is well.
    void setMark(const QString& words);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString m_mark;
    bool m_radiates = false;
    bool m_open = false;
};

} // namespace Kavor::HandheldGui
