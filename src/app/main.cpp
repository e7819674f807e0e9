#include "app/QtPrompter.h"
#include "app/frmMain.h"
#include "camera/genicam/GenICamDriver.h"
#include "camera/graph/LinuxVideoDevices.h"
#include "common/Clock.h"
#include "common/CommandLine.h"
#include "common/PictureMemory.h"
#include "common/ProgramFolder.h"
#include "program/CameraFactory.h"
#include "program/CameraList.h"

#include <QApplication>
#include <QScreen>
#include <QTimer>
#include <cstdio>

int main(int argc, char** argv)
{
    tavix::PictureMemory::keepLargeBlocksSeparate();
    // Help, version and usage errors need no display: they are answered before the application starts.
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    const tavix::CommandLine line = tavix::CommandLine::parse(arguments, QStringLiteral(TAVIX_VERSION));
    if (line.action == tavix::CommandLine::Action::ListCameras) {
        const tavix::LinuxVideoDevices devices;
        std::fputs(tavix::CameraList::text(
                       tavix::CameraList::all(devices, [] { return tavix::GenICamDriver::listCameras(); }))
                       .toLocal8Bit()
                       .constData(),
                   stdout);
        return 0;
    }
    if (line.action != tavix::CommandLine::Action::Run) {
        std::fputs(line.output.toLocal8Bit().constData(),
                   line.action == tavix::CommandLine::Action::Error ? stderr : stdout);
        return line.exitCode();
    }

    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Tavix"));
    QApplication::setApplicationVersion(QStringLiteral(TAVIX_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("org.tavix.Tavix"));

    const QString folder = tavix::ProgramFolder::resolve(tavix::ProgramFolder::fromEnvironment(line.home));
    tavix::QtPrompter prompter;
    tavix::SystemClock clock;
    // --camera names the camera of the start; one chosen later in the camera settings is the settings'.
    auto driverFactory = [asked = line.camera](tavix::AppData& data) mutable {
        const QString name = asked.isEmpty() ? data.settings.DRIVER : asked;
        asked.clear();
        auto choice = tavix::CameraFactory::create(
            name, data.folder, [log = data.log](const QString& text) { log.write(text); },
            {data.graphPath(), data.settings.CAMERAFILTERNAME}, data.settings.CAMERAID);
        if (!choice.note.isEmpty())
            data.log.write(choice.note);
        data.cameraNote = choice.note;
        return std::move(choice.driver);
    };
    tavix::frmMain window(folder, prompter, clock, driverFactory);
    prompter.setParent(&window);
    if (!window.Form_Load())
        return 1;
    // A comfortable first size on the screen, never below the window's minimum.
    if (const QScreen* screen = window.screen()) {
        const QSize room = screen->availableSize() * 0.9;
        window.resize(window.minimumSize().expandedTo(room.boundedTo(QSize(1600, 1000))));
    }
    window.show();
    // For the start-up bench: says when the window is up, and ends.
    if (qEnvironmentVariableIsSet("TAVIX_QUIT_WHEN_SHOWN"))
        QTimer::singleShot(0, &app, [&window] {
            window.setConfirmOnClose(false);
            std::puts("shown");
            std::fflush(stdout);
            QCoreApplication::quit();
        });
    // A picture named on the command line (opened from a file manager) comes up as the still.
    if (!line.picture.isEmpty())
        window.openPicture(line.picture);
    return QApplication::exec();
}
