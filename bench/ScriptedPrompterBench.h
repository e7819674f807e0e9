#pragma once

#include "common/Prompter.h"

namespace tavix::bench {

// Answers every question with its default, so that a benchmark never blocks.
class SilentPrompter : public Prompter {
public:
    Answer message(const Message& m) override { return m.defaultAnswer; }
    std::optional<QString> input(const QString&, const QString&, const QString&) override
    {
        return std::nullopt;
    }
    QString fileName(const FileRequest&) override { return {}; }
    QColor color(const QColor& start) override { return start; }
    QString folder(const QString&, const QString& start) override { return start; }
};

}  // namespace tavix::bench
