#include "common/TextFont.h"

#include "common/MessageTable.h"

namespace tavix::TextFont {

namespace {

bool isKanaOrKanji(char32_t c)
{
    return (c >= 0x3040 && c <= 0x30FF)      // hiragana, katakana
           || (c >= 0x3400 && c <= 0x4DBF)   // CJK extension A
           || (c >= 0x4E00 && c <= 0x9FFF)   // CJK unified ideographs
           || (c >= 0xFF66 && c <= 0xFF9F);  // half-width katakana
}

}  // namespace

bool isJapanese(const MessageTable& messages)
{
    for (int i = 0; i < messages.size(); ++i)
        for (const char32_t c : messages.at(i).text.toUcs4())
            if (isKanaOrKanji(c))
                return true;
    return false;
}

QString family(const MessageTable& messages, const QStringList& installedFamilies)
{
    if (!isJapanese(messages))
        return {};
    for (const QString& candidate : kJapaneseFamilies)
        if (installedFamilies.contains(candidate, Qt::CaseInsensitive))
            return candidate;
    return {};
}

}  // namespace tavix::TextFont
