#include "portable/update/update_history.h"

#include "portable/host/screentexts.h"
#include "portable/widgets/lineicons.h"
#include "portable/widgets/styles/tokens.h"

#include <QLabel>
#include <QPainter>

namespace Kavor::HandheldGui {

namespace {

constexpr int TitleWidth = 172;
constexpr int WhatWidth = 208;
constexpr int EndX = TitleWidth + WhatWidth + LineIconSize + 2 * Style::Gap;

QLabel* makeLabel(QWidget* parent, const QString& name, QRgb colour, const char* weight = "normal") {
    auto* label = new QLabel(parent);
    label->setObjectName(name);
    label->setTextFormat(Qt::PlainText);
    label->setStyleSheet(QStringLiteral("QLabel { color: %1; font-size: %2px; font-weight: %3; }")
                             .arg(Style::css(colour))
                             .arg(Style::TextGroup)
                             .arg(QLatin1String(weight)));
    return label;
}

} // namespace

UpdateHistory::UpdateHistory(QWidget* parent, const UpdateMemory& memory)
    : QWidget(parent), m_memory(memory), m_title(makeLabel(this, QStringLiteral("historyTitle"), Style::Text, "504")) {
    m_title->setText(QStringLiteral("Last updates"));
    for (const PackageType kind : {PackageType::Software, PackageType::Fpga, PackageType::Module}) {
        const QString number = QString::number(m_lines.size());
        m_lines.push_back({kind, false, false, makeLabel(this, QStringLiteral("historyWhat") + number, Style::Label),
                           makeLabel(this, QStringLiteral("historyEnd") + number, Style::Text)});
    }
}

void UpdateHistory::showEvent(QShowEvent*) {
    refresh();
}

void UpdateHistory::resizeEvent(QResizeEvent*) {
    const int height = this->height() / static_cast<int>(m_lines.size());
    m_title->setGeometry(0, 0, TitleWidth, height);
    int y = 0;
    for (const Line& line : m_lines) {
        line.what->setGeometry(TitleWidth, y, WhatWidth, height);
        line.end->setGeometry(EndX, y, width() - EndX, height);
        y += height;
    }
}

void UpdateHistory::refresh() {
    const auto fitted = [](QLabel& label, const QString& text) {
        label.ensurePolished();
        label.setText(label.fontMetrics().elidedText(onOneLine(text), Qt::ElideMiddle, label.width()));
    };
    for (Line& line : m_lines) {
        const UpdateMemory::Last last = m_memory.last(line.kind);
        line.ended = !last.end.isEmpty();
        line.ok = last.ok;
        const QString kind = line.kind == PackageType::Software ? QStringLiteral("Software")
                             : line.kind == PackageType::Fpga   ? QStringLiteral("FPGA")
                                                                : QStringLiteral("RF module");
        fitted(*line.what, line.ended ? (kind + ' ' + last.version).trimmed() : kind);
        fitted(*line.end, line.ended ? last.end : QStringLiteral("none yet"));
    }
    update();
}

void UpdateHistory::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    for (const Line& line : m_lines) {
        if (!line.ended)
            continue;
        const QRect place = line.what->geometry();
        painter.drawPixmap(
            place.right() + Style::Gap, place.center().y() - LineIconSize / 2,
            linePixmap(line.ok ? LineIcon::Tick : LineIcon::Cross, line.ok ? Style::Text : Style::WrongText));
    }
}

} // namespace Kavor::HandheldGui
