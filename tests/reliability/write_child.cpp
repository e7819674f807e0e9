// Writes one kind of file over and over through the program's own writer, old
// and new content in turn, until it is killed. Prints "ready" once the first
// complete file is on disk, then "+" before and "-" after each write.
#include "WriteKinds.h"

#include <QGuiApplication>
#include <cstdio>

using namespace tavix::reliability;

int main(int argc, char** argv)
{
    // A picture's resolution fields come from the screen, as in the program.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    if (argc != 3) {
        std::fprintf(stderr, "usage: %s KIND FOLDER\n", argv[0]);
        return 2;
    }
    const std::optional<Kind> kind = kindNamed(QString::fromLocal8Bit(argv[1]));
    const QString folder = QString::fromLocal8Bit(argv[2]);
    if (!kind) {
        std::fprintf(stderr, "unknown kind %s\n", argv[1]);
        return 2;
    }
    prepare(*kind, folder);
    if (!writeVersion(*kind, folder, 0))
        return 3;
    std::printf("ready\n");
    std::fflush(stdout);
    if (*kind == Kind::Recording)
        return record(folder, 60, true) ? 0 : 3;
    // "+" and "-" around each write tell the killer whether it hit one.
    for (int version = 1;; version ^= 1) {
        std::fputc('+', stdout);
        std::fflush(stdout);
        if (!writeVersion(*kind, folder, version))
            return 3;
        std::fputc('-', stdout);
        std::fflush(stdout);
    }
}
