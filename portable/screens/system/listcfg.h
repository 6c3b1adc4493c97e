#pragma once

#include <QTableWidget>

namespace Kavor::HandheldGui {

/// The saved configurations, as the files that the module's storage shares with the panel. A row is chosen by a touch.
/// GUI thread.
class cfgList : public QTableWidget {
    Q_OBJECT

public:
    explicit cfgList(QWidget* parent);

    /// What stands for a new file in the "save" mode, and what saveCfg() then carries.
    static const QString NewFile;

    static QString folder();

    /// The configuration's name in the name of its file: without every ".json", then without every "preset-".
    static QString bareName(const QString& file);

    /// Whether the module can be asked for a configuration of that name: nothing in it that a command would read, and
    /// not "0", the factory's.
    static bool canBeUsed(const QString& name);

    /// A number, but none that a configuration is stored as: 0, which is the factory preset, or one with a sign, a
    /// point or leading zeros, which a module could read as another one.
    static bool isOddNumber(const QString& name);

    /// Reads the folder and shows it. mode: "load", "save" or "delete"; any other gives an empty table. Configurations
    /// with a number come first, in its order.
    void update_view(const QString& mode);

signals:
    /// The name of the chosen file, by the mode in force.
    void loadCfg(const QString& file);
    void saveCfg(const QString& file);
    void deleteCfg(const QString& file);

private:
    struct Mode;
    static const Mode* modeOf(const QString& name);
    void addRow(const QString& number, const QString& name, const QString& storage, const QString& file);
    void onClick(int row);

    const Mode* m_mode = nullptr;
};

} // namespace Kavor::HandheldGui
