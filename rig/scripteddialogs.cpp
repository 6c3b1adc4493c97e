#include "rig/scripteddialogs.h"

#include "tests/support/patience.h"

#include <QAbstractButton>
#include <QTest>
#include <QTimer>

using namespace Kavor::HandheldGui;

namespace {

constexpr int DialogMustEndMs = 10000;

QString kindName(DialogKind kind) {
    switch (kind) {
    case DialogKind::Keyboard:
        return QStringLiteral("keyboard");
    case DialogKind::Question:
        return QStringLiteral("question");
    case DialogKind::Information:
        return QStringLiteral("information");
    case DialogKind::Critical:
        return QStringLiteral("critical");
    case DialogKind::Progress:
        return QStringLiteral("progress");
    }
    return QString();
}

} // namespace

bool pressButton(QWidget& window, const QString& name) {
    auto* button = window.findChild<QAbstractButton*>(name);
    if (!button || !button->isVisible() || !button->isEnabled())
        return false;
    QTest::mouseClick(button, Qt::LeftButton);
    return true;
}

ScriptedDialogs::ScriptedDialogs() {
    install(this);
}

ScriptedDialogs::~ScriptedDialogs() {
    install(nullptr);
}

void ScriptedDialogs::expect(DialogKind kind, const QString& text, const Answer& answer) {
    m_expected.push_back({kind, text, answer});
}

void ScriptedDialogs::expectKeys(const QString& title, const QStringList& keys) {
    expect(DialogKind::Keyboard, title, [this, keys](QDialog& dialog) {
        for (const QString& key : keys) {
            if (!pressButton(dialog, key))
                m_problems << QStringLiteral("no key to press: ") + key;
        }
    });
}

void ScriptedDialogs::expectNumber(const QString& title, const QString& number, const QString& endKey) {
    QStringList keys;
    for (const QChar c : number) {
        if (c == QLatin1Char('.'))
            keys << QStringLiteral("keyDot");
        else if (c != QLatin1Char('-'))
            keys << QStringLiteral("key") + c;
    }
    if (number.startsWith(QLatin1Char('-')))
        keys << QStringLiteral("keySign");
    expectKeys(title, keys << endKey);
}

void ScriptedDialogs::expectButton(DialogKind kind, const QString& text, QMessageBox::StandardButton button) {
    expect(kind, text, [this, button](QDialog& dialog) {
        auto* box = qobject_cast<QMessageBox*>(&dialog);
        QAbstractButton* target = box ? box->button(button) : nullptr;
        if (target)
            QTest::mouseClick(target, Qt::LeftButton);
        else
            m_problems << QStringLiteral("no such button in: ") + dialog.objectName();
    });
}

QStringList ScriptedDialogs::problems() const {
    QStringList all = m_problems;
    for (const Expected& expected : m_expected)
        all << QStringLiteral("never asked: ") + kindName(expected.kind) + QStringLiteral(": ") + expected.text;
    return all;
}

int ScriptedDialogs::execute(QDialog& dialog, DialogKind kind, const QString& text) {
    const QString asked = kindName(kind) + QStringLiteral(": ") + text;
    m_asked << asked;
    Answer answer;
    if (m_expected.empty() || m_expected.front().kind != kind || !text.contains(m_expected.front().text)) {
        m_problems << QStringLiteral("not expected: ") + asked;
    } else {
        answer = m_expected.front().answer;
        m_expected.pop_front();
    }
    QTimer::singleShot(0, &dialog, [&dialog, answer] {
        if (answer)
            answer(dialog);
        else
            dialog.reject();
    });
    QTimer::singleShot(DialogMustEndMs * patience(), &dialog, [this, &dialog, asked] {
        m_problems << QStringLiteral("left open: ") + asked;
        dialog.reject();
    });
    return dialog.exec();
}
