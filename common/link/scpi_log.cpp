#include "common/link/scpi_log.h"

Q_LOGGING_CATEGORY(lcScpi, "velda.scpi")
