#include "portable/update/listfirmware.h"

#include "portable/host/screentexts.h"
#include "portable/widgets/actiongate.h"
#include "portable/widgets/breakable.h"
#include "portable/widgets/listpage.h"
#include "portable/widgets/styles/tokens.h"

#include <QHeaderView>
#include <QTimer>
#include <array>

namespace Kavor::HandheldGui {

namespace {

enum Column { Number, Version, Device, Path, ColumnCount };
constexpr std::array<int, Path> ColumnWidths{96, 240, 176};
constexpr int MostCharacters = 255; ///< of a cell: a manifest may hold a text of any length
constexpr int LongestWord = 1;      ///< a text that is too wide may be broken behind every character
constexpr int CellPadding = 28;
constexpr int QuietSeconds = 3; ///< a look shorter than this is not counted

/// On one line, which the cell breaks into as many as it needs: packages may differ in their last letter.
QString whole(const QString& text) {
    QString line = onOneLine(text.left(10 * MostCharacters)).simplified();
    if (text.size() > 10 * MostCharacters || line.size() > MostCharacters)
        line = line.left(MostCharacters / 2) + QChar(0x2026) + onOneLine(text.right(MostCharacters / 2));
    return line;
}

} // namespace

fwList::fwList(QWidget* parent, PackageLook look)
    : QTableWidget(parent), m_scan(std::make_unique<PackageScan>(std::move(look))), m_second(new QTimer(this)) {
    setObjectName(QStringLiteral("fwList"));
    dressTable(*this);
    setColumnCount(ColumnCount);
    for (int column = 0; column < Path; ++column)
        setColumnWidth(column, ColumnWidths[static_cast<std::size_t>(column)]);
    horizontalHeader()->setSectionResizeMode(Path, QHeaderView::Stretch);
    m_second->setInterval(1000);
    connect(m_second, &QTimer::timeout, this, &fwList::onSecond);
    connect(m_scan.get(), &QThread::finished, this, &fwList::onScanned);
    connect(this, &QTableWidget::cellClicked, this, &fwList::onClick);
}

fwList::~fwList() = default;

void fwList::update_view(unsigned, const QString& mode) {
    setRowCount(0);
    setHorizontalHeaderLabels(
        {QStringLiteral("#"), QStringLiteral("VERSION"), QStringLiteral("DEVICE"), QStringLiteral("PATH")});
    for (int column = 0; column < ColumnCount; ++column)
        horizontalHeaderItem(column)->setTextAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    if (mode == QLatin1String("load"))
        load_list(packageSearchRoot());
}

void fwList::load_list(const QString& root) {
    m_seconds = 0;
    m_second->start();
    emit noteChanged(QStringLiteral("Looking for update packages..."));
    m_scan->lookBelow(root);
}

void fwList::onSecond() {
    if (++m_seconds >= QuietSeconds)
        emit noteChanged(QStringLiteral("Looking for update packages... %1 s").arg(m_seconds));
}

void fwList::onScanned() {
    if (m_scan->looksAgain())
        return;
    const std::optional<PackageScan::Result> result = m_scan->takeResult();
    if (!result)
        return;
    m_second->stop();
    m_packages = result->packages;
    fill();
    emit noteChanged(result->error.isEmpty() ? QStringLiteral("No update package found")
                                             : QStringLiteral("The media cannot be read"));
    if (!result->error.isEmpty())
        emit failed(result->error);
}

void fwList::fill() {
    setRowCount(0);
    if (!m_packages)
        return;
    const QFontMetrics metrics = fontMetrics();
    for (const auto& package : m_packages->manifests()) {
        const int row = rowCount();
        int height = Style::TableRowHeight;
        insertRow(row);
        const std::array<QString, ColumnCount> texts{QString::number(row + 1), package->version,
                                                     QStringLiteral("usb/SD"), package->package};
        for (int column = 0; column < ColumnCount; ++column) {
            const QString& text = texts[static_cast<std::size_t>(column)];
            const QString line = whole(text);
            const int room = columnWidth(column) - CellPadding;
            const QString cell = metrics.horizontalAdvance(line) <= room ? line : breakable(line, LongestWord);
            height = qMax(height, CellPadding + metrics.boundingRect(0, 0, room, 0, Qt::TextWordWrap, cell).height());
            setItem(row, column, new QTableWidgetItem(cell));
        }
        setRowHeight(row, height);
    }
    if (m_packages->isCut()) {
        const int row = rowCount();
        insertRow(row);
        setItem(row, Path, new QTableWidgetItem(QStringLiteral("There are more: only %1 are shown").arg(row)));
    }
    scrollToTop();
    if (rowCount() > 0)
        selectRow(0);
}

void fwList::onClick(int row, int) {
    const std::shared_ptr<fwData> kept = m_packages;
    if (kept && row >= 0 && row < static_cast<int>(kept->manifests().size()))
        ActionGate::panel().ask(
            this, [this, kept, row] { emit loadList(kept->manifests()[static_cast<std::size_t>(row)].get()); });
}

} // namespace Kavor::HandheldGui
