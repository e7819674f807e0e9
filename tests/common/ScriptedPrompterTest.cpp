#include "ScriptedPrompter.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

// The test prompter itself: a dialog the script did not foresee and an answer
// the program never asked for each fail the test that uses it.

using tavix::Prompter;
using tavix::test::ScriptedPrompter;

namespace {

Prompter::Message question()
{
    return {QStringLiteral("Overwrite the file?"), QStringLiteral("Save"), Prompter::Icon::Question,
            Prompter::Buttons::YesNo, Prompter::Answer::No};
}

// A program that asks one question more than the test scripted.
void extraConfirmation()
{
    ScriptedPrompter prompter;
    prompter.answers = {Prompter::Answer::Yes};
    prompter.message(question());
    prompter.message(question());
}

// A program that no longer asks the question the test scripted an answer for.
void missingQuestion()
{
    ScriptedPrompter prompter;
    prompter.answers = {Prompter::Answer::Yes};
}

void unexpectedFileDialog()
{
    ScriptedPrompter prompter;
    prompter.fileName({QStringLiteral("Save picture"), QStringLiteral("Bitmap|*.bmp"), {}, true});
}

void unusedFileName()
{
    ScriptedPrompter prompter;
    prompter.fileNames = {QStringLiteral("/tmp/never.bmp")};
}

void unexpectedInputColourAndFolder()
{
    ScriptedPrompter prompter;
    prompter.input(QStringLiteral("Name"), QStringLiteral("Lens"), {});
    prompter.color(Qt::red);
    prompter.folder(QStringLiteral("Folder"), QStringLiteral("/tmp"));
}

}  // namespace

TEST(ScriptedPrompter, AnUnexpectedMessageBox_FailsTheTest)
{
    EXPECT_NONFATAL_FAILURE(extraConfirmation(), "unexpected message box: \"Overwrite the file?\" (Save)");
}

TEST(ScriptedPrompter, AnAnswerNeverAskedFor_FailsTheTest)
{
    EXPECT_NONFATAL_FAILURE(missingQuestion(), "1 scripted message answer(s) never asked for");
}

TEST(ScriptedPrompter, AnUnexpectedFileDialog_AndAnUnusedFileName_EachFailTheTest)
{
    EXPECT_NONFATAL_FAILURE(unexpectedFileDialog(), "unexpected file dialog: \"Save picture\"");
    EXPECT_NONFATAL_FAILURE(unusedFileName(), "scripted file name never asked for: \"/tmp/never.bmp\"");
}

TEST(ScriptedPrompter, UnexpectedInputColourAndFolderDialogs_EachFailTheTest)
{
    ::testing::TestPartResultArray failures;
    {
        ::testing::ScopedFakeTestPartResultReporter reporter(
            ::testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &failures);
        unexpectedInputColourAndFolder();
    }
    ASSERT_EQ(failures.size(), 3);
    EXPECT_NE(std::string(failures.GetTestPartResult(0).message()).find("unexpected input box"),
              std::string::npos);
    EXPECT_NE(std::string(failures.GetTestPartResult(1).message()).find("unexpected colour dialog"),
              std::string::npos);
    EXPECT_NE(std::string(failures.GetTestPartResult(2).message()).find("unexpected folder dialog"),
              std::string::npos);
}

TEST(ScriptedPrompter, AScriptUsedUp_PassesAndGivesTheScriptedAnswers)
{
    ScriptedPrompter prompter;
    prompter.answers = {Prompter::Answer::Yes, Prompter::Answer::Cancel};
    prompter.fileNames = {QString()};
    EXPECT_EQ(prompter.message(question()), Prompter::Answer::Yes);
    EXPECT_EQ(prompter.message(question()), Prompter::Answer::Cancel);
    EXPECT_EQ(prompter.fileName({}), QString());
    EXPECT_TRUE(prompter.scriptUsed());
    EXPECT_EQ(prompter.messages.size(), 2u);
}
