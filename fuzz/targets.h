#pragma once

#include "fuzz/mutator.h"

#include <QString>
#include <functional>
#include <vector>

/// One reader of bytes from outside.
struct FuzzTarget {
    QString name;
    std::vector<QByteArray> seeds;
    std::vector<QByteArray> words;
    /// Reads one input, and says what is wrong with what came of it; empty when nothing is.
    std::function<QString(const QByteArray& input, Mutator& random)> read;
};

std::vector<FuzzTarget> fuzzTargets();
