#pragma once

#include "common/update/fpga_board_state.h"

#include <QWidget>
#include <vector>

class QLabel;

namespace Kavor::HandheldGui {

/// One row a board: its number and address, how far it is, and what it does as a shape and a word. GUI thread.
class BoardRows : public QWidget {
    Q_OBJECT

public:
    explicit BoardRows(QWidget* parent, const QVector<QHostAddress>& boards);

    /// One state a board, in the order in which the addresses were given.
    void setStates(const FpgaBoardStates& states);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QRect rowPlace(int row) const;

    FpgaBoardStates m_states;
    std::vector<QLabel*> m_words;
};

} // namespace Kavor::HandheldGui
