#pragma once

#include <QProcess>
#include <QStandardPaths>
#include <QString>
#include <QStringList>

namespace tavix::test {

// Aravis's fake GigE Vision camera as a process of its own, answering on the
// loopback address only, with a serial number of the test's; `lostPerMille`
// packets of every thousand are dropped and never sent again. Stopped by its
// own process id when the object goes, at the latest after `seconds`
// (`timeout` ends it should the test itself die).
class FakeGigECamera {
public:
    static QString program()
    {
        return QStandardPaths::findExecutable(QStringLiteral("arv-fake-gv-camera-0.8"));
    }

    FakeGigECamera(const QString& serial, int lostPerMille, int seconds)
    {
        QStringList args{QString::number(seconds), program(),
                         QStringLiteral("-i"),     QStringLiteral("127.0.0.1"),
                         QStringLiteral("-s"),     serial};
        if (lostPerMille > 0)
            args << QStringLiteral("-r") << QString::number(lostPerMille);
        process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process_.start(QStringLiteral("timeout"), args);
        process_.waitForStarted(5000);
    }
    ~FakeGigECamera()
    {
        process_.terminate();  // SIGTERM to this process id; timeout hands it on to the camera
        if (!process_.waitForFinished(5000)) {
            process_.kill();
            process_.waitForFinished(5000);
        }
    }
    FakeGigECamera(const FakeGigECamera&) = delete;
    FakeGigECamera& operator=(const FakeGigECamera&) = delete;

    bool running() const { return process_.state() == QProcess::Running; }

private:
    QProcess process_;
};

// Keeps both cores busy for at most `seconds`: two spinning shells, stopped
// by their process ids.
class BusyCores {
public:
    explicit BusyCores(int seconds)
    {
        for (QProcess& p : spinners_) {
            p.start(QStringLiteral("timeout"), {QString::number(seconds), QStringLiteral("sh"),
                                                QStringLiteral("-c"), QStringLiteral("while :; do :; done")});
            p.waitForStarted(5000);
        }
    }
    ~BusyCores()
    {
        for (QProcess& p : spinners_) {
            p.terminate();
            if (!p.waitForFinished(5000)) {
                p.kill();
                p.waitForFinished(5000);
            }
        }
    }
    BusyCores(const BusyCores&) = delete;
    BusyCores& operator=(const BusyCores&) = delete;

private:
    QProcess spinners_[2];
};

}  // namespace tavix::test
