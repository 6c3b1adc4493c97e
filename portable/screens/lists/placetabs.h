#pragma once

#include "lists/sticks.h"

#include <QObject>
#include <optional>
#include <vector>

class QPushButton;

namespace Kavor::HandheldGui {

class PageGroup;

/// The places that a file can come from or go to, as tabs beside the title of the file browser: the device and each
/// stick. Nothing is shown while there is no stick. GUI thread.
class PlaceTabs : public QObject {
    Q_OBJECT

public:
    /// prefix: of the object names, "Place0" for the device, "Place1" and on for sticks.
    PlaceTabs(PageGroup& group, const QString& prefix);

    /// Shows these sticks. A place that was chosen and is there no longer gives way to the device; then false.
    [[nodiscard]] bool setSticks(const std::vector<Stick>& sticks);

    /// The stick that is chosen, nothing for the device.
    const std::optional<Stick>& chosen() const { return m_chosen; }
    void choose(const std::optional<Stick>& stick);

signals:
    /// A tab was pressed.
    void asked(const std::optional<Stick>& stick);

private:
    QPushButton* tab(std::size_t place);
    void show();

    PageGroup& m_group;
    QString m_prefix;
    std::vector<QPushButton*> m_tabs;
    std::vector<Stick> m_sticks;
    std::optional<Stick> m_chosen;
};

} // namespace Kavor::HandheldGui
