#pragma once

#include "portable/widgets/state.h"

#include <QWidget>
#include <vector>

class QLabel;
class QMovie;

namespace Kavor::HandheldGui {

class ChannelKey;
class IntfButton;
class PanelHost;

/// The header row: the function buttons, the mark of a lost link, temperature and battery. GUI thread.
class FuncButtonWidget : public QWidget {
    Q_OBJECT

public:
    /// parent: the main window.
    explicit FuncButtonWidget(PanelHost* parent);

    const std::vector<IntfButton*>& buttons() const { return m_buttons; }

    /// Moves the pressed look to the button that stands for the state.
    void update_static_controls(STATE state);

    /// Shows a battery reading, in percent; above 100 means that there is none. Takes the battery's current (negative
    /// while it discharges) and the low-battery threshold from the cached record, and warns once a discharge.
    void set_battery_level(unsigned short percent);

    /// Does nothing: the temperature icon is a fixed picture.
    void set_temp_level(unsigned char level);

    /// Shows the key of the channels, in the thermometer's place, where there are several. current: from 0.
    void showChannel(unsigned channels, unsigned current, bool anyRadiates, bool open);

    ChannelKey* channelKey() const { return m_channel; }

    /// A few words on why what is shown may not be what the module does; empty when all is well.
    void setMark(const QString& words);

private:
    QLabel* addPicture(const QString& name, const QRect& geometry, const QString& resource);
    void setBatteryIcon(const QString& resource);
    void showMark();
    static void setPicture(QLabel* label, const QString& resource);

    PanelHost* m_host;
    std::vector<IntfButton*> m_buttons;
    QLabel* m_percent = nullptr;
    QLabel* m_charging = nullptr;
    QLabel* m_battery = nullptr;
    QLabel* m_temperature = nullptr;
    QLabel* m_mark = nullptr;
    ChannelKey* m_channel = nullptr;
    bool m_several = false; ///< channels
    QMovie* m_lowBattery = nullptr;
    bool m_warnArmed = true;        ///< the next low reading may warn
    bool m_warnedSinceRise = false; ///< this discharge has warned already
    unsigned short m_lastPercent = 0;
};

} // namespace Kavor::HandheldGui
