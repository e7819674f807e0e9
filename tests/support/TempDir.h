#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

namespace tavix::test {

// A temporary folder with helpers to write and read files in it.
class TempDir {
public:
    TempDir();
    QString path() const { return dir_.path(); }
    QString file(const QString& name) const;
    QString write(const QString& name, const QByteArray& content) const;
    QByteArray read(const QString& name) const;
    bool exists(const QString& name) const;

private:
    QTemporaryDir dir_;
};

// The shipped data files of the program folder, copied into a fresh folder.
QString copyShippedData(const TempDir& dir);

}  // namespace tavix::test
