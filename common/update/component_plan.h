#pragma once

#include "common/update/datafw.h"

/// What one component of a software package asks for, as the installer carries it out and the release tool lists it.
struct ComponentPlan {
    bool known = false;     ///< type and action are a pair of the table
    bool kindKnown = false; ///< the type is "file" or "dir"
    bool isCommand = false; ///< an "action": the name runs as it stands
    bool stops = false;     ///< its failure ends the installation with -5
    bool reboots = false;   ///< the instrument goes down; the patch folder is to be removed first
    bool mayReboot = false; ///< the command holds a word that takes the instrument down
    QString command;        ///< for the shell; empty when the pair is not known
    QString failure;        ///< what the log says when it fails or is not known, without the subject
    QString subject;        ///< the command, or the word that is not known
    QString refusal;        ///< why the command must not run; empty when it may
};

/// Plans a component against a package that is unpacked in `scratch`; looks at the links in it, changes nothing. Any
/// thread.
///
/// A copy or delete is refused when its name or destination is empty, starts with "-" or holds anything but letters,
/// digits and ". _ - + @ % , : = /", and when the name leads out of the patch folder by ".." or through a link.
/// A copy of a pipe, a socket or a device, or of a folder that holds one, is refused as well.
[[nodiscard]] ComponentPlan planComponent(const MANIFEST_DATA_COMPONENT& component, const QString& scratch);

/// Folder of an unpacked package in which the components lie.
QString patchFolder(const QString& scratch);

/// Whether a text can stand in a shell command as one word without quoting.
bool isPlainWord(const QString& text);
