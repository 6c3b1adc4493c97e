#include "portable/screens/about/screenabout.h"

#include "common/instrument/handlerscpi.h"
#include "platform/devicepaths.h"
#include "portable/fields/readoutgroup.h"
#include "portable/host/panelhost.h"
#include "portable/screens/about/diagnostics.h"
#include "portable/screens/about/licences.h"
#include "portable/widgets/listpage.h"
#include "portable/widgets/styles/tokens.h"

#include <QLabel>
#include <QPixmap>
#include <QPushButton>
#include <QSysInfo>
#include <QtGlobal>

namespace Kavor::HandheldGui {

namespace {

constexpr int PictureWidth = 560;
constexpr int GroupMargin = 16;
constexpr int ValueX = 256;
constexpr int GroupHeight = Style::ContentHeight;
const char SaveText[] = "Save diagnostics";

std::function<QString(const ChannelRecord&)> fixedText(const QString& text) {
    return [text](const ChannelRecord&) {
        return text;
    };
}

/// The day of the build (of the sources, where a package build sets SOURCE_DATE_EPOCH) and the processor built for.
QString buildText() {
    return QStringLiteral("%1, %2").arg(QStringLiteral(VELDA_BUILD_DAY), QSysInfo::buildCpuArchitecture());
}

} // namespace

aboutScreen::aboutScreen(QWidget* parent, std::vector<STATE> states)
    : IGuiScreen(parent, std::move(states)), m_page(makePage(QStringLiteral("pageAbout"))) {
    buildPicture();
    buildVersions();
}

void aboutScreen::buildPicture() {
    auto* frame = new PageGroup(m_page, QString(), QRect(Style::PageMargin, 0, PictureWidth, GroupHeight));
    const int buttonTop = GroupHeight - GroupMargin - Style::ButtonHeight;
    m_picture = frame->addLabel(12, 12, PictureWidth - 24, buttonTop - 24, QString());
    m_picture->setObjectName(QStringLiteral("aboutPicture"));
    m_picture->setAlignment(Qt::AlignCenter);
    m_save = makeButton(frame, QLatin1String(SaveText), QStringLiteral("aboutDiagnostics"));
    auto* licences = makeButton(frame, QStringLiteral("Licences"), QStringLiteral("aboutLicences"));
    const int width = (PictureWidth - 2 * GroupMargin - Style::Gap) / 2;
    m_save->setGeometry(GroupMargin, buttonTop, width, Style::ButtonHeight);
    licences->setGeometry(GroupMargin + width + Style::Gap, buttonTop, width, Style::ButtonHeight);
    connect(m_save, &QPushButton::clicked, this, &aboutScreen::saveDiagnostics);
    connect(licences, &QPushButton::clicked, this, &aboutScreen::showLicences);
}

void aboutScreen::buildVersions() {
    const int x = Style::PageMargin + PictureWidth + Style::Gap;
    using R = ChannelRecord;
    m_versions = new ReadoutGroup(
        m_page, QStringLiteral("About"), QRect(x, 0, Style::WindowWidth - Style::PageMargin - x, GroupHeight), ValueX,
        {{QStringLiteral("Model"), QStringLiteral("aboutModel"), textField(&R::model)},
         {QStringLiteral("Serial"), QStringLiteral("aboutSerial"), textField(&R::serial)},
         {QStringLiteral("Panel Version"), QStringLiteral("aboutPanel"), fixedText(QStringLiteral(VELDA_VERSION)),
          false},
         {QStringLiteral("FW/FPGA Version"), QStringLiteral("aboutModule"), textField(&R::firmwareVersion)},
         {QStringLiteral("Qt Version"), QStringLiteral("aboutQt"), fixedText(QString::fromLatin1(qVersion())), false},
         {QStringLiteral("Build"), QStringLiteral("aboutBuild"), fixedText(buildText()), false}});
}

void aboutScreen::showLicences() {
    if (!m_licences) {
        m_licences = new ListPage(makePage(QStringLiteral("pageLicences")), QStringLiteral("Licences"), QString(),
                                  QStringLiteral("licencesBack"));
        m_licences->setTable(makeLicenceTable(m_licences->group()));
        connect(m_licences, &ListPage::back, this, &aboutScreen::show);
    }
    m_page->hide();
    m_licences->show();
}

void aboutScreen::saveDiagnostics() {
    m_save->setEnabled(false);
    m_save->setText(QStringLiteral("Saving..."));
    auto* job = new DiagnosticsJob(collectDiagnostics(handler(), host()), DevicePaths::mediaFolder(), this);
    connect(job, &DiagnosticsJob::done, this, &aboutScreen::onSaved);
    connect(job, &QThread::finished, job, &QObject::deleteLater);
    job->start();
}

void aboutScreen::onSaved(const QString& archive, const QString& problem) {
    m_save->setText(QLatin1String(SaveText));
    m_save->setEnabled(true);
    showToast(host(), archive.isEmpty() ? QStringLiteral("Diagnostics not saved: %1").arg(problem)
                                        : QStringLiteral("Saved on the stick: %1").arg(archive));
}

void aboutScreen::update_from_config(STATE) {
    m_versions->readFrom(handler().snapshot());
}

void aboutScreen::update_controls(STATE) {}

void aboutScreen::show() {
    // Reading and scaling it takes longer than all else of the page, and few ever look: not at the start.
    if (m_picture->pixmap(Qt::ReturnByValue).isNull())
        m_picture->setPixmap(QPixmap(QStringLiteral(":/product.png"))
                                 .scaled(m_picture->size(), Qt::KeepAspectRatio, Qt::SmoothTransformation));
    if (m_licences)
        m_licences->hide();
    m_page->show();
}

void aboutScreen::hide() {
    if (m_licences)
        m_licences->hide();
    m_page->hide();
}

} // namespace Kavor::HandheldGui
