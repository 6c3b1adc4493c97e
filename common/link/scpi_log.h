#pragma once

#include <QLoggingCategory>

/// Diagnostics of the link to the module, texts with the prefix "[SCPI]".
Q_DECLARE_LOGGING_CATEGORY(lcScpi)
