#include "portable/screens/system/listcfg.h"

#include "platform/veldapath.h"
#include "portable/host/screentexts.h"
#include "portable/widgets/listpage.h"

#include <QDir>
#include <QHeaderView>
#include <QRegularExpression>
#include <algorithm>
#include <array>
#include <tuple>

namespace Kavor::HandheldGui {

struct cfgList::Mode {
    const char* name;
    const char* title;
    bool offersNewFile;
    void (cfgList::*chosen)(const QString&);
};

namespace {

enum Column { Number, Name, Storage, ColumnCount };
constexpr int NumberWidth = 96;
constexpr int StorageWidth = 240;

/// Numbers by their value, then the others by their text.
auto orderOf(const QString& file) {
    bool isNumber = false;
    const QString name = cfgList::bareName(file);
    const qulonglong number = name.toULongLong(&isNumber);
    return std::make_tuple(!isNumber, isNumber ? number : 0, name);
}

} // namespace

const QString cfgList::NewFile = QStringLiteral("Click here to enter file name");

const cfgList::Mode* cfgList::modeOf(const QString& name) {
    static const std::array<Mode, 3> modes{{{"load", "PRESET TO LOAD", false, &cfgList::loadCfg},
                                            {"save", "NEW OR EXISTING PRESET", true, &cfgList::saveCfg},
                                            {"delete", "SELECT PRESET TO DELETE", false, &cfgList::deleteCfg}}};
    for (const Mode& mode : modes) {
        if (name == QLatin1String(mode.name))
            return &mode;
    }
    return nullptr;
}

cfgList::cfgList(QWidget* parent) : QTableWidget(parent) {
    setObjectName(QStringLiteral("cfgList"));
    dressTable(*this);
    setColumnCount(ColumnCount);
    setColumnWidth(Number, NumberWidth);
    setColumnWidth(Storage, StorageWidth);
    horizontalHeader()->setSectionResizeMode(Name, QHeaderView::Stretch);
    connect(this, &QTableWidget::cellClicked, this, &cfgList::onClick);
}

QString cfgList::folder() {
    return QStringLiteral("%1/%2").arg(CVeldaPath(QStringLiteral("/kavor/preset")).get_path(),
                                       QStringLiteral("preset"));
}

QString cfgList::bareName(const QString& file) {
    QString name = file;
    name.remove(QStringLiteral(".json"));
    name.remove(QStringLiteral("preset-"));
    return name;
}

bool cfgList::canBeUsed(const QString& name) {
    static const QRegularExpression letters(QRegularExpression::anchoredPattern(QStringLiteral("[A-Za-z0-9._-]+")));
    return letters.match(name).hasMatch() && !isOddNumber(name);
}

bool cfgList::isOddNumber(const QString& name) {
    static const QRegularExpression plain(QRegularExpression::anchoredPattern(QStringLiteral("[1-9][0-9]*")));
    bool isNumber = false;
    name.toDouble(&isNumber);
    return isNumber && !plain.match(name).hasMatch();
}

void cfgList::update_view(const QString& mode) {
    m_mode = modeOf(mode);
    setRowCount(0);
    setHorizontalHeaderLabels(
        {QStringLiteral("#"), QString::fromLatin1(m_mode ? m_mode->title : ""), QStringLiteral("STORAGE")});
    for (int column = 0; column < ColumnCount; ++column)
        horizontalHeaderItem(column)->setTextAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    if (!m_mode)
        return;
    if (m_mode->offersNewFile)
        addRow(QStringLiteral("+"), NewFile, QStringLiteral("system"), NewFile);
    QStringList files = QDir(folder()).entryList({QStringLiteral("*.json")}, QDir::Files | QDir::Hidden);
    std::sort(files.begin(), files.end(), [](const QString& a, const QString& b) { return orderOf(a) < orderOf(b); });
    int number = 0;
    for (const QString& file : qAsConst(files))
        addRow(QString::number(++number), onOneLine(bareName(file)), QStringLiteral("usb/SD"), file);
    clearSelection();
    scrollToTop();
}

void cfgList::addRow(const QString& number, const QString& name, const QString& storage, const QString& file) {
    const int row = rowCount();
    insertRow(row);
    const std::array<QString, ColumnCount> texts{number, name, storage};
    for (int column = 0; column < ColumnCount; ++column) {
        auto* item = new QTableWidgetItem(texts[static_cast<std::size_t>(column)]);
        item->setData(Qt::UserRole, file);
        setItem(row, column, item);
    }
}

void cfgList::onClick(int row) {
    const QTableWidgetItem* chosen = item(row, Name);
    if (m_mode && chosen)
        emit(this->*m_mode->chosen)(chosen->data(Qt::UserRole).toString());
}

} // namespace Kavor::HandheldGui
