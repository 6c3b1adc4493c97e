#pragma once

#include "common/update/package_staging.h"
#include "portable/update/update_boxes.h"
#include "portable/update/update_flows.h"

namespace Kavor::HandheldGui {

/// A package that may be installed, and whether that was begun.
struct StagedPackage {
    std::unique_ptr<PackageStaging> copies; ///< null when it may not; then the user has been told
    QString end;                            ///< of an update that ended here, in a few words; empty when none began
};

/// Judges a package by the policy in force, asks the user where that says so, copies the package to the instrument and
/// judges the copies. model: of the instrument. notFound: what the user reads when there is no package. GUI thread;
/// opens boxes.
[[nodiscard]] StagedPackage stagePackage(MANIFEST_DATA& package, const QString& model, const QString& notFound,
                                         QWidget* parent, const UpdateBoxes& boxes, const UpdateSettings& settings);

} // namespace Kavor::HandheldGui
