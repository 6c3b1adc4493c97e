#pragma once

#include "sim/command_table.h"

namespace Sim {

/// Reads the argument into the record's field. Empty when the module takes it, otherwise the refusal to answer with;
/// the record is then unchanged.
[[nodiscard]] QByteArray assignField(const Field& field, const QByteArray& argument, ChannelRecord& record);

/// The field's value as a query answers it.
QByteArray fieldText(const Field& field, const ChannelRecord& record);

} // namespace Sim
