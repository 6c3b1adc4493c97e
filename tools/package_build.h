#pragma once

#include "common/update/datafw.h"
#include "tools/package_sign.h"

#include <QVector>

struct PackageRequest {
    PackageType type = PackageType::Unknown;
    QString name; ///< of the manifest; empty: the shortest one of its type
    QString version;
    QString description;
    QString source;                              ///< folder of a software package, file of the others
    QString output;                              ///< folder for package and manifest, created when missing
    QVector<MANIFEST_DATA_COMPONENT> components; ///< of a software package
    Signing signing;                             ///< without a seed the package is not signed
};

/// Writes a package and its manifest and checks both. Returns what is wrong, one sentence a line of the list; then
/// nothing of it is left in the output folder. Blocks while tar runs.
[[nodiscard]] QStringList buildPackage(const PackageRequest& request);
