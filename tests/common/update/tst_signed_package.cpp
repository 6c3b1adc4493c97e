#include "common/update/package_staging.h"
#include "common/update/package_trust.h"
#include "common/update/signature.h"
#include "common/update/update_memory.h"
#include "tests/support/killed_process.h"
#include "tests/support/test_folder.h"
#include "tests/support/testbase.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using Result = PackageStaging::Result;

const QByteArray Package = QByteArray("the package's bytes ").repeated(20000); // more than one piece

QByteArray manifestOf(const QByteArray& package, int release = 7, const QByteArray& model = "KV-6000") {
    return R"({"name":"FW","version":"2.1","package":"p","package_sha256":")" +
           QCryptographicHash::hash(package, QCryptographicHash::Sha256).toHex() + R"(","release":)" +
           QByteArray::number(release) + R"(,"model":")" + model + R"("})";
}

/// The files that this process can write end at so many bytes, as on a disk that is full.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes) {
        getrlimit(RLIMIT_FSIZE, &m_before);
        m_handler = std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }

private:
    rlimit m_before{};
    void (*m_handler)(int);
};

} // namespace

/// Keys, policy and copies: what is proved of a package before anything of it is used.
class TestSignedPackage : public TestBase {
    Q_OBJECT

    std::unique_ptr<TestFolder> m_dir;
    Signature::KeyPair m_ours;
    Signature::KeyPair m_theirs;

    void putPackage(const QByteArray& manifest, const QByteArray& seed, const QByteArray& package = Package) {
        m_dir->put("stick/p", package);
        m_dir->put("stick/Manifest", manifest);
        if (!seed.isEmpty())
            m_dir->put("stick/Manifest.sig", *Signature::sign(manifest, seed));
    }

    std::unique_ptr<MANIFEST_DATA> listed() const {
        auto manifest = fwData({m_dir->at("stick/Manifest")}).takeFirst();
        manifest->seal = sealOf(*manifest, {m_ours.publicKey});
        return manifest;
    }

    Seal seal() const { return listed()->seal; }

    Result stage(const MANIFEST_DATA& asked, Seal* seal = nullptr) const {
        PackageStaging staging(m_dir->at("kavor"));
        const Result result = staging.stage(asked, {m_ours.publicKey});
        if (result == Result::Ok && seal)
            *seal = staging.manifest().seal;
        return result;
    }

    QStringList leftOver() const {
        return QDir(m_dir->at("kavor")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    Trust trust(uid_t owner = ::geteuid()) const {
        TrustSettings settings;
        settings.folder = m_dir->at("trust");
        settings.owner = owner;
        return readTrust(settings);
    }

protected:
    /// However a staging has ended, nothing of it is left behind.
    void tearDown() override {
        QCOMPARE(leftOver().filter(QRegularExpression("staged-[A-Za-z0-9]{6}$")), QStringList());
    }

    void setUp() override {
        m_dir = std::make_unique<TestFolder>();
        m_ours = *Signature::makeKeyPair();
        m_theirs = *Signature::makeKeyPair();
        putPackage(manifestOf(Package), m_ours.seed);
    }

private slots:
    /// Written down once with another implementation (RFC 8032, test 2).
    void knownAnswer() {
        const QByteArray seed = QByteArray::fromHex("4ccd089b28ff96da9db6c346ec114e0f5b8a319f35aba624da8cf6ed4fb8a6fb");
        QCOMPARE(Signature::keyPairOf(seed)->publicKey.toHex(),
                 QByteArray("3d4017c3e843895a92b70aa74d1b7ebc9c982ccf2ec4968cc0cd55f12af4660c"));
        QCOMPARE(
            Signature::sign("\x72", seed)->toHex(),
            QByteArray("92a009a9f0d4cab8720e820b5f642540a2b27b5416503f8fb3762223ebdb69da085ac1e43e15996e458f3613d0f"
                       "11d8c387b2eaeb4302aeeb00d291612bb0c00"));
        QVERIFY(Signature::keyFromText(" " + Signature::keyText(seed)) == seed);
        QVERIFY(Signature::keyFromText(Signature::keyText(seed) + "0").isEmpty());
    }

    void everyByteCounts() {
        QVERIFY(seal() == Seal::Signed);
        for (const char* name : {"stick/Manifest", "stick/Manifest.sig"}) {
            const QByteArray whole = m_dir->contentOf(name);
            for (int at = 0; at <= whole.size(); ++at) {
                QByteArray bytes = whole;
                if (at < whole.size())
                    bytes[at] = static_cast<char>(bytes[at] ^ (1 << at % 8));
                else
                    bytes += '\n';
                m_dir->put(name, bytes);
                QVERIFY2(seal() == Seal::Broken, qPrintable(QString("%1, byte %2").arg(name).arg(at)));
                m_dir->put(name, whole.left(at));
                QVERIFY(at == whole.size() || seal() == Seal::Broken);
            }
            m_dir->put(name, whole);
        }
    }

    void seals() {
        putPackage(manifestOf(Package), m_theirs.seed);
        QVERIFY(seal() == Seal::Broken);
        QVERIFY(sealOf(*listed(), {m_ours.publicKey, m_theirs.publicKey}) == Seal::Signed);
        QVERIFY(sealOf(*listed(), {}) == Seal::NotChecked);
        for (const QByteArray& lacking : {manifestOf(Package, 0), manifestOf(Package, 7, ""),
                                          manifestOf(Package).replace("package_sha256", "other"),
                                          manifestOf(Package, 7).replace(":7,", ":\"7\",")}) {
            putPackage(lacking, m_ours.seed);
            QVERIFY2(seal() == Seal::Broken, lacking.constData());
        }
        QVERIFY(QFile::remove(m_dir->at("stick/Manifest.sig")));
        QVERIFY(seal() == Seal::Unsigned);
        QVERIFY(QFile::link(m_dir->at("stick/p"), m_dir->at("stick/Manifest.sig")));
        Seal copied = Seal::Unsigned;
        QVERIFY(seal() == Seal::Broken && stage(*listed(), &copied) == Result::Ok && copied == Seal::Broken);
        QVERIFY(QFile::remove(m_dir->at("stick/p")) && seal() == Seal::Broken);
    }

    void policyFiles() {
        QVERIFY(!trust().isStated); // no folder
        m_dir->put("trust/update-2.pub", Signature::keyText(m_ours.publicKey));
        m_dir->put("trust/update-1.pub", Signature::keyText(m_theirs.publicKey));
        QVERIFY(!trust().isStated && trust().policy == UpdatePolicy::AllowUnsigned);
        QCOMPARE(trust().keys, (QVector<QByteArray>{m_theirs.publicKey, m_ours.publicKey}));
        const std::pair<QByteArray, UpdatePolicy> texts[] = {{"allow-unsigned\n", UpdatePolicy::AllowUnsigned},
                                                             {"warn", UpdatePolicy::Warn},
                                                             {"require", UpdatePolicy::Require},
                                                             {"", UpdatePolicy::Require},
                                                             {"Warn", UpdatePolicy::Require},
                                                             {"warn warn", UpdatePolicy::Require},
                                                             {QByteArray(5000, ' '), UpdatePolicy::Require}};
        for (const auto& [text, policy] : texts) {
            m_dir->put("trust/policy", text);
            QVERIFY2(trust().policy == policy && trust().isStated, text.constData());
        }
        const auto isRequire = [this] {
            return trust().policy == UpdatePolicy::Require && trust().isStated;
        };
        const QByteArray policy = QFile::encodeName(m_dir->put("trust/policy", "warn"));
        const QByteArray folder = QFile::encodeName(m_dir->at("trust"));
        for (const QByteArray& path : {policy, folder}) {
            struct stat before {};
            QCOMPARE(::stat(path.constData(), &before), 0);
            for (const mode_t others : {S_IWGRP, S_IWOTH}) {
                QCOMPARE(::chmod(path.constData(), before.st_mode | others), 0);
                QVERIFY2(isRequire(), path.constData());
            }
            QCOMPARE(::chmod(path.constData(), before.st_mode), 0);
            QVERIFY(!isRequire());
        }
        QVERIFY(trust(::geteuid() + 1).policy == UpdatePolicy::Require && trust(::geteuid() + 1).keys.isEmpty());
        QVERIFY(::rename(policy.constData(), (folder + "/real").constData()) == 0);
        QVERIFY(::symlink("real", policy.constData()) == 0 && isRequire());
        QVERIFY(::unlink(policy.constData()) == 0 && ::mkfifo(policy.constData(), 0600) == 0 && isRequire());
        QVERIFY(::unlink(policy.constData()) == 0 && ::mkdir(policy.constData(), 0700) == 0 && isRequire());
        QVERIFY(::rmdir(policy.constData()) == 0 && ::rename(folder.constData(), (folder + "-real").constData()) == 0);
        QVERIFY(::symlink("trust-real", folder.constData()) == 0 && isRequire());
        QVERIFY(::unlink(folder.constData()) == 0);
        m_dir->put("trust", "no folder");
        QVERIFY(isRequire());
    }

    /// Who deletes the policy file has not loosened it; its owner may.
    void deletedPolicyHolds() {
        const UpdateMemory memory(m_dir->at("kavor/updates.json"));
        QVERIFY(memory.policyInForce(trust()) == UpdatePolicy::AllowUnsigned);
        for (const char* word : {"warn", "require", "allow-unsigned"}) {
            m_dir->put("trust/policy", word);
            const UpdatePolicy stated = trust().policy;
            QVERIFY(memory.policyInForce(trust()) == stated && memory.remember(trust()));
            QVERIFY(QFile::remove(m_dir->at("trust/policy")) && memory.policyInForce(trust()) == stated);
        }
    }

    void verdicts_data() {
        addColumns<int, int, QString, QString>("seal", "release", "model", "verdicts"); // from the weakest policy
        const auto row = [](const char* tag, Seal seal, int release, const char* model, const char* verdicts) {
            addRow(tag, static_cast<int>(seal), release, QString(model), QString(verdicts));
        };
        row("in order", Seal::Signed, 5, "KV-6000", "install install install");
        row("unsigned", Seal::Unsigned, 9, "KV-6000", "install ask refuse");
        row("no key", Seal::NotChecked, 9, "KV-6000", "install ask refuse");
        row("broken", Seal::Broken, 9, "KV-6000", "ask ask refuse");
        row("lower release", Seal::Signed, 4, "KV-6000", "install ask refuse");
        row("other model", Seal::Signed, 9, "KV-6001", "install ask refuse");
        row("model not known", Seal::Signed, 9, "", "install ask refuse");
    }
    void verdicts() {
        QFETCH(int, seal);
        QFETCH(int, release);
        QFETCH(QString, model);
        const auto manifest = listed();
        manifest->seal = static_cast<Seal>(seal);
        manifest->release = release;
        QStringList found;
        for (const UpdatePolicy policy : {UpdatePolicy::AllowUnsigned, UpdatePolicy::Warn, UpdatePolicy::Require}) {
            const Verdict verdict = judge(*manifest, policy, {model, 5});
            found << QStringList{"install", "ask", "refuse"}.at(verdict.what);
            QCOMPARE(verdict.why.isEmpty(), verdict.what == Verdict::Install);
        }
        QTEST(found.join(' '), "verdicts");
    }

    void memoryKeepsReleaseAndEnd() {
        const UpdateMemory memory(m_dir->put("kavor/updates.json", "{\"fpga\":[1],\"software\":{\"release\":-3}}"));
        QCOMPARE(memory.installedRelease(PackageType::Software), 0);
        const auto manifest = listed();
        QVERIFY(memory.note(*manifest, false, "cut off"));
        QCOMPARE(memory.installedVersion(PackageType::Software), QString());
        QVERIFY(memory.note(*manifest, true, "done"));
        QCOMPARE(memory.installedVersion(PackageType::Software), QString("2.1"));
        QCOMPARE(memory.installedRelease(PackageType::Software), 7);
        manifest->seal = Seal::Unsigned; // anybody can write any release into it
        manifest->release = 9;
        manifest->version = "3";
        QVERIFY(memory.note(*manifest, true, "done"));
        QCOMPARE(memory.installedRelease(PackageType::Software), 7);
        QVERIFY(memory.last(PackageType::Software).version == "3" && memory.last(PackageType::Fpga).version.isEmpty());
    }

    void copiesArePrivateAndWhole() {
        PackageStaging staging(m_dir->at("kavor/deep"));
        const auto asked = listed();
        int percent = -1;
        bool rose = true;
        QVERIFY(staging.stage(*asked, {m_ours.publicKey},
                              [&](int now) { rose = rose && now >= std::exchange(percent, now); }) == Result::Ok);
        QVERIFY(rose && percent == 100);
        QVERIFY(QDir(m_dir->at("stick")).removeRecursively()); // pulled
        QFile copy(staging.manifest().package_path);
        QVERIFY(copy.open(QIODevice::ReadOnly) && copy.readAll() == Package);
        QVERIFY(staging.manifest().seal == Seal::Signed);
        struct stat folder {};
        QCOMPARE(::stat(QFile::encodeName(QFileInfo(copy).path()).constData(), &folder), 0);
        QCOMPARE(folder.st_mode & 07777, mode_t{0700});
    }

    /// A stick that answers otherwise the second time.
    void changedBetweenTheReads() {
        const auto asked = listed();
        Seal seal = Seal::Unsigned;
        QVERIFY(stage(*asked, &seal) == Result::Ok && seal == Seal::Signed);
        const QByteArray manifest = m_dir->contentOf("stick/Manifest");
        m_dir->put("stick/Manifest", manifest + ' ');
        QVERIFY(stage(*asked) == Result::Changed);
        m_dir->put("stick/Manifest", manifest);
        m_dir->put("stick/Manifest.sig", *Signature::sign(manifest, m_theirs.seed));
        QVERIFY(stage(*asked, &seal) == Result::Ok && seal == Seal::Broken);
        QVERIFY(QFile::remove(m_dir->at("stick/Manifest.sig")));
        QVERIFY(stage(*asked) == Result::NotCopied);
        putPackage(manifest, m_ours.seed);
        for (int at = 0; at < Package.size(); at += Package.size() / 16) {
            QByteArray spoilt = Package;
            spoilt[at] = static_cast<char>(spoilt[at] ^ 0x20);
            m_dir->put("stick/p", spoilt);
            QVERIFY(stage(*asked) == Result::Damaged);
            m_dir->put("stick/p", Package.left(at));
            QVERIFY(stage(*asked) == Result::Damaged);
        }
        m_dir->put("stick/p", Package + 'x');
        QVERIFY(stage(*asked) == Result::Damaged);
        QVERIFY(QFile::remove(m_dir->at("stick/p")) && stage(*asked) == Result::NoPackage);
        QCOMPARE(::mkfifo(QFile::encodeName(m_dir->at("stick/p")).constData(), 0600), 0);
        QVERIFY(stage(*asked) == Result::NoPackage);
    }

    /// An attribute of the system claims a page and ends after a few bytes: so does a file whose stick is pulled.
    void endsTooEarly() {
        const auto asked = listed();
        asked->package_path = "/sys/class/net/lo/mtu";
        QVERIFY(stage(*asked) == Result::NotCopied);
        asked->package_path = m_dir->at("stick/p");
        asked->manifest_path = "/sys/class/net/lo/mtu";
        QVERIFY(stage(*asked) == Result::NotCopied);
    }

    void fullDisk() {
        const auto asked = listed();
        const int sizes[] = {0, 1, 63, asked->bytes.size() - 1, 4096, 300000, Package.size() - 1};
        for (const int bytes : sizes) {
            const FullDisk disk(static_cast<rlim_t>(bytes));
            QVERIFY2(stage(*asked) == Result::NotCopied, qPrintable(QString::number(bytes)));
        }
        m_dir->put("stick/p", "small");
        {
            const FullDisk disk(100); // the package fits, its manifest does not
            QVERIFY(stage(*asked) == Result::NotCopied);
        }
        putPackage(R"({"name":"FW","package":"p"})", m_ours.seed, "small");
        const auto brief = listed();
        {
            const FullDisk disk(Signature::Size - 1); // nor does a signature that is longer than its manifest
            QVERIFY(stage(*brief) == Result::NotCopied);
        }
        QVERIFY(stage(*brief) == Result::Ok);
        QVERIFY(QFile::resize(m_dir->at("stick/p"), qint64{1} << 42)); // sparse: no disk has that much room
        QVERIFY(stage(*asked) == Result::NoRoom);
        m_dir->put("kavor/file", "x");
        PackageStaging nowhere(m_dir->at("kavor/file"));
        QVERIFY(nowhere.stage(*asked, {}) == Result::NotCopied && !nowhere.why().isEmpty());
    }

    void killedAtEverySystemCall() {
        putPackage(manifestOf("small"), m_ours.seed, "small");
        const auto asked = listed();
        const QString bystander = m_dir->put("kavor/.velda-staged-notours/keep", "x");
        const QStringList expected = leftOver();
        auto end = KilledProcess::End::Killed;
        int foundLeft = 0;
        for (int stop = 1; end == KilledProcess::End::Killed; ++stop) {
            end = KilledProcess::runAndKill([&] { return stage(*asked) == Result::Ok; }, stop);
            if (end == KilledProcess::End::NotTraced)
                QSKIP("Processes may not be traced here.");
            foundLeft += leftOver() == expected ? 0 : 1;
            PackageStaging::sweep(m_dir->at("kavor"));
            QCOMPARE(leftOver(), expected);
        }
        QCOMPARE(end, KilledProcess::End::Done);
        QVERIFY2(foundLeft > 20, qPrintable(QString::number(foundLeft)));
        QVERIFY(QFile::exists(bystander));
    }
};

VELDA_TEST_MAIN(QCoreApplication, TestSignedPackage)
#include "tst_signed_package.moc"
