#include "MeasuringFixture.h"

#include <gtest/gtest.h>
#include <QPushButton>

using namespace tavix;

namespace {

class TwoPointAverage : public test::Measuring {
protected:
    void SetUp() override
    {
        Measuring::SetUp();
        start();
        w->data().settings._2POINTAVERAGE = 1;
    }

    // Saves the table through cmdResultSave, Ok to "saved", and gives the file's lines.
    QStringList save()
    {
        const QString name = QStringLiteral("results%1.csv").arg(++saves_);
        prompter.fileNames.push_back(dir.file(name));
        prompter.answers.push_back(Prompter::Answer::Ok);
        QTest::mouseClick(find<QPushButton>("cmdResultSave"), Qt::LeftButton);
        QStringList lines = QString::fromUtf8(dir.read(name)).split(QStringLiteral("\r\n"));
        EXPECT_EQ(lines.takeLast(), QString()) << "every line ends with CR LF";
        return lines;
    }

    QString averageLine(int number, const char* value)
    {
        return QStringLiteral("%1,%2,%3,MIC").arg(number).arg(message(10114), QLatin1String(value));
    }

    int saves_ = 0;
};

}  // namespace

TEST_F(TwoPointAverage, SavedFile_EndsWithTheAverageOfTheTwoPointButtonsDistances)
{
    tool(0);
    distance(100);  // 50 MIC
    distance(200);  // 100 MIC
    tool(1);        // a circle is no two-point result
    click(200, 100);
    click(400, 300);
    click(200, 500);
    w->data().settings._2POINTCOMMANDMODE = 1;
    tool(0);  // line and point: 150 MIC
    click(100, 100);
    click(500, 100);
    click(300, 400);
    const QStringList lines = save();
    ASSERT_EQ(lines.size(), 5);
    EXPECT_EQ(lines[2], QStringLiteral("3,%1,200.00,MIC").arg(message(11133)));
    EXPECT_EQ(lines[4], averageLine(5, "100.00"));
}

TEST_F(TwoPointAverage, ARemovedRow_StaysInTheRunningAverage)
{
    tool(0);
    distance(100);
    distance(200);
    clickRow(1);
    prompter.answers.push_back(Prompter::Answer::Yes);
    QTest::mouseClick(find<QPushButton>("cmdResultRemove"), Qt::LeftButton);
    ASSERT_EQ(results().count(), 1);
    const QStringList lines = save();
    ASSERT_EQ(lines.size(), 2);
    EXPECT_EQ(lines[1], averageLine(2, "75.00"));
}

TEST_F(TwoPointAverage, ClearingTheTable_StartsTheAverageAgain)
{
    tool(0);
    distance(100);
    prompter.answers.push_back(Prompter::Answer::Yes);
    QTest::mouseClick(find<QPushButton>("cmdResultClear"), Qt::LeftButton);
    distance(60);  // 30 MIC
    const QStringList lines = save();
    ASSERT_EQ(lines.size(), 2);
    EXPECT_EQ(lines[1], averageLine(2, "30.00"));
}

TEST_F(TwoPointAverage, Off_WritesNoAverageLine)
{
    w->data().settings._2POINTAVERAGE = 0;
    tool(0);
    distance(100);
    const QStringList lines = save();
    EXPECT_EQ(lines, QStringList{QStringLiteral("1,%1,50.00,MIC").arg(message(11132))});
}
