#pragma once

#include "common/wire/channel_record.h"

#include <QByteArray>
#include <cstddef>
#include <variant>

namespace Sim {

using RecordText = char[32];

/// Kinds of value that a command sets in the channel record.
struct SwitchField {
    std::uint32_t ChannelRecord::*word;
    unsigned modulation; ///< its ModulationBit, 0 for a switch that starts none
};
struct WordField {
    RecordText ChannelRecord::*text;
    const char* const* words;
    std::size_t count;
};
struct AddressField {
    RecordText ChannelRecord::*text;
};
struct ImpedanceField {
    std::uint32_t ChannelRecord::*ohms;
};
struct MaskField {
    std::uint32_t ChannelRecord::*mask;
};
using RealField = LimitedValue ChannelRecord::*;
using DefaultedField = DefaultedValue ChannelRecord::*;
using CountField = LimitedCount ChannelRecord::*;

using Field = std::variant<RealField, DefaultedField, CountField, SwitchField, WordField, AddressField, ImpedanceField,
                           MaskField>;

/// A command that sets one field and, with a question mark, reads it.
struct Setting {
    const char* header;
    Field field;
    bool wholeModule = false; ///< the value is one for all channels
};

/// The setting that a header names, null when it names none. The header is without colon and question mark.
const Setting* findSetting(const QByteArray& header);

} // namespace Sim
