#pragma once

#include "common/update/component_plan.h"
#include "common/update/installation_marker.h"
#include "platform/veldapath.h"

#include <QThread>
#include <functional>

/// How an installation has ended, or stands when a component is about to reboot the instrument.
struct InstallEnd {
    int code = 0;         ///< of fwUpgraded
    int failedSteps = 0;  ///< components that were not carried out although the installation went on
    QString firstFailure; ///< the command of the first of them
    QString failure;      ///< what ended the installation, with the number of the component; empty for code 0
};

struct InstallSettings {
    QString scratchFolder = CVeldaPath("/tmpfw").get_path(); ///< removed and made anew by each installation
    int startTimeoutMs = 30000;                              ///< longest wait for a command to start

    QString markerFile = CVeldaPath("/kavor/upgrade/unfinished").get_path(); ///< of InstallationMarker

    /// Told of the end before the marker goes: at the end itself, and before a component that reboots, since the panel
    /// may not live to see more. On the installer's thread; may be empty.
    std::function<void(const InstallEnd&)> ending;
};

/// Installs one software package on its own thread: unpacks it into the scratch folder and carries out the components
/// of its manifest with shell commands. One object serves one installation.
class fwThread : public QThread {
    Q_OBJECT

public:
    /// The manifest is not owned, may be null, and must stay as it is until fwUpgraded.
    explicit fwThread(const MANIFEST_DATA* manifest, const InstallSettings& settings = {}, QObject* parent = nullptr);

    /// Waits for a running installation without limit: one that is cut off half way leaves an instrument of two
    /// versions.
    ~fwThread() override;

    /// The installation; blocks until fwUpgraded was emitted. Called by the thread itself.
    void fwUpgrade();

    /// After fwUpgraded.
    const InstallEnd& end() const { return m_end; }

    /// Runs a program with arguments and waits for its end without limit. True only for a normal exit with code 0; a
    /// failure is logged with the end of what the program wrote. Any thread but the GUI's.
    bool RunSytemLinuxCommand(const QString& program, const QStringList& arguments);

    /// The same for a command text, run by "sh -c".
    bool RunSystemShellCommand(const QString& command);

signals:
    /// Exactly once, from the installer's thread: 0 all components processed, -1 no manifest or a null component, -2
    /// the old scratch folder cannot be removed, -3 the new one cannot be created, -4 unpacking failed, -5 a file's
    /// action failed, the clean-up before a reboot failed, or a file's action is unknown.
    void fwUpgraded(int code);

protected:
    void run() override;

private:
    int install();
    int carryOutAll();
    int prepareScratch();
    void mark();
    void endAndUnmark();
    int fail(int code, const QString& what);
    bool unpack();
    bool carryOut(const ComponentPlan& plan, const MANIFEST_DATA_COMPONENT& component);
    int installComponent(const MANIFEST_DATA_COMPONENT& component);
    QString stepName(const QString& subject) const;

    const MANIFEST_DATA* m_manifest;
    InstallSettings m_settings;
    InstallationMarker m_marker;
    InstallEnd m_end;
    bool m_isMarked = false;
    int m_step = 0; ///< number of the component under way, from 1
};
