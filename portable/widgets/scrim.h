#pragma once

#include <QPointer>
#include <QWidget>

namespace Kavor::HandheldGui {

/// Dims a window while a dialog stands above it, for as long as this object lives. Nothing without a window.
class Scrim {
public:
    explicit Scrim(QWidget* window);
    ~Scrim();

    Scrim(const Scrim&) = delete;
    Scrim& operator=(const Scrim&) = delete;

private:
    QPointer<QWidget> m_cover;
};

} // namespace Kavor::HandheldGui
