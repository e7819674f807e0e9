#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

namespace tavix::test {

// A real, small filesystem (tmpfs) mounted on a temporary folder, for tests of
// what the program does when the disk is full. Mounting needs the right to
// mount (root in the test containers); without it mounted() is false.
class SmallDisk {
public:
    explicit SmallDisk(qint64 bytes = 4 << 20);
    ~SmallDisk();
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    bool mounted() const { return mounted_; }
    QString path() const { return dir_.path(); }
    QString file(const QString& name) const;

    // Takes every free byte with a filler file, or gives them back.
    void fill();
    void makeRoom();
    qint64 freeBytes() const;

    static QByteArray read(const QString& path);

private:
    QTemporaryDir dir_;
    bool mounted_ = false;
};

}  // namespace tavix::test
