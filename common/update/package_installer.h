#pragma once

#include "common/update/component_plan.h"
#include "platform/veldapath.h"

#include <QThread>

struct InstallSettings {
    QString scratchFolder = CVeldaPath("/tmpfw").get_path(); ///< removed and made anew by each installation
    int startTimeoutMs = 30000;                              ///< longest wait for a command to start

    /// Is there from the first change of an installation to its end: one that is there otherwise tells of an
    /// installation that was cut off.
    QString markerFile = CVeldaPath("/kavor/upgrade/unfinished").get_path();
};

/// What was being installed when an installation was cut off, on one line; empty when none was. Any thread.
QString unfinishedInstallation(const InstallSettings& settings = {});

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

    /// Components that were not carried out although the installation went on, and the first of them. After
    /// fwUpgraded.
    int failedSteps() const { return m_failedSteps; }
    QString firstFailure() const { return m_firstFailure; }

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
    void unmark();
    bool unpack();
    bool carryOut(const ComponentPlan& plan, const MANIFEST_DATA_COMPONENT& component);
    int installComponent(const MANIFEST_DATA_COMPONENT& component);

    const MANIFEST_DATA* m_manifest;
    InstallSettings m_settings;
    int m_failedSteps = 0;
    QString m_firstFailure;
};
