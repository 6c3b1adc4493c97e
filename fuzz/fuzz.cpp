#include "fuzz/targets.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <cstdio>
#include <cstdlib>
#include <exception>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/common_interface_defs.h>
#endif

namespace {

const char* s_target = "";
std::uint64_t s_seed = 1;
std::uint64_t s_index = 0;

/// The last words of a reader that dies: how to see it die again.
void sayWhere() {
    std::printf("died on: %s --seed %llu --only %llu\n", s_target, static_cast<unsigned long long>(s_seed),
                static_cast<unsigned long long>(s_index));
    std::fflush(stdout);
}

/// The number of findings.
int fuzz(const FuzzTarget& target, std::uint64_t first, std::uint64_t last) {
    const QByteArray name = target.name.toLatin1();
    s_target = name.constData();
    Mutator mutator(target.seeds, target.words, s_seed);
    int findings = 0;
    QElapsedTimer time;
    time.start();
    for (s_index = first; s_index < last; ++s_index) {
        const QByteArray input = mutator.input(s_index);
        const QString wrong = target.read(input, mutator);
        if (!wrong.isEmpty() && ++findings <= 10)
            std::printf("finding: %s --seed %llu --only %llu: %s: %s\n", s_target,
                        static_cast<unsigned long long>(s_seed), static_cast<unsigned long long>(s_index),
                        qPrintable(wrong.left(400)), input.left(200).toPercentEncoding(" {}[]\":,#").constData());
    }
    std::printf("%s: inputs %llu, findings %d, %.1f s\n", s_target, static_cast<unsigned long long>(last - first),
                findings, time.elapsed() / 1000.0);
    std::fflush(stdout);
    s_target = "";
    return findings;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription("Feeds the readers of everything that comes from outside with damaged inputs.");
    parser.addHelpOption();
    parser.addPositionalArgument(
        "targets", "Readers: reply list pattern csv csvpattern manifest trailer datagram record. All without.");
    parser.addOptions({{"inputs", "Inputs for each reader, 1000000 by default.", "N", "1000000"},
                       {"seed", "What the inputs come from, 1 by default.", "N", "1"},
                       {"only", "The input of this number alone.", "N"}});
    parser.process(application);
    const bool one = parser.isSet("only");
    for (const char* option : {"inputs", "seed", "only"}) {
        bool isNumber = true;
        if (parser.isSet(option))
            parser.value(option).toULongLong(&isNumber);
        if (!isNumber) {
            std::fprintf(stderr, "--%s takes a number.\n", option);
            return 2;
        }
    }
    s_seed = parser.value("seed").toULongLong();
    const std::uint64_t only = parser.value("only").toULongLong();
#if defined(__SANITIZE_ADDRESS__)
    __sanitizer_set_death_callback(sayWhere);
#else
    std::set_terminate([] {
        sayWhere();
        std::abort();
    });
#endif
    const QStringList wanted = parser.positionalArguments();
    int findings = 0;
    int targets = 0;
    for (const FuzzTarget& target : fuzzTargets()) {
        if (!wanted.isEmpty() && !wanted.contains(target.name))
            continue;
        ++targets;
        findings += fuzz(target, one ? only : 0, one ? only + 1 : parser.value("inputs").toULongLong());
    }
    if (targets < wanted.size()) {
        std::fprintf(stderr, "There is no reader of one of these names: %s\n", qPrintable(wanted.join(' ')));
        return 2;
    }
    return findings == 0 ? 0 : 1;
}
