#pragma once

#include "portable/widgets/vklineedit.h"

namespace Kavor::HandheldGui {

/// A frequency with its unit box, without which it does not open.
class vkFreqEdit : public ValueEdit {
    Q_OBJECT

public:
    explicit vkFreqEdit(QWidget* parent = nullptr);
};

/// A time with its unit box, without which it does not open.
class vkTimeEdit : public ValueEdit {
    Q_OBJECT

public:
    explicit vkTimeEdit(QWidget* parent = nullptr);
};

/// A power in dBm, which can be entered in any unit of power. A voltage that is not above zero is told to the message
/// sink and not taken.
class vkPowerEdit : public ValueEdit {
    Q_OBJECT

public:
    explicit vkPowerEdit(QWidget* parent = nullptr);

protected:
    bool takeEntry(const QString& unit) override;
};

class vkPercentEdit : public ValueEdit {
    Q_OBJECT

public:
    explicit vkPercentEdit(QWidget* parent = nullptr);
};

/// A phase in degrees.
class vkPhaseEdit : public ValueEdit {
    Q_OBJECT

public:
    explicit vkPhaseEdit(QWidget* parent = nullptr);
};

class vkNoUnitsEdit : public ValueEdit {
    Q_OBJECT

public:
    explicit vkNoUnitsEdit(QWidget* parent = nullptr);
};

/// An IPv4 address or mask; only complete ones are taken.
class vkIPEdit : public ValueEdit {
    Q_OBJECT

public:
    explicit vkIPEdit(QWidget* parent = nullptr);

protected:
    void prepare(VirtKeyboard& keyboard) override;
};

} // namespace Kavor::HandheldGui
