#pragma once

#include <QString>
#include <QStringList>

namespace tavix {

class MessageTable;

// The font for the program's texts: a CJK font when the message file is in
// Japanese (so that kana and kanji take their Japanese forms), otherwise the
// desktop's own font.
namespace TextFont {

// CJK fonts with Japanese glyph forms, the most complete first.
inline const QStringList kJapaneseFamilies = {QStringLiteral("Noto Sans CJK JP"),
                                              QStringLiteral("IPAPGothic"), QStringLiteral("VL PGothic"),
                                              QStringLiteral("TakaoPGothic")};

// True when a message text holds kana or kanji.
bool isJapanese(const MessageTable& messages);

// The first installed family of kJapaneseFamilies for a Japanese message
// table; empty (keep the desktop's font) otherwise or when none is installed.
QString family(const MessageTable& messages, const QStringList& installedFamilies);

}  // namespace TextFont
}  // namespace tavix
