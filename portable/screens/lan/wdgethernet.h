#pragma once

#include "platform/networkfacts.h"
#include "portable/host/iguiscreen.h"
#include "portable/screens/lan/wdgethernet_thread.h"

#include <QStringList>
#include <array>
#include <optional>
#include <string>

class QLabel;
class QPushButton;
class QTimer;

namespace Kavor::HandheldGui {

class ChoiceGroup;
class PageGroup;
class ValueEdit;

/// The LAN page: the instrument's network identity, and the choice between an address by DHCP and a static one. Edits
/// are kept here and sent when the user applies them; while there are any, the other rows stay as they were when the
/// first was made. Address and mask are those of the device's own interface, or the module's where there is none;
/// gateway, port and DHCP are the module's. Opening the page drops what was not applied.
class ethScreen : public IGuiScreen {
    Q_OBJECT

public:
    ethScreen(QWidget* parent, std::vector<STATE> states);

    void update_from_config(STATE state) override;
    void show() override;
    void hide() override;

    /// Four parts of decimal digits between points, each at most 255; an empty part counts as 0, an empty text is no
    /// address.
    static bool isIPAddress(const QString& text);

    /// Whether address and gateway agree in every bit that the mask sets.
    static bool IsIpInTheSubnetMask(const QString& address, const QString& mask, const QString& gateway);

    /// An address without leading zeros, its empty parts as 0; a text that is no address as it is.
    static QString plainAddress(const QString& text);

    /// Why a device cannot be configured so: a sentence, or nothing. Three addresses by isIPAddress(); whether the
    /// gateway is in reach is for IsIpInTheSubnetMask().
    static QString configurationProblem(const QString& address, const QString& mask, const QString& gateway);

    /// Whether any interface named eth... has a cable in it. Reads a few small files.
    static bool checkLANConnectivity();

    /// The parts between delimiters, empty ones included.
    static QStringList split(const QString& text, QChar delimiter);
    static std::vector<std::string> split2(const std::string& text, char delimiter);

    /// Takes over, and logs, what the last look at the device's network found. Nothing when it is as it was.
    void getSysteminfo();

public slots:
    void onIPBnClicked();
    void onMaskBnClicked();
    void onDefaultGatewayBnClicked();
    void onPortBnClicked();
    void onDhcpBnClicked(); ///< the other one of dynamic and static
    void onApplyChangesBnClicked();
    void onCancelChangesBnClicked();

signals:
    /// The user leaves the page.
    void back();

private:
    enum Field { Address, Mask, Gateway, Port, FieldCount };
    struct FieldTexts;
    struct StaticStep;

    /// What is applied: a copy, which nothing that happens meanwhile changes.
    struct Wanted {
        std::array<QString, FieldCount> values;
        bool dynamic;
        bool portChanged;
        bool othersChanged;
    };

    void buildFields();
    void buildReadouts();
    QLabel* addHeld(int y, const QString& name);
    void showHostName(const QString& name);
    void buildButtons();
    void onEntered(Field field);
    QString shown(Field field) const { return m_pending[field].value_or(m_current[field]); }
    bool isDynamic() const { return m_pendingDhcp.value_or(m_currentDhcp); }
    bool hasEdits() const;
    void readModule();
    void forgetNetwork();
    void showRows();
    void updateApplyCancel();
    void dropEdits();
    Wanted wantedNow() const;
    void applyChanges(const Wanted& wanted);
    void apply(const Wanted& wanted);
    bool applyDynamic();
    bool applyStatic(const Wanted& wanted);
    bool applyPort(const QString& port);
    void forgetEdit(Field field, const QString& applied);
    void fail(const QString& logged, const QString& told);

    QWidget* m_page;
    PageGroup* m_group;
    std::array<ValueEdit*, FieldCount> m_edits{};
    ChoiceGroup* m_dhcp = nullptr;
    std::array<QLabel*, FieldCount> m_labels{};
    std::array<QLabel*, FieldCount> m_held{};   ///< what is in use, beside what would be applied
    std::array<QWidget*, FieldCount> m_marks{}; ///< bars before the rows that are pending
    QLabel* m_heldDhcp = nullptr;
    QLabel* m_changes = nullptr;
    QLabel* m_cable = nullptr;
    QLabel* m_hardwareAddress = nullptr;
    QLabel* m_hostName = nullptr;
    QPushButton* m_apply = nullptr;
    QPushButton* m_cancel = nullptr;
    std::array<QString, FieldCount> m_current;
    std::array<std::optional<QString>, FieldCount> m_pending;
    bool m_currentDhcp = false;
    std::optional<bool> m_pendingDhcp;
    NetworkFacts m_found; ///< of the last look
    QString m_takenOver;  ///< what getSysteminfo() took over last, as one text; null: nothing yet
    QTimer* m_timer;
    dhcpThread m_thread;
};

} // namespace Kavor::HandheldGui
