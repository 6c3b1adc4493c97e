#pragma once

#include <QLineEdit>

class QRegularExpressionValidator;
class QTimer;

namespace Kavor::HandheldGui {

/// The large entry of the on-screen keyboard and what its keys do to it. The state is the line edit's own: its text,
/// its cursor and its selection. Selected means "the next key replaces": the whole text before the first key; later one
/// character, which what is typed replaces to select the next. The point of a number or an address is stepped over, it
/// is never that character. It takes no input but through these operations. GUI thread.
class KeyboardEntry : public QLineEdit {
    Q_OBJECT

public:
    enum class Mode {
        Number,  ///< sign, digits, at most one point
        Address, ///< four parts of 0 to 255 with points between them
        Text     ///< letters, digits, blank, minus and underscore, for names of files
    };

    explicit KeyboardEntry(QWidget* parent);

    /// maxLength in characters; 0 for no bound of its own.
    void setMode(Mode mode, int maxLength = 0);
    Mode mode() const { return m_mode; }

    /// Shows the present value; an exponent is written out. Unless it is empty, the next character, point or sign
    /// replaces it.
    void start(const QString& text);

    /// Types a character that the mode allows; anything else is refused, as are a second leading zero and what makes a
    /// part of an address too large.
    void type(QChar character);
    /// Puts the point where the cursor is: a number has at most one, so an earlier one goes.
    void typePoint();
    void toggleSign();
    void back();
    /// Empties the entry and takes the focus; nothing on an empty entry.
    void wipe();
    void moveLeft();
    void moveRight();

    /// Address: goes on to the next part. An address that still lacks parts gets a point; otherwise the part at the
    /// cursor is selected, or the next one if it is selected already, the first after the last. Typing replaces it.
    void nextPart();

    /// False for what is no number, and for an address that is not four parts yet.
    bool isComplete() const;

    /// Shows for a moment that a key had no effect.
    void refuse();
    bool isRefusing() const;

signals:
    void refusingChanged();

protected:
    void paintEvent(QPaintEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    bool allows(QChar character) const;
    void beginTyping();
    void keepValue();
    bool isOverwriting() const { return selectionLength() == 1; }
    void typeDigit(QChar digit);
    void insert(QChar character);
    bool put(const QString& text);
    void selectBefore(int cursor, int step);
    void typeAddressPoint();
    void fitFont();

    Mode m_mode = Mode::Number;
    int m_bound = 0;
    bool m_firstKey = false;
    QRegularExpressionValidator* m_validator;
    QTimer* m_refusing;
};

} // namespace Kavor::HandheldGui
