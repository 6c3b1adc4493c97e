#include "common/link/record_texts.h"

void terminateTexts(ChannelRecord& record) {
    using R = ChannelRecord;
    using Text = char[32];
    constexpr Text R::*Texts[] = {
        &R::triggerSource,   &R::triggerEdge, &R::triggerAdvance,  &R::referenceOscillator,
        &R::listName,        &R::patternName, &R::amSource,        &R::fmSource,
        &R::pmSource,        &R::pulseSource, &R::frswDirection,   &R::prswDirection,
        &R::model,           &R::serial,      &R::firmwareVersion, &R::options,
        &R::calibrationDate, &R::ipAddress,   &R::networkMask,     &R::gateway,
        &R::scpiPort,
    };
    for (const auto text : Texts)
        (record.*text)[sizeof(Text) - 1] = '\0';
}
