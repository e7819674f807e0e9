#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

namespace tavix::test {

// The video frames of an AVI file as they are stored: the payload of every
// video chunk ("00dc", "00db") in the movie lists, in file order (OpenDML parts included).
// Empty when the file cannot be read.
QList<QByteArray> aviFrames(const QString& path);

}  // namespace tavix::test
