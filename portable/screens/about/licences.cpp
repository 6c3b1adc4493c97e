#include "portable/screens/about/licences.h"

#include "portable/widgets/listpage.h"

#include <QHeaderView>
#include <QTableWidget>

namespace Kavor::HandheldGui {

namespace {

enum Column { Component, Terms, Holder, ColumnCount };
constexpr int ComponentWidth = 250;
constexpr int TermsWidth = 300;

} // namespace

const std::vector<Licence>& licences() {
    static const std::vector<Licence> all{
        {"Front panel", "MIT", "Its maintainers", ""},
        {"Qt 5", "LGPL 3", "The Qt Company", "libQt5"},
        {"spdlog", "MIT", "G. Melman", "libspdlog"},
        {"fmt", "MIT", "V. Zverovich", "libfmt"},
        {"zlib", "zlib", "J. Gailly, M. Adler", "libz."},
        {"libsystemd", "LGPL 2.1+", "systemd's authors", "libsystemd"},
        {"libsodium", "ISC", "F. Denis", "libsodium"},
        {"GNU C library", "LGPL 2.1+", "FSF", "libc. libm. ld-linux librt libpthread"},
        {"GNU C++ library", "GPL 3 + exception", "FSF", "libstdc++ libgcc_s"},
        {"Open Sans", "Apache 2.0", "Google", ""},
        {"Liberation Sans", "OFL 1.1", "Google, Red Hat", ""},
    };
    return all;
}

QTableWidget* makeLicenceTable(QWidget* parent) {
    auto* table = new QTableWidget(parent);
    table->setObjectName(QStringLiteral("licences"));
    dressTable(*table);
    table->setSelectionMode(QAbstractItemView::NoSelection);
    table->setColumnCount(ColumnCount);
    table->setColumnWidth(Component, ComponentWidth);
    table->setColumnWidth(Terms, TermsWidth);
    table->horizontalHeader()->setSectionResizeMode(Holder, QHeaderView::Stretch);
    table->setHorizontalHeaderLabels(
        {QStringLiteral("COMPONENT"), QStringLiteral("LICENCE"), QStringLiteral("COPYRIGHT")});
    for (int column = 0; column < ColumnCount; ++column)
        table->horizontalHeaderItem(column)->setTextAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    for (const Licence& licence : licences()) {
        const int row = table->rowCount();
        table->insertRow(row);
        table->setItem(row, Component, new QTableWidgetItem(QString::fromUtf8(licence.component)));
        table->setItem(row, Terms, new QTableWidgetItem(QString::fromUtf8(licence.licence)));
        table->setItem(row, Holder, new QTableWidgetItem(QString::fromUtf8(licence.holder)));
    }
    return table;
}

} // namespace Kavor::HandheldGui
