#include "portable/widgets/scrim.h"

#include <QPainter>

namespace Kavor::HandheldGui {

namespace {

class Cover : public QWidget {
public:
    explicit Cover(QWidget* window) : QWidget(window) {
        setObjectName(QStringLiteral("scrim"));
        setAttribute(Qt::WA_TransparentForMouseEvents);
        setGeometry(window->rect());
        show();
        raise();
    }

protected:
    void paintEvent(QPaintEvent*) override { QPainter(this).fillRect(rect(), QColor(0, 0, 0, 150)); }
};

} // namespace

Scrim::Scrim(QWidget* window) {
    if (window)
        m_cover = new Cover(window);
}

Scrim::~Scrim() {
    delete m_cover;
}

} // namespace Kavor::HandheldGui
