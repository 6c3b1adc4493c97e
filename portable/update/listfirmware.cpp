#include "portable/update/listfirmware.h"

#include "platform/devicepaths.h"
#include "portable/host/screentexts.h"
#include "portable/update/package_row.h"
#include "portable/update/package_words.h"
#include "portable/update/update_flows.h"
#include "portable/widgets/actiongate.h"
#include "portable/widgets/dialogs.h"
#include "portable/widgets/lineicons.h"
#include "portable/widgets/listpage.h"
#include "portable/widgets/styles/tokens.h"

#include <QHeaderView>
#include <QScrollBar>
#include <QTimer>
#include <array>

namespace Kavor::HandheldGui {

namespace {

enum Column { Number, Version, Device, Path, Signed, ColumnCount };
constexpr std::array<int, ColumnCount> ColumnWidths{80, 236, 136, 0, 184}; ///< the path takes what is left
constexpr int MostCharacters = 255; ///< of a cell: a manifest may hold a text of any length
constexpr int QuietSeconds = 3;     ///< a look shorter than this is not counted

/// On one line, which the cell breaks into as many as it needs: packages may differ in their last letter.
QString whole(const QString& text) {
    QString line = onOneLine(text.left(10 * MostCharacters)).simplified();
    if (text.size() > 10 * MostCharacters || line.size() > MostCharacters)
        line = line.left(MostCharacters / 2) + QChar(0x2026) + onOneLine(text.right(MostCharacters / 2));
    return line;
}

LineIcon markOf(Seal seal) {
    return seal == Seal::Signed   ? LineIcon::Shield
           : seal == Seal::Broken ? LineIcon::ShieldCross
                                  : LineIcon::ShieldDash;
}

} // namespace

fwList::fwList(QWidget* parent, const UpdateSettings& settings)
    : QTableWidget(parent),
      m_memory(settings.memory),
      m_scan(std::make_unique<PackageScan>(settings.look, settings.trust)),
      m_second(new QTimer(this)),
      m_watch(new QTimer(this)) {
    setObjectName(QStringLiteral("fwList"));
    dressTable(*this);
    setItemDelegate(new PackageRowDelegate(this));
    setColumnCount(ColumnCount);
    for (int column = 0; column < ColumnCount; ++column)
        setColumnWidth(column, ColumnWidths[static_cast<std::size_t>(column)]);
    horizontalHeader()->setSectionResizeMode(Path, QHeaderView::Stretch);
    m_second->setInterval(1000);
    m_watch->setInterval(settings.watchMs);
    connect(m_second, &QTimer::timeout, this, &fwList::onSecond);
    connect(m_watch, &QTimer::timeout, this, &fwList::onWatch);
    connect(m_scan.get(), &QThread::finished, this, &fwList::onScanned);
    connect(this, &QTableWidget::cellClicked, this, &fwList::onClick);
}

fwList::~fwList() = default;

void fwList::showEvent(QShowEvent* event) {
    QTableWidget::showEvent(event);
    m_watch->start();
}

void fwList::hideEvent(QHideEvent* event) {
    QTableWidget::hideEvent(event);
    m_watch->stop();
}

void fwList::update_view(unsigned, const QString& mode) {
    setRowCount(0);
    setHorizontalHeaderLabels(
        {QStringLiteral("#"), QStringLiteral("VERSION"), QStringLiteral("DEVICE"), QStringLiteral("PATH"), QString()});
    for (int column = 0; column < ColumnCount; ++column)
        horizontalHeaderItem(column)->setTextAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    if (mode == QLatin1String("load"))
        load_list(DevicePaths::mediaFolder());
}

void fwList::load_list(const QString& root) {
    m_root = root;
    m_seconds = 0;
    m_second->start();
    emit noteChanged(QStringLiteral("Looking for update packages..."));
    m_scan->lookBelow(root);
}

void fwList::onSecond() {
    if (++m_seconds >= QuietSeconds)
        emit noteChanged(QStringLiteral("Looking for update packages... %1 s").arg(m_seconds));
}

// What is asked about, or installed, is not taken from under the user's eyes.
void fwList::onWatch() {
    if (!m_root.isEmpty() && !DialogRunner::anyOpen())
        m_scan->glanceBelow(m_root);
}

void fwList::onScanned() {
    if (m_scan->looksAgain())
        return;
    const std::optional<PackageScan::Result> result = m_scan->takeResult();
    if (!result)
        return;
    m_second->stop();
    const QString chosen = chosenPath();
    const int scrolled = verticalScrollBar()->value();
    m_packages = result->packages;
    fill();
    choose(chosen);
    if (!chosen.isEmpty())
        verticalScrollBar()->setValue(scrolled);
    emit noteChanged(result->error.isEmpty() ? QStringLiteral("No update package found")
                                             : QStringLiteral("The media cannot be read"));
    if (!result->error.isEmpty())
        emit failed(result->error);
}

QString fwList::chosenPath() const {
    const QTableWidgetItem* item = currentRow() >= 0 ? this->item(currentRow(), Path) : nullptr;
    return item ? item->data(PackageRowDelegate::ManifestPath).toString() : QString();
}

void fwList::choose(const QString& manifestPath) {
    for (int row = 0; row < rowCount() && !manifestPath.isEmpty(); ++row) {
        if (item(row, Path)->data(PackageRowDelegate::ManifestPath).toString() == manifestPath)
            return selectRow(row);
    }
    scrollToTop();
    if (rowCount() > 0)
        selectRow(0);
}

void fwList::addRow(const MANIFEST_DATA& package) {
    const int row = rowCount();
    insertRow(row);
    const PackageType kind = packageType(package.name);
    const QString installed = installedVersion(m_memory, kind);
    const std::array<QString, ColumnCount> firsts{QString::number(row + 1), package.version, QStringLiteral("usb/SD"),
                                                  package.package, sealWord(package.seal)};
    const std::array<QString, ColumnCount> seconds{
        {QString(), installed.isEmpty() ? QString() : QStringLiteral("installed %1").arg(shortened(installed)),
         QString(), kindName(kind), QString()}};
    int height = Style::TableRowHeight;
    for (int column = 0; column < ColumnCount; ++column) {
        const auto at = static_cast<std::size_t>(column);
        const bool strong = column == Version || column == Signed;
        const QString line = whole(firsts[at]);
        auto* item = new QTableWidgetItem(
            column == Signed ? line : PackageRowDelegate::fitted(line, columnWidth(column), strong));
        item->setData(PackageRowDelegate::SecondLine, seconds[at]);
        item->setData(PackageRowDelegate::Strong, strong);
        if (column == Signed)
            item->setData(PackageRowDelegate::MarkRole, static_cast<int>(markOf(package.seal)));
        if (column == Path)
            item->setData(PackageRowDelegate::ManifestPath, package.manifest_path);
        setItem(row, column, item);
        height = qMax(height, PackageRowDelegate::heightOf(model()->index(row, column), columnWidth(column)));
    }
    setRowHeight(row, height);
}

void fwList::fill() {
    setRowCount(0);
    if (!m_packages)
        return;
    for (const auto& package : m_packages->manifests())
        addRow(*package);
    if (m_packages->isCut()) {
        const int row = rowCount();
        insertRow(row);
        setItem(row, Path, new QTableWidgetItem(QStringLiteral("There are more: only %1 are shown").arg(row)));
    }
}

void fwList::onClick(int row, int) {
    const std::shared_ptr<fwData> kept = m_packages;
    if (kept && row >= 0 && row < static_cast<int>(kept->manifests().size()))
        ActionGate::panel().ask(
            this, [this, kept, row] { emit loadList(kept->manifests()[static_cast<std::size_t>(row)].get()); });
}

} // namespace Kavor::HandheldGui
