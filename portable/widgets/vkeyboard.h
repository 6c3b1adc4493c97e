#pragma once

#include <QDialog>
#include <QMap>
#include <QPointer>
#include <QString>

class QLabel;
class QLineEdit;

namespace Kavor::HandheldGui {

class KeyboardEntry;
class VKButton;
namespace KeyboardLayout {
enum class Action;
struct Key;
} // namespace KeyboardLayout

/// The on-screen keyboard: a sheet in the upper left of the window that it is created over, which leaves the control
/// row free. It shows what is edited, the present value and its unit; the first character, point or sign replaces the
/// value. A unit key takes its unit and closes the dialog as Enter does. Keys act when they are let go. A keyboard
/// lives for one edit. GUI thread.
///
/// Object names: "keyboardTitle", "keyboardRange", "keyboardNow", "keyboardEntry", "keyboardUnit"; keys "key0".."key9",
/// "keyDot", "keySign", "keyBack", "keyClear", "keyLeft", "keyRight", "keyEnter", "keyEsc", "keyUnit0".."keyUnit3";
/// with addresses "keyIP" in place of "keySign"; with texts also "keyA".."keyZ", "keyMinus", "keyUnderscore",
/// "keySpace" and "keyShift".
class VirtKeyboard : public QDialog {
    Q_OBJECT

public:
    /// title, unit and value are those of the field; unit may be empty.
    VirtKeyboard(QWidget* parent, const QString& title, const QString& unit, const QString& value);

    /// The field that Enter writes the entry to; none by default, text() has it as well.
    void setLineEdit(QLineEdit* target);

    /// Offers a unit key, index 0 to 3; other indexes do nothing. A key with an empty text acts as Enter alone and is
    /// shown as "×1". Keys that are not set are not there.
    void setUnitsButtons(int index, const QString& text);

    /// Marks the unit key of the field's present unit; another index marks none.
    void setHighliteButton(int index);

    /// Takes an IPv4 address: each part 0 to 255; "IP" goes on to the next part. Enter waits for all four parts.
    void setIPMask();

    /// Takes the name of a file of so many characters at most: letters, digits, blank, minus, underscore.
    void setTextMode(int maxLength);

    void setEnterText(const QString& text);
    /// What may be entered, shown beside the title: "9 KHz to 6 GHz".
    void setRange(const QString& text);

    /// For fields that cannot be negative, or not fractional.
    void setSignEnabled(bool enabled);
    void setPointEnabled(bool enabled);

    /// Runs the keyboard modally. True if it was closed by Enter or a unit key.
    [[nodiscard]] bool ask();

    QString text() const;
    /// The unit of the key that was pressed, otherwise the present unit.
    const QString& chosenUnit() const { return m_unit; }
    bool isCancelled() const { return m_cancelled; }

public slots:
    void keyboardHandler(); ///< the text of the sending key is typed
    void kbUnitHandler();   ///< the text of the sending key becomes the unit
    void on_signButton_clicked();
    void on_backButton_clicked();
    void on_clear_clicked();
    void on_enterButton_clicked();
    void on_escButton_clicked();
    void on_dotButton_clicked();
    void on_LeftArrow_clicked();
    void on_RightArrow_clicked();

    void reject() override; ///< any way out but Enter cancels

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void placeKeys();
    VKButton* keyFor(const KeyboardLayout::Key& key);
    void connectKey(VKButton* key, KeyboardLayout::Action action);
    void setShifted(bool shifted);
    void updateKeys();
    QRect entryFrame() const;
    void placeEntry();

    QString m_title;
    QString m_unit;
    QString m_now;
    QString m_enterText;
    QMap<int, QString> m_unitTexts;
    int m_chosenUnit = -1;
    bool m_signEnabled = true;
    bool m_pointEnabled = true;
    bool m_shifted = false;
    bool m_cancelled = false;
    QPointer<QLineEdit> m_target;
    QLabel* m_titleLabel;
    QLabel* m_rangeLabel;
    QLabel* m_nowLabel; ///< the value that was there when the keyboard opened
    QLabel* m_unitLabel;
    KeyboardEntry* m_entry;
    QMap<QString, VKButton*> m_keys; ///< by object name; those that the present layout lacks are hidden
};

} // namespace Kavor::HandheldGui
