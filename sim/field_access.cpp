#include "sim/field_access.h"

#include "common/wire/scpi_words.h"
#include "sim/factory_values.h"
#include "sim/modulation_conflicts.h"
#include "sim/scpi_text.h"

#include <QList>
#include <algorithm>
#include <cmath>

namespace Sim {
namespace {

/// A number within limits, or the refusal. Limits of 0 and 0 are not published and not kept.
struct Checked {
    double value;
    QByteArray refusal;
};

Checked checkedNumber(const QByteArray& argument, double minimum, double maximum) {
    const std::optional<double> number = parseNumber(argument);
    if (!number)
        return {0, refusal(DataTypeError, "Not a number: " + argument)};
    const bool published = minimum != 0 || maximum != 0;
    if (published && (*number < minimum || *number > maximum)) {
        return {0, refusal(OutOfRange, "Data out of range: " + argument + " is not within " + numberText(minimum) +
                                           " to " + numberText(maximum))};
    }
    return {*number, {}};
}

Checked checkedCount(const QByteArray& argument, double minimum, double maximum) {
    Checked checked = checkedNumber(argument, minimum, maximum);
    if (checked.refusal.isEmpty() && (checked.value != std::floor(checked.value) || checked.value < 0))
        checked.refusal = refusal(DataTypeError, "Not a whole number: " + argument);
    return checked;
}

bool isDottedAddress(const QByteArray& text) {
    const QList<QByteArray> parts = text.split('.');
    const auto isPart = [](const QByteArray& part) {
        const bool digits = std::all_of(part.begin(), part.end(), [](char c) { return c >= '0' && c <= '9'; });
        return digits && !part.isEmpty() && part.size() <= 3 && part.toInt() <= 255;
    };
    return parts.size() == 4 && std::all_of(parts.begin(), parts.end(), isPart);
}

struct Assign {
    const QByteArray& argument;
    ChannelRecord& record;

    template <typename Limited>
    QByteArray operator()(Limited ChannelRecord::*field) const {
        Limited& limited = record.*field;
        const Checked checked = checkedNumber(argument, limited.minimum, limited.maximum);
        if (checked.refusal.isEmpty())
            limited.value = checked.value;
        return checked.refusal;
    }

    QByteArray operator()(CountField field) const {
        LimitedCount& limited = record.*field;
        const Checked checked = checkedCount(argument, limited.minimum, limited.maximum);
        if (checked.refusal.isEmpty())
            limited.value = static_cast<std::uint32_t>(checked.value);
        return checked.refusal;
    }

    QByteArray operator()(const SwitchField& field) const {
        const bool on = argument == "1" || wordMatches(OnOffToString[1], argument);
        if (!on && argument != "0" && !wordMatches(OnOffToString[0], argument))
            return refusal(IllegalValue, "Neither ON nor OFF: " + argument);
        const unsigned conflicts = on ? conflictsWith(field.modulation, runningModulations(record)) : 0;
        if (conflicts != 0)
            return refusal(SettingsConflict, "Settings conflict with modulations " + QByteArray::number(conflicts));
        record.*field.word = on ? 1 : 0;
        return {};
    }

    QByteArray operator()(const WordField& field) const {
        const auto* const end = field.words + field.count;
        const auto* const word =
            std::find_if(field.words, end, [this](const char* candidate) { return wordMatches(candidate, argument); });
        if (word == end)
            return refusal(IllegalValue, "Unknown word: " + argument);
        setRecordText(record.*field.text, *word);
        return {};
    }

    QByteArray operator()(const AddressField& field) const {
        const QByteArray address = unquoted(argument);
        if (!isDottedAddress(address))
            return refusal(IllegalValue, "Not an address: " + argument);
        setRecordText(record.*field.text, address.toStdString());
        return {};
    }

    QByteArray operator()(const ImpedanceField& field) const {
        static const struct {
            const char* text;
            std::uint32_t ohms;
        } Impedances[] = {{"50", 50}, {"10K", 10000}, {"10000", 10000}, {"100K", 100000}, {"100000", 100000}};
        for (const auto& impedance : Impedances) {
            if (wordMatches(impedance.text, argument)) {
                record.*field.ohms = impedance.ohms;
                return {};
            }
        }
        return refusal(IllegalValue, "No such impedance: " + argument);
    }

    QByteArray operator()(const MaskField& field) const {
        const Checked checked = checkedCount(argument, 0, AllModulations);
        if (checked.refusal.isEmpty())
            record.*field.mask = static_cast<std::uint32_t>(checked.value);
        return checked.refusal;
    }
};

struct Show {
    const ChannelRecord& record;

    template <typename Limited>
    QByteArray operator()(Limited ChannelRecord::*field) const {
        return numberText((record.*field).value);
    }
    QByteArray operator()(const SwitchField& field) const { return QByteArray::number(record.*field.word); }
    QByteArray operator()(const WordField& field) const { return recordText(record.*field.text).c_str(); }
    QByteArray operator()(const AddressField& field) const { return recordText(record.*field.text).c_str(); }
    QByteArray operator()(const ImpedanceField& field) const { return QByteArray::number(record.*field.ohms); }
    QByteArray operator()(const MaskField& field) const { return QByteArray::number(record.*field.mask); }
};

/// A step of a sweep may be within its limits and the whole sweep not: a change that makes it so is refused.
QByteArray sweepTimeRefusal(const ChannelRecord& before, const ChannelRecord& after) {
    struct Sweep {
        LimitedCount ChannelRecord::*steps;
        LimitedValue ChannelRecord::*dwell;
        ValueLimits ChannelRecord::*limits;
        double timeIn(const ChannelRecord& record) const { return (record.*steps).value * (record.*dwell).value; }
    };
    static const Sweep Sweeps[] = {
        {&ChannelRecord::frswSteps, &ChannelRecord::frswDwell, &ChannelRecord::frswTotalTime},
        {&ChannelRecord::prswSteps, &ChannelRecord::prswDwell, &ChannelRecord::prswTotalTime}};
    for (const Sweep& sweep : Sweeps) {
        const ValueLimits limits = after.*sweep.limits;
        const double seconds = sweep.timeIn(after);
        const double rounding = seconds * 1e-9; // of the product, so that the limits themselves are within
        const bool within =
            !limits.known() || limits.contains(seconds + rounding) || limits.contains(seconds - rounding);
        if (seconds != sweep.timeIn(before) && !within)
            return refusal(OutOfRange, "The sweep would take " + numberText(seconds) + " s, which is not within " +
                                           numberText(limits.minimum) + " to " + numberText(limits.maximum));
    }
    return {};
}

} // namespace

QByteArray assignField(const Field& field, const QByteArray& argument, ChannelRecord& record) {
    if (argument.isEmpty())
        return refusal(MissingParameter, "Missing parameter");
    ChannelRecord changed = record;
    QByteArray refused = std::visit(Assign{argument, changed}, field);
    if (refused.isEmpty())
        refused = sweepTimeRefusal(record, changed);
    if (refused.isEmpty())
        record = changed;
    return refused;
}

QByteArray fieldText(const Field& field, const ChannelRecord& record) {
    return std::visit(Show{record}, field);
}

} // namespace Sim
