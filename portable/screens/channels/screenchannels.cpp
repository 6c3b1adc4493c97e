#include "portable/screens/channels/screenchannels.h"

#include "common/instrument/handlerscpi.h"
#include "common/instrument/modulations.h"
#include "portable/host/channels.h"
#include "portable/host/panelhost.h"
#include "portable/host/screentexts.h"
#include "portable/screens/channels/channelrow.h"
#include "portable/widgets/actiongate.h"
#include "portable/widgets/freshness.h"
#include "portable/widgets/listpage.h"
#include "portable/widgets/pagegroup.h"
#include "portable/widgets/pressfilter.h"
#include "portable/widgets/styles/styles.h"
#include "portable/widgets/styles/tokens.h"
#include "values/formatting.h"

#include <QLabel>
#include <QPushButton>

namespace Kavor::HandheldGui {

namespace {

constexpr int RowX = 16;
constexpr int RowsTop = 48;
constexpr int RowWidth = 1200;
constexpr int RowPitch = 100;
constexpr int RowHeight = RowPitch - Style::Gap;
constexpr int FooterTop = RowsTop + 4 * RowPitch + 18;
constexpr int AllOffWidth = 228;
constexpr unsigned MostChannels = 4;

struct Heading {
    const char* text;
    int x;
};

constexpr Heading Headings[] = {{"Channel", ChannelRow::Name},
                                {"Frequency", ChannelRow::Frequency},
                                {"Power", ChannelRow::Power},
                                {"RF", ChannelRow::Rf + 8},
                                {"Mode", ChannelRow::Mode}};

/// What runs, by name, or "CW".
QString modeOf(const ChannelRecord& record, bool& runs) {
    QStringList names;
    for (const Modulation& kind : Modulations) {
        if (record.*kind.running == 1)
            names << QLatin1String(kind.name);
    }
    runs = !names.isEmpty();
    return runs ? names.join(QStringLiteral(", ")) : QStringLiteral("CW");
}

} // namespace

channelsScreen::channelsScreen(QWidget* parent, std::vector<STATE> states)
    : IGuiScreen(parent, std::move(states)),
      m_page(makePage(QStringLiteral("pageChannels"))),
      m_group(
          new PageGroup(m_page, QString(), QRect(Style::PageMargin, 0, Style::ContentWidth, Style::ContentHeight))) {
    for (const Heading& heading : Headings) {
        QLabel* label =
            m_group->addLabel(RowX + heading.x, 8, 160, Style::CaptionHeight, QString::fromLatin1(heading.text));
        applySheet(label, WIDGET_COMM_STYLE);
    }
    for (unsigned channel = 0; channel < MostChannels; ++channel) {
        auto* row = new ChannelRow(m_group, QStringLiteral("CH %1").arg(channel + 1));
        row->setObjectName(QStringLiteral("channel%1").arg(channel + 1));
        row->setGeometry(RowX, RowsTop + static_cast<int>(channel) * RowPitch, RowWidth, RowHeight);
        m_group->addLine({RowX, row->y() + RowHeight + Style::Gap / 2, RowWidth, 1});
        connect(row, &ChannelRow::clicked, this, [this, row, channel] {
            ActionGate::panel().ask(row, [this, channel] { host().selectChannel(channel); });
        });
        m_rows.push_back(row);
    }
    m_count = m_group->addLabel(RowX + ChannelRow::Name, FooterTop, 600, Style::ButtonHeight, QString());
    m_count->setObjectName(QStringLiteral("channelsCount"));
    applySheet(m_count, WIDGET_LBL_BOLD_STYLE);
    m_allOff = makeButton(m_group, QStringLiteral("All RF off"), QStringLiteral("channelsAllOff"));
    m_allOff->setGeometry(Style::ContentWidth - 24 - AllOffWidth, FooterTop, AllOffWidth, Style::ButtonHeight);
    PressFilter::takeEveryPress(m_allOff);
    connect(m_allOff, &QPushButton::clicked, this, [this] {
        ActionGate::panel().ask(
            m_allOff, [this] { switchAllOff(); }, ActionGate::Kind::OffAll);
    });
}

void channelsScreen::update_from_config(STATE) {
    if (m_page->isHidden())
        return;
    const std::vector<ChannelRecord> records = handler().publishedRecords();
    int on = 0;
    for (unsigned channel = 0; channel < MostChannels; ++channel) {
        ChannelRow& row = *m_rows[channel];
        row.setChosen(channel == handler().currentChannel());
        row.setVisible(channel < handler().channelCount());
        if (channel >= records.size())
            continue;
        const ChannelRecord& record = records[channel];
        ChannelRow::Facts facts;
        facts.frequency = formatFrequency(record.frequency.value, "Hz");
        facts.power = fixedNumber(record.power.value, 2) + QStringLiteral(" dBm");
        facts.mode = modeOf(record, facts.runs);
        facts.connected = record.connected != 0;
        facts.radiates = record.rfOutput == 1;
        facts.stale = !handler().isLinkUp();
        row.setFacts(facts);
        on += facts.radiates ? 1 : 0;
    }
    m_count->setText(QStringLiteral("%1 of %2 outputs on").arg(on).arg(handler().channelCount()));
}

void channelsScreen::switchAllOff() {
    Channels all;
    const std::vector<ChannelRecord> records = handler().publishedRecords();
    for (unsigned channel = 0; channel < handler().channelCount(); ++channel) {
        // Without a module there is nothing to switch, and nobody to answer.
        const bool absent =
            channel < records.size() && records[channel].connected == 0 && records[channel].rfOutput != 1;
        if (!absent)
            all.push_back(channel);
    }
    const Channels failed = switchOff(host(), all);
    if (!failed.empty())
        showToast(host(), QStringLiteral("RF is not off: channel %1").arg(channelNumbers(failed)));
    update_from_config(STATE_CHANNELS);
}

void channelsScreen::show() {
    host().setHeaderBar(QStringLiteral("   Channels - Touch a channel to show it on every screen"));
    m_page->show();
    update_from_config(STATE_CHANNELS);
}

void channelsScreen::hide() {
    m_page->hide();
}

} // namespace Kavor::HandheldGui
