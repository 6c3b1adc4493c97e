#pragma once

#include "common/update/package_scan.h"
#include "common/update/trust_folder.h"

#include <QThread>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

namespace Kavor::HandheldGui {

/// How the packages below a folder are found; as packagesBelow.
using PackageLook = std::function<std::unique_ptr<fwData>(const QString& root)>;

/// Reads the packages of the removable media on a thread of its own, since a medium may be slow or go while it is read.
/// Created, asked and destroyed on the GUI thread; the destructor breaks off the look under way.
class PackageScan : public QThread {
    Q_OBJECT

public:
    struct Result {
        std::shared_ptr<fwData> packages; ///< null when the look failed
        QString error;                    ///< then what the user is to read
    };

    /// trust: whose signatures count.
    explicit PackageScan(PackageLook look, const TrustSettings& trust = {}) : m_look(std::move(look)), m_trust(trust) {}
    ~PackageScan() override;

    /// Looks below that folder, in place of the look under way, which is broken off. Ends with finished(), each time.
    void lookBelow(const QString& root);

    /// Looks below that folder if media came or went since the last look there; otherwise finished() comes without a
    /// result. Nothing while a look is under way.
    void glanceBelow(const QString& root);

    /// Of the last look that has ended; nothing when that was taken before.
    std::optional<Result> takeResult();

    /// Whether a newer look than the one that has just ended was asked for; it is started then, if it is not under way.
    bool looksAgain();

protected:
    void run() override;

private:
    void begin(const QString& root, bool onlyIfChanged);

    const PackageLook m_look;
    const TrustSettings m_trust;
    QString m_next;     ///< root of the look to come, empty for none
    std::mutex m_mutex; ///< of what is below: what the one thread leaves to the other
    bool m_onlyIfChanged = false;
    QString m_root;
    QByteArray m_media; ///< what was there at the last look
    std::optional<Result> m_result;
};

} // namespace Kavor::HandheldGui
