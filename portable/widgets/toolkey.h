#pragma once

#include "portable/widgets/lineicons.h"

#include <QPushButton>

namespace Kavor::HandheldGui {

/// A button with a sign above its word. GUI thread.
class ToolKey : public QPushButton {
    Q_OBJECT

public:
    ToolKey(QWidget* parent, LineIcon icon, const QString& text, const QString& name);

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace Kavor::HandheldGui
