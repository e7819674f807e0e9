// The main window's desktop habits: font and Qt's texts for the message file's language,
// tool tips, keyboard shortcuts and the picture's name in the title.
#include "app/frmMain.h"
#include "camera/CameraDriver.h"
#include "camera/CameraSession.h"
#include "camera/ui/CameraPanel.h"

#include "common/CommandTips.h"
#include "common/TextFont.h"
#include "files/ui/PicturePanel.h"
#include "measure/MeasureSession.h"
#include "measure/ui/MeasurePanel.h"

#include <QAbstractButton>
#include <QApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QFontDatabase>
#include <QLibraryInfo>
#include <QLocale>
#include <QShortcut>
#include <QTranslator>

namespace tavix {

void frmMain::applyLanguage()
{
    if (!TextFont::isJapanese(data_.messages))
        return;
    // Application-wide, so that the dialogs get it too.
    const QString family = TextFont::family(data_.messages, QFontDatabase::families());
    if (!family.isEmpty()) {
        QFont font = QApplication::font();
        font.setFamilies({family});
        QApplication::setFont(font);
    }
    // Message boxes and file dialogs speak the same language when Qt's texts are installed.
    auto texts = std::make_unique<QTranslator>();
    if (texts->load(QLocale(QLocale::Japanese), QStringLiteral("qtbase"), QStringLiteral("_"),
                    QLibraryInfo::path(QLibraryInfo::TranslationsPath)) &&
        QCoreApplication::installTranslator(texts.get()))
        qtTexts_ = std::move(texts);
}

void frmMain::installDesktopHabits()
{
    for (const CommandTips::Tip& tip : CommandTips::all()) {
        auto* button = findChild<QAbstractButton*>(QLatin1String(tip.button));
        if (!button)
            continue;
        if (tip.tipId != 0)
            button->setToolTip(CommandTips::text(tip, data_.messages));
        for (const QKeySequence& keys : tip.keys) {
            // click() does nothing on a disabled button, so a shortcut obeys the button's state.
            auto* shortcut = new QShortcut(keys, this);
            shortcut->setObjectName(QStringLiteral("shortcut:") + keys.toString(QKeySequence::PortableText));
            connect(shortcut, &QShortcut::activated, button, &QAbstractButton::click);
        }
    }
    auto* escape = new QShortcut(QKeySequence(Qt::Key_Escape), this);
    escape->setObjectName(QStringLiteral("shortcut:Esc"));
    connect(escape, &QShortcut::activated, this, &frmMain::cancelMeasuringTool);

    connect(pictures_.get(), &PicturePanel::pictureFileChanged, this, [this](const QString& fileName) {
        setWindowTitle(QStringLiteral("%1 - %2").arg(data_.settings.APPNAME, QFileInfo(fileName).fileName()));
    });
}

void frmMain::cancelMeasuringTool()
{
    // The first Esc drops the points clicked so far, the next one puts the tool away.
    if (measure_->session().clickCount() > 0) {
        measure_->session().cancel();
        return;
    }
    measure_->session().clearTool();
    measure_->releaseToolButtons();
}

void frmMain::openPicture(const QString& fileName)
{
    // Right after start-up the camera may not have sent a frame yet, and the
    // freeze before the load would find nothing to take: wait for the first
    // one, a few seconds at most, as a user would before clicking.
    CameraDriver& driver = camera_->session().driver();
    QElapsedTimer waited;
    waited.start();
    std::int32_t good = 0;
    while (!camera_->stillShown() && driver.GetGoodFrames(camera_->session().camera(), good) == 0 &&
           good == 0 && waited.elapsed() < 5000)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    pictures_->loadPictureFile(fileName);
}

}  // namespace tavix
