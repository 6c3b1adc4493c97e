#pragma once

#include <QAbstractButton>

namespace Kavor::HandheldGui {

/// One channel on the overview: what it puts out and what runs on it. The whole row is touched. GUI thread.
class ChannelRow : public QAbstractButton {
    Q_OBJECT

public:
    struct Facts {
        QString frequency; ///< number, one blank, unit
        QString power;     ///< as above
        QString mode;
        bool connected = false;
        bool radiates = false;
        bool runs = false;
        bool stale = false; ///< the module is out of reach: grey

        bool operator==(const Facts& other) const;
    };

    /// Where the columns of a row begin, in its own pixels.
    enum Column { Name = 24, State = 114, Frequency = 312, Power = 556, Rf = 764, Mode = 920 };

    /// name: "CH 1".
    ChannelRow(QWidget* parent, const QString& name);

    void setFacts(const Facts& facts);
    const Facts& facts() const { return m_facts; }

    /// The row is the channel that every screen shows.
    void setChosen(bool chosen);
    bool isChosen() const { return m_chosen; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    Facts m_facts;
    bool m_chosen = false;
};

} // namespace Kavor::HandheldGui
