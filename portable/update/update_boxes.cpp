#include "portable/update/update_boxes.h"

#include "portable/update/update_dialog.h"
#include "portable/widgets/breakable.h"
#include "portable/widgets/dialogs.h"
#include "portable/widgets/styles/tokens.h"

#include <QLabel>
#include <QLayout>
#include <QMessageBox>
#include <QThread>
#include <QTimer>
#include <memory>

namespace Kavor::HandheldGui {

namespace {

constexpr int LongestWord = 40;

void show(QWidget* parent, DialogKind kind, const QString& title, const QString& text) {
    QMessageBox box(parent);
    box.setObjectName(QStringLiteral("updateBox"));
    box.setWindowTitle(title);
    box.setTextFormat(Qt::PlainText); // a path is what it is
    box.setText(breakable(text, LongestWord));
    box.setStandardButtons(QMessageBox::Ok);
    box.setDefaultButton(QMessageBox::Ok);
    dressBox(box, WideBoxText);
    // A frameless box shows no title of its own. The place of a menu bar is the one above a layout.
    auto* heading = new QLabel(title, &box);
    heading->setAlignment(Qt::AlignHCenter | Qt::AlignBottom);
    heading->setFixedHeight(64);
    const QRgb colour = kind == DialogKind::Critical ? Style::Wrong : Style::Label;
    heading->setStyleSheet(QStringLiteral("QLabel { color: %1; font-weight: 600; }").arg(Style::css(colour)));
    box.layout()->setMenuBar(heading);
    DialogRunner::current().run(box, kind, text);
}

} // namespace

void ShortWait::run() {
    if (m_ended)
        return;
    QTimer::singleShot(m_longestMs, &m_loop, &QEventLoop::quit);
    m_loop.exec(QEventLoop::ExcludeUserInputEvents);
}

void ShortWait::end() {
    m_ended = true;
    m_loop.quit();
}

void UpdateBoxes::failure(const QString& text) const {
    show(m_parent, DialogKind::Critical, m_title, text);
}

void UpdateBoxes::information(const QString& text) const {
    show(m_parent, DialogKind::Information, m_title, text);
}

void UpdateBoxes::runAside(const QString& text, const std::function<void()>& work) const {
    UpdateDialog dialog(m_parent, QStringLiteral("asideProgress"), text);
    ShortWait wait(m_patienceMs);
    const std::unique_ptr<QThread> thread(QThread::create(work));
    // The dialog hears of it first: the wait's end must not let a dialog flash up that has nothing to say.
    QObject::connect(thread.get(), &QThread::finished, &dialog, &UpdateDialog::end);
    QObject::connect(thread.get(), &QThread::finished, &wait, &ShortWait::end);
    thread->start();
    wait.run();
    dialog.run();
    thread->wait();
}

} // namespace Kavor::HandheldGui
