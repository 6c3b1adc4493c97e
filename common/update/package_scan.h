#pragma once

#include "common/update/datafw.h"

/// A medium with more packages is shown in part.
inline constexpr int MostManifests = 1000;

/// Paths of all manifests below a folder, sorted, and no more than one beyond MostManifests; what lies in a folder
/// whose name is no text (no UTF-8) is left out; links to folders and hidden folders are not entered. A folder that is
/// not there holds none. Throws std::runtime_error, "Error reading fw files " and why, when the walk breaks off because
/// the medium is gone. May take seconds on a slow medium; any thread. A request to interrupt that thread ends the walk
/// with what was found so far.
[[nodiscard]] QStringList findManifests(const QString& root);

/// Reads what findManifests found, at most MostManifests, and says whether there were more. Throws std::runtime_error
/// as findManifests does when a manifest cannot be read or is no longer there.
[[nodiscard]] std::unique_ptr<fwData> readPackages(const QStringList& manifestPaths);

/// findManifests and readPackages in one.
[[nodiscard]] std::unique_ptr<fwData> packagesBelow(const QString& root);
