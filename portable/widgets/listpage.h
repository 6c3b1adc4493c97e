#pragma once

#include <QObject>

class QLabel;
class QPushButton;
class QTableWidget;

namespace Kavor::HandheldGui {

/// A page with one table over its whole width, a note in its place while it has no rows, and a "Back" button. GUI
/// thread.
class ListPage : public QObject {
    Q_OBJECT

public:
    /// page: an empty page of the content area. note: what an empty table says.
    ListPage(QWidget* page, const QString& title, const QString& note, const QString& backName);

    /// The group that a table is made in.
    QWidget* group() const;

    /// Puts a widget below the table, which is the shorter for it. Once, before the table is set.
    void setFooter(QWidget* footer);

    /// Puts the table in its place. Once.
    void setTable(QTableWidget* table);

    /// What the table says while it is empty.
    void setNote(const QString& note);

    void show();
    void hide();

signals:
    void back();

private:
    void showNote();

    QWidget* m_page;
    QWidget* m_group;
    QLabel* m_note;
    QTableWidget* m_table = nullptr;
    int m_tableHeight;
};

/// Gives a table of files the panel's look: rows to be touched, whole rows chosen, no editing, no row header.
void dressTable(QTableWidget& table);

/// A button in the panel's look, with its object name.
QPushButton* makeButton(QWidget* parent, const QString& text, const QString& name);

} // namespace Kavor::HandheldGui
