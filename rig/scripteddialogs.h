#pragma once

#include "portable/widgets/dialogs.h"

#include <QMessageBox>
#include <QStringList>
#include <deque>
#include <functional>

/// Answers the panel's dialogs in place of a user: every dialog really opens and is answered by pressing its own
/// buttons. A dialog that was not expected, or an answer that nobody asked for, is a problem that fails the test.
class ScriptedDialogs : public Kavor::HandheldGui::DialogRunner {
public:
    using Answer = std::function<void(QDialog&)>;

    ScriptedDialogs();
    ~ScriptedDialogs() override;

    /// The next dialog must be of that kind, and its text must contain the given one.
    void expect(Kavor::HandheldGui::DialogKind kind, const QString& text, const Answer& answer);

    /// Presses the named keys of the next keyboard, in order: {"key1", "keyDot", "key5", "keyUnit0"}.
    void expectKeys(const QString& title, const QStringList& keys);

    /// Types a number and ends with the named key.
    void expectNumber(const QString& title, const QString& number, const QString& endKey);

    /// Presses a standard button of the next box.
    void expectButton(Kavor::HandheldGui::DialogKind kind, const QString& text, QMessageBox::StandardButton button);

    /// What was asked, as "kind: text".
    const QStringList& asked() const { return m_asked; }

    /// What went wrong, expectations that nothing asked for included; empty when all went as scripted.
    QStringList problems() const;

protected:
    int execute(QDialog& dialog, Kavor::HandheldGui::DialogKind kind, const QString& text) override;

private:
    struct Expected {
        Kavor::HandheldGui::DialogKind kind;
        QString text;
        Answer answer;
    };

    std::deque<Expected> m_expected;
    QStringList m_asked;
    QStringList m_problems;
};

/// Presses a visible, enabled button of a window as a finger does; false when there is none of that name.
bool pressButton(QWidget& window, const QString& name);
