#pragma once

#include "common/MessageTable.h"

#include <QFile>
#include <stdexcept>

namespace tavix::test {

// The message table of the shipped English message file.
inline MessageTable shippedMessages()
{
    QFile file(QStringLiteral(TAVIX_SOURCE_DATA_DIR "/Message_E.txt"));
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("cannot read the shipped message file");
    MessageTable table;
    table.parse(QString::fromUtf8(file.readAll()));
    return table;
}

}  // namespace tavix::test
