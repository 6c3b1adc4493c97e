#include "rig/tourguide.h"

#include "portable/update/update_dialog.h"
#include "portable/widgets/ToastOverlay.h"

#include <QAbstractButton>
#include <QCoreApplication>
#include <QGraphicsEffect>
#include <QPainter>

using namespace Kavor::HandheldGui;

void TourGuide::start(const PanelFixture::Setup& setup) {
    m_panel.reset();
    m_panel = std::make_unique<PanelFixture>(setup);
    module([](ChannelRecord& r) {
        r.frequency.value = 1.5e9;
        r.power.value = -7.5;
        r.batteryCharge = 78;
        r.batteryCurrent = -300;
    });
}

void TourGuide::press(const QString& name) {
    if (!panel().press(name))
        qFatal("%s cannot be pressed.", qPrintable(name));
}

void TourGuide::module(const std::function<void(ChannelRecord&)>& change) {
    panel().module().modify(0, change);
    panel().window().refreshFromModule();
}

void TourGuide::shot(const QString& name, QWidget* above) {
    QCoreApplication::processEvents();
    QWidget& window = panel().window();
    const auto onScreen = [&window](const QWidget& widget) {
        return widget.mapToGlobal(QPoint()) - window.mapToGlobal(QPoint());
    };
    QWidget& shown = above ? *above : window;
    PanelTour::Stop stop{name, &shown, onScreen(shown), window.grab(), QRect()};
    QPainter painter(&stop.picture);
    if (above)
        painter.drawPixmap(stop.origin, above->grab());
    ToastOverlay* toast = panel().window().toast();
    if (toast->isTelling()) {
        QPixmap bubble(toast->size());
        bubble.fill(Qt::transparent);
        toast->graphicsEffect()->setEnabled(false);
        toast->render(&bubble, QPoint(), QRegion(), QWidget::DrawChildren);
        stop.toast = QRect(onScreen(*toast), toast->size());
        painter.setClipRegion(toast->mask().translated(stop.toast.topLeft()));
        painter.drawPixmap(stop.toast.topLeft(), bubble);
    }
    painter.end();
    visit(stop);
}

void TourGuide::pressedShot(const QString& name) {
    auto* button = panel().widget<QAbstractButton>(name);
    button->setDown(true);
    shot(QStringLiteral("pressed-") + name);
    button->setDown(false);
}

void TourGuide::visit(const PanelTour::Stop& stop) {
    ++m_count;
    m_visit(stop);
}

void TourGuide::dialogShot(const QString& name, DialogKind kind, const std::function<void()>& open) {
    panel().dialogs().expect(kind, QString(), [this, name](QDialog& dialog) {
        shot(name, &dialog);
        if (auto* update = qobject_cast<UpdateDialog*>(&dialog))
            update->end(); // nothing but its work's end closes it
        else
            dialog.reject();
    });
    open();
    QCoreApplication::processEvents(); // some boxes come from the event loop
    const QStringList problems = panel().dialogs().problems();
    if (!problems.isEmpty())
        qFatal("%s: %s", qPrintable(name), qPrintable(problems.join("; ")));
}
