#include "portable/screens/about/screenabout.h"

#include "common/instrument/handlerscpi.h"
#include "portable/fields/readoutgroup.h"
#include "portable/widgets/styles/tokens.h"

#include <QLabel>
#include <QPixmap>
#include <QSysInfo>
#include <QtGlobal>

namespace Kavor::HandheldGui {

namespace {

constexpr int PictureWidth = 560;
constexpr int ValueX = 240;

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
    const int height = Style::ContentHeight;
    const QRect left(Style::PageMargin, 0, PictureWidth, height);
    auto* frame = new PageGroup(m_page, QString(), left);
    m_picture = frame->addLabel(12, 12, left.width() - 24, left.height() - 24, QString());
    m_picture->setObjectName(QStringLiteral("aboutPicture"));
    m_picture->setAlignment(Qt::AlignCenter);

    const int x = left.right() + 1 + Style::Gap;
    using R = ChannelRecord;
    m_versions = new ReadoutGroup(
        m_page, QStringLiteral("About"), QRect(x, 0, Style::WindowWidth - Style::PageMargin - x, height), ValueX,
        {{QStringLiteral("Model"), QStringLiteral("aboutModel"), textField(&R::model)},
         {QStringLiteral("Serial"), QStringLiteral("aboutSerial"), textField(&R::serial)},
         {QStringLiteral("Panel Version"), QStringLiteral("aboutPanel"), fixedText(QStringLiteral(VELDA_VERSION)),
          false},
         {QStringLiteral("FW/FPGA Version"), QStringLiteral("aboutModule"), textField(&R::firmwareVersion)},
         {QStringLiteral("Qt Version"), QStringLiteral("aboutQt"), fixedText(QString::fromLatin1(qVersion())), false},
         {QStringLiteral("Build"), QStringLiteral("aboutBuild"), fixedText(buildText()), false}});
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
    m_page->show();
}

void aboutScreen::hide() {
    m_page->hide();
}

} // namespace Kavor::HandheldGui
