#include "common/update/trust_folder.h"

#include "common/update/signature.h"
#include "platform/logger.h"

#include <QFile>
#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr std::size_t LongestText = 128; ///< of a policy or a key

constexpr struct {
    const char* word;
    UpdatePolicy policy;
} Policies[] = {
    {"allow-unsigned", UpdatePolicy::AllowUnsigned}, {"warn", UpdatePolicy::Warn}, {"require", UpdatePolicy::Require}};

class Descriptor {
public:
    explicit Descriptor(int number) : m_number(number) {}
    ~Descriptor() {
        if (m_number >= 0)
            ::close(m_number);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int number() const { return m_number; }
    bool isOpen() const { return m_number >= 0; }

private:
    int m_number;
};

// Of what is open, not of a name that may mean something else by now.
bool belongs(const Descriptor& opened, uid_t owner, mode_t kind) {
    struct stat about {};
    return ::fstat(opened.number(), &about) == 0 && (about.st_mode & S_IFMT) == kind && about.st_uid == owner &&
           (about.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

struct Found {
    bool isThere = true;
    std::optional<QByteArray> text; ///< when it can be trusted
};

Found readTrusted(const Descriptor& folder, const char* name, uid_t owner) {
    const Descriptor file(::openat(folder.number(), name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!file.isOpen())
        return {errno != ENOENT, std::nullopt};
    std::array<char, LongestText + 1> bytes;
    if (!belongs(file, owner, S_IFREG))
        return {};
    const ssize_t size = ::read(file.number(), bytes.data(), bytes.size());
    if (size < 0 || static_cast<std::size_t>(size) > LongestText)
        return {};
    return {true, QByteArray(bytes.data(), static_cast<int>(size))};
}

UpdatePolicy policyOf(const Found& found) {
    const QByteArray word = found.text ? found.text->trimmed() : QByteArray();
    for (const auto& row : Policies) {
        if (word == row.word)
            return row.policy;
    }
    return UpdatePolicy::Require;
}

} // namespace

Trust readTrust(const TrustSettings& settings) {
    const Descriptor folder(
        ::open(QFile::encodeName(settings.folder).constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!folder.isOpen() && errno == ENOENT)
        return {};
    if (!folder.isOpen() || !belongs(folder, settings.owner, S_IFDIR)) {
        VELDA_LOG("update", QtInfoMsg, "%s is no folder of user %d alone: signed packages are required",
                  settings.folder, static_cast<int>(settings.owner));
        return {UpdatePolicy::Require, true, {}};
    }
    Trust trust;
    for (const char* name : KeyFiles) {
        const Found key = readTrusted(folder, name, settings.owner);
        const QByteArray bytes = key.text ? Signature::keyFromText(*key.text) : QByteArray();
        if (!bytes.isEmpty())
            trust.keys << bytes;
        else if (key.isThere)
            VELDA_LOG("update", QtInfoMsg, "%s/%s is no key that can be trusted", settings.folder, name);
    }
    const Found policy = readTrusted(folder, PolicyFile, settings.owner);
    trust.isStated = policy.isThere;
    if (policy.isThere)
        trust.policy = policyOf(policy);
    return trust;
}
