#pragma once

#include "common/wire/channel_record.h"

#include <QStringList>

class QWidget;

/// Where a panel shows something else than a record holds: its editors, enable boxes and choices by their object names,
/// each with what it shows and what it should. An editor that shows a refused entry is not looked at. Empty when all
/// agree.
QStringList disagreements(const QWidget& window, const ChannelRecord& record);
