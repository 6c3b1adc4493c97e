#pragma once

#include <QMetaType>
#include <QString>
#include <vector>

namespace Kavor::HandheldGui {

/// What the operating system says about the network of the device the panel runs on.
struct NetworkFacts {
    struct Address {
        QString ipv4; ///< dotted
        QString mask; ///< dotted
    };
    struct Interface {
        bool loopback = false;
        QString hardwareAddress;
        std::vector<Address> addresses; ///< IPv4 only
        QString name = {};
        bool carrier = false; ///< a cable is in it
    };

    QString hostName;
    std::vector<Interface> interfaces; ///< in the system's order
};

} // namespace Kavor::HandheldGui

Q_DECLARE_METATYPE(Kavor::HandheldGui::NetworkFacts)
