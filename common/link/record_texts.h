#pragma once

#include "common/wire/channel_record.h"

/// Ends every text of a copied record with NUL, whatever the service wrote: a text that filled its field loses its last
/// character.
void terminateTexts(ChannelRecord& record);
