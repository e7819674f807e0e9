#include "ShippedMessages.h"
#include "common/CommandTips.h"

#include <gtest/gtest.h>

using namespace tavix;

TEST(CommandTips, EveryTipHasATextInTheMessageFile)
{
    const MessageTable messages = test::shippedMessages();
    for (const CommandTips::Tip& tip : CommandTips::all()) {
        if (tip.tipId != 0) {
            EXPECT_FALSE(messages.text(tip.tipId).isEmpty()) << tip.button;
        }
    }
}

TEST(CommandTips, TheDesktopsUsualShortcuts)
{
    auto keysOf = [](const char* button) {
        const CommandTips::Tip* tip = CommandTips::find(QLatin1String(button));
        EXPECT_NE(tip, nullptr) << button;
        return tip ? tip->keys : QList<QKeySequence>();
    };
    EXPECT_EQ(keysOf("cmdPlayStop"),
              (QList<QKeySequence>{QKeySequence(Qt::Key_Space), QKeySequence(Qt::Key_F5)}));
    EXPECT_EQ(keysOf("cmdPicSave"), QList<QKeySequence>{QKeySequence(QStringLiteral("Ctrl+S"))});
    EXPECT_EQ(keysOf("cmdPicLoad"), QList<QKeySequence>{QKeySequence(QStringLiteral("Ctrl+O"))});
    EXPECT_EQ(keysOf("cmdResultSave"), QList<QKeySequence>{QKeySequence(QStringLiteral("Ctrl+Shift+S"))});
    EXPECT_EQ(keysOf("cmdUndo"), QList<QKeySequence>{QKeySequence(QStringLiteral("Ctrl+Z"))});
    EXPECT_EQ(keysOf("cmdRedo"), (QList<QKeySequence>{QKeySequence(QStringLiteral("Ctrl+Shift+Z")),
                                                      QKeySequence(QStringLiteral("Ctrl+Y"))}));
    EXPECT_EQ(keysOf("cmdHistogram"), QList<QKeySequence>{QKeySequence(QStringLiteral("Ctrl+H"))});
    EXPECT_EQ(CommandTips::find(QStringLiteral("cmdNothing")), nullptr);
}

TEST(CommandTips, NoKeySequenceIsUsedTwice)
{
    QList<QKeySequence> seen;
    for (const CommandTips::Tip& tip : CommandTips::all())
        for (const QKeySequence& keys : tip.keys) {
            EXPECT_FALSE(seen.contains(keys)) << keys.toString().toStdString();
            seen << keys;
        }
}

TEST(CommandTips, Text_EndsWithTheFirstShortcut)
{
    MessageTable messages;
    messages.parse(QStringLiteral("40101,Save the picture\n40102,Series\n"));
    EXPECT_EQ(CommandTips::text(*CommandTips::find(QStringLiteral("cmdPicSave")), messages),
              QStringLiteral("Save the picture (Ctrl+S)"));
    // A button without a shortcut shows the text alone.
    EXPECT_EQ(CommandTips::text(*CommandTips::find(QStringLiteral("cmdIS_Save")), messages),
              QStringLiteral("Series"));
}

TEST(CommandTips, WithShortcut_AddsItOnce)
{
    const CommandTips::Tip& playStop = *CommandTips::find(QStringLiteral("cmdPlayStop"));
    const QString once = CommandTips::withShortcut(QStringLiteral("Freeze"), playStop);
    EXPECT_EQ(once, QStringLiteral("Freeze (Space)"));
    EXPECT_EQ(CommandTips::withShortcut(once, playStop), once);
}
