#pragma once

#include <QLineEdit>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <functional>
#include <utility>

class MessageSink;
class QComboBox;

namespace Kavor::HandheldGui {

class VirtKeyboard;

/// What every value editor shares: a field that opens the on-screen keyboard when it is touched and takes the entry and
/// its unit back. It is not typed into directly. A disabled editor does not open; a touch while its keyboard is open is
/// swallowed. The entry may be no number: what to do about that, and about ranges, is for whoever hears valueChanged().
/// GUI thread.
class ValueEdit : public QLineEdit {
    Q_OBJECT

public:
    /// What the keyboard says is edited.
    void setTitle(const QString& title) { m_title = title; }
    const QString& title() const { return m_title; }

    /// The box with the units of the field, which become unit keys; not owned. An entry sets it without its signals, so
    /// that one entry is one change. It is left alone when the entry is no number.
    void setUnitBox(QComboBox* box);
    QComboBox* unitBox() const;

    /// The unit keys of a field without a unit box; the first is the unit of the value shown.
    void setUnitNames(const QStringList& names) { m_unitNames = names; }
    const QStringList& unitNames() const { return m_unitNames; }

    /// Gives what may be entered, for the keyboard to show; asked for when it opens.
    void setRangeText(std::function<QString()> range) { m_range = std::move(range); }

    /// Shows the number in groups of three figures, a thin gap between them. The text is what it was.
    void setGrouped(bool grouped) { m_grouped = grouped; }

    /// A few words at the left of the value, such as "=" before one that is calculated.
    void setMark(const QString& mark);

    /// Where the editor says what is wrong with an entry; may be null, not owned, and must outlive the editor's edits.
    void setMessageSink(MessageSink* sink) { m_sink = sink; }

    /// True from the touch until everything that valueChanged() started has come back.
    bool isEditing() const { return m_editing; }

    /// Opens the keyboard as a touch does, in its turn if a command waits; nothing while the editor is disabled or its
    /// keyboard is open.
    void openKeyboard();

    /// The unit that the last entry was made in.
    const QString& chosenUnit() const { return m_chosenUnit; }

signals:
    /// Enter or a unit key closed the keyboard; text and unit box hold the entry.
    void valueChanged();

    /// The edit is over, whatever became of it; isEditing() is false again.
    void keyboardClosed();

protected:
    enum class Units { Optional, BoxNeeded };

    /// unit: shown by the keyboard where the field has neither box nor unit keys.
    ValueEdit(QWidget* parent, Units units, const QString& unit = QString());

    bool event(QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

    /// Prepares a keyboard that is about to open.
    virtual void prepare(VirtKeyboard& keyboard) { Q_UNUSED(keyboard) }

    /// Turns the entry, which is text() already, into what the field shows; false withdraws it, before is put back and
    /// valueChanged() is not emitted.
    virtual bool takeEntry(const QString& unit) {
        Q_UNUSED(unit)
        return true;
    }

    MessageSink* messageSink() const { return m_sink; }

private:
    void edit();
    bool runKeyboard();
    void selectUnit(const QString& unit);

    const Units m_units;
    const QString m_fixedUnit;
    QString m_title;
    QString m_chosenUnit;
    QStringList m_unitNames;
    std::function<QString()> m_range;
    QPointer<QComboBox> m_unitBox;
    MessageSink* m_sink = nullptr;
    QString m_mark;
    bool m_grouped = false;
    bool m_editing = false;
};

} // namespace Kavor::HandheldGui
