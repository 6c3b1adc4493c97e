#pragma once

#include <QtGlobal>

/// How many times its limits by the clock a test may take: 1, or what the build was told for a slower machine.
inline int patience() {
    return qMax(1, qEnvironmentVariableIntValue("VELDA_TEST_PATIENCE"));
}
