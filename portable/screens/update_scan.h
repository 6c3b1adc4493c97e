#pragma once

#include "common/update/datafw.h"

#include <QThread>

#include <memory>
#include <mutex>

namespace Kavor::HandheldGui {

/// Reads the packages of the removable media on a thread of its own, since a medium may be slow or go while it is read.
/// Created, asked and destroyed on the GUI thread; the destructor waits for the look under way.
class PackageScan : public QThread {
    Q_OBJECT

public:
    struct Result {
        std::shared_ptr<fwData> packages; ///< null when the look failed
        QString error;                    ///< then what the user is to read
    };

    using QThread::QThread;
    ~PackageScan() override;

    /// Looks below that folder; while a look is under way, once more after it. Ends with finished(), each time.
    void lookBelow(const QString& root);

    /// Of the last look that has ended.
    Result result() const;

    /// Whether a newer look than the one that has just ended was asked for; it is started then.
    bool looksAgain();

protected:
    void run() override;

private:
    QString m_root;             ///< written only while the thread does not run
    QString m_next;             ///< root of the look to come, empty for none
    mutable std::mutex m_mutex; ///< of the result
    Result m_result;
};

} // namespace Kavor::HandheldGui
