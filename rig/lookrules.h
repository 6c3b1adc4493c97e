#pragma once

#include "rig/paneltour.h"

#include <QMap>
#include <QStringList>

class QWidget;

/// What a person with a finger and a person in the sun need of a screen, measured over all its visible widgets: sizes
/// and distances of what can be touched, sizes and contrast of what is to be read, nothing clipped, overlapping or
/// outside. Contrast is measured on the pixels of the picture.
class LookRules {
public:
    /// In the order of limits().
    enum Rule {
        TouchSide,
        KeySide,
        WideKeySide,
        Gap,
        TableRow,
        ScrollHandle,
        Contrast,
        DisabledContrast,
        DisabledUnlikeEnabled,
        ButtonEdge,
        CapitalHeight,
        FrequencyCapitalHeight,
        TextRoom,
        Overlap,
        InsideWindow
    };
    struct Limits {
        const char* name;
        const char* unit;
        double must; ///< a smaller value breaks the rule
        double aim;
    };
    static const Limits& limits(Rule rule);

    /// Buttons, editors and unit boxes; what Qt builds them of does not count.
    static bool canBeTouched(const QWidget& widget);

    /// A rule that one widget may break, and why.
    struct Exception {
        Rule rule;
        const char* stop;   ///< how the names of the stops begin, "" for all
        const char* widget; ///< contained in the finding's description
        const char* reason;
    };

    explicit LookRules(std::vector<Exception> exceptions = {}) : m_exceptions(std::move(exceptions)) {}

    void look(const PanelTour::Stop& stop);

    /// Those of one window by itself.
    static QStringList violations(QWidget& window);

    /// One line for each violation that no exception names, widgets by their object names.
    QStringList violations() const { return m_violations; }
    /// Exceptions that nothing needed, by their reasons.
    QStringList unusedExceptions() const;
    /// For each rule what was measured, its worst value and how much stays under the aim; then the exceptions used.
    QString report() const;

private:
    struct Measured {
        int count = 0;
        int underAim = 0;
        double worst = 0;
        QString where;
    };

    void measure(Rule rule, double value, const QString& what);
    void lookAtText(const QWidget& widget, const QRect& place);
    void lookAtTable(const class QAbstractItemView& view, const QRect& place);
    void lookAtContrast(const QRect& where, bool enabled, const QString& what, QRgb whenEnabled);
    void lookAtEdge(const QWidget& widget, const QRect& place);
    void lookAtDistances(const QWidget& window);

    std::vector<Exception> m_exceptions;
    QMap<int, int> m_used; ///< times that each exception was needed
    QMap<int, Measured> m_measured;
    QStringList m_violations;
    QString m_stop;
    QImage m_picture;
    QPoint m_origin; ///< of the window looked at, in the picture
};
