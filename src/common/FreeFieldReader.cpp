#include "common/FreeFieldReader.h"

#include "common/RunError.h"

namespace tavix {

namespace {
bool isBlank(QChar c)
{
    return c == QLatin1Char(' ') || c == QLatin1Char('\t');
}
bool isLineEnd(QChar c)
{
    return c == QLatin1Char('\n') || c == QLatin1Char('\r');
}
}  // namespace

FreeFieldReader::FreeFieldReader(QString text) : text_(std::move(text))
{
}

void FreeFieldReader::skipBlanks()
{
    while (pos_ < text_.size() && isBlank(text_[pos_]))
        ++pos_;
}

bool FreeFieldReader::atEnd() const
{
    if (afterComma_)
        return false;  // "a," still holds an empty last field
    for (qsizetype i = pos_; i < text_.size(); ++i)
        if (!isBlank(text_[i]) && !isLineEnd(text_[i]))
            return false;
    return true;
}

QString FreeFieldReader::next()
{
    if (atEnd())
        throw RunError(err::InputPastEnd);
    skipBlanks();
    // A new record may begin after any number of line ends; a comma followed
    // directly by a line end ends an empty field.
    if (!afterComma_) {
        while (pos_ < text_.size() && (isLineEnd(text_[pos_]) || isBlank(text_[pos_])))
            ++pos_;
    }
    afterComma_ = false;

    QString field;
    if (pos_ < text_.size() && text_[pos_] == QLatin1Char('"')) {
        const qsizetype close = text_.indexOf(QLatin1Char('"'), pos_ + 1);
        const qsizetype end = close < 0 ? text_.size() : close;
        field = text_.mid(pos_ + 1, end - pos_ - 1);
        pos_ = close < 0 ? text_.size() : close + 1;
        // Anything between the closing quote and the next separator is dropped.
        while (pos_ < text_.size() && text_[pos_] != QLatin1Char(',') && !isLineEnd(text_[pos_]))
            ++pos_;
    } else {
        const qsizetype start = pos_;
        while (pos_ < text_.size() && text_[pos_] != QLatin1Char(',') && !isLineEnd(text_[pos_]))
            ++pos_;
        field = text_.mid(start, pos_ - start).trimmed();
    }
    if (pos_ < text_.size() && text_[pos_] == QLatin1Char(',')) {
        ++pos_;
        afterComma_ = true;
    } else if (pos_ < text_.size() && text_[pos_] == QLatin1Char('\r')) {
        ++pos_;
        if (pos_ < text_.size() && text_[pos_] == QLatin1Char('\n'))
            ++pos_;
    } else if (pos_ < text_.size() && text_[pos_] == QLatin1Char('\n')) {
        ++pos_;
    }
    return field;
}

}  // namespace tavix
