#pragma once

#include "sim/shared_region.h"

#include <QMap>
#include <QString>
#include <optional>

namespace Sim {

/// The stored configurations of the module, the settings of all channels under one name each. In a folder they are the
/// files preset-NAME.json, which the panel lists; without one they last as long as this object. One thread.
class ConfigurationStore {
public:
    explicit ConfigurationStore(const QString& folder);

    /// A name is 1 to 31 letters, digits and `. _ -`, does not begin with a dot, and is not "0", the factory's own.
    static bool isName(const QString& name);

    /// Each false or empty with a sentence in error when it cannot be done.
    [[nodiscard]] bool store(const QString& name, const Records& records, QString& error);
    [[nodiscard]] std::optional<Records> recall(const QString& name, QString& error) const;
    [[nodiscard]] bool clear(const QString& name, QString& error);

private:
    QString fileOf(const QString& name) const;

    QString m_folder;
    QMap<QString, QByteArray> m_inMemory;
};

} // namespace Sim
