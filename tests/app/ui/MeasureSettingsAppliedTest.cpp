#include "MeasuringFixture.h"
#include "measure/ui/ToolIcons.h"

#include <gtest/gtest.h>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <cmath>
#include <vector>

using namespace tavix;

namespace {

// What the main window shows after the measurement settings dialog closes.
class MeasureSettingsApplied : public test::Measuring {
protected:
    // Opens the dialog with cmdMeasureConfig, lets `change` work on it and presses OK.
    void changeSettings(std::function<void(QDialog&)> change)
    {
        onDialog([change](QDialog& d) {
            change(d);
            QTest::mouseClick(d.findChild<QPushButton*>(QStringLiteral("cmdOK")), Qt::LeftButton);
        });
        QTest::mouseClick(find<QPushButton>("cmdMeasureConfig"), Qt::LeftButton);
    }

    // A click on the option's circle: a stretched option takes clicks on its circle and text only.
    static void choose(QDialog& d, const char* option)
    {
        auto* button = d.findChild<QRadioButton*>(QLatin1String(option));
        QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(6, button->height() / 2));
    }

    static QImage picture(const QIcon& icon)
    {
        return icon.pixmap(32, 32).toImage().convertToFormat(QImage::Format_ARGB32);
    }
    // True when the still view shows `colour` within a pixel of a picture point.
    bool shownNear(double x, double y, const QColor& colour)
    {
        QCoreApplication::processEvents();
        const QImage shown = still()->grab().toImage();
        const QPoint p = at(x, y);
        for (int dy = -1; dy <= 1; ++dy)
            for (int dx = -1; dx <= 1; ++dx)
                if (QColor(shown.pixel(p.x() + dx, p.y() + dy)) == colour)
                    return true;
        return false;
    }

    QImage buttonPicture(int index)
    {
        return picture(find<QToolButton>(QStringLiteral("cmdMeasure(%1)").arg(index).toLatin1())->icon());
    }
};

}  // namespace

TEST_F(MeasureSettingsApplied, ToolButtons_TakeThePictureAndTipOfTheirMode)
{
    start();
    EXPECT_EQ(buttonPicture(0), picture(ToolIcons::img2PointIcon(0)));
    EXPECT_EQ(buttonPicture(1), picture(ToolIcons::imgCircleArcSelect(0)));
    EXPECT_EQ(buttonPicture(5), picture(ToolIcons::imgAngleIcon(0)));
    changeSettings([](QDialog& d) {
        choose(d, "opt2PointCommand(1)");
        choose(d, "optCircleArcSelect(1)");
        choose(d, "optAngleCommand(1)");
    });
    EXPECT_EQ(buttonPicture(0), picture(ToolIcons::img2PointIcon(1)));
    EXPECT_EQ(buttonPicture(1), picture(ToolIcons::imgCircleArcSelect(1)));
    EXPECT_EQ(buttonPicture(5), picture(ToolIcons::imgAngleIcon(1)));
    EXPECT_NE(buttonPicture(0), picture(ToolIcons::img2PointIcon(0)));
    EXPECT_NE(buttonPicture(1), picture(ToolIcons::imgCircleArcSelect(0)));
    EXPECT_NE(buttonPicture(5), picture(ToolIcons::imgAngleIcon(0)));
    EXPECT_EQ(find<QToolButton>("cmdMeasure(0)")->toolTip(), message(10112));
    EXPECT_EQ(find<QToolButton>("cmdMeasure(1)")->toolTip(), message(10113));
    EXPECT_EQ(find<QToolButton>("cmdMeasure(5)")->toolTip(), message(10110));
}

TEST_F(MeasureSettingsApplied, ToolButtons_KeepTheirIcons_ClickAfterClick)
{
    // A new icon per click would leave new scaled copies in Qt's pixmap cache
    // on every measurement.
    start();
    std::vector<qint64> keys;
    for (int i : {0, 1, 5})
        keys.push_back(
            find<QToolButton>(QStringLiteral("cmdMeasure(%1)").arg(i).toLatin1())->icon().cacheKey());
    for (int click = 0; click < 3; ++click) {
        QTest::mouseClick(find<QToolButton>("cmdMeasure(0)"), Qt::LeftButton);
        QTest::mouseClick(find<QToolButton>("cmdMeasure(5)"), Qt::LeftButton);
        size_t k = 0;
        for (int i : {0, 1, 5})
            EXPECT_EQ(
                find<QToolButton>(QStringLiteral("cmdMeasure(%1)").arg(i).toLatin1())->icon().cacheKey(),
                keys[k++])
                << "cmdMeasure(" << i << ")";
    }
}

TEST_F(MeasureSettingsApplied, RubberBandAndCirclePreview_TakeTheNewLineColour)
{
    start();
    const QColor green(0, 255, 0);
    prompter.colors.push_back(green);
    changeSettings([](QDialog& d) {
        QTest::mouseClick(d.findChild<QLabel*>(QStringLiteral("lblColor(0)")), Qt::LeftButton);
    });
    ASSERT_EQ(prompter.colorStarts.size(), 1u);

    tool(0);
    click(100, 100);
    QTest::mouseMove(still(), at(100, 300));
    EXPECT_TRUE(shownNear(100, 160, green)) << "the line to the pointer";

    QTest::keyClick(still(), Qt::Key_Escape);
    tool(1);
    click(200, 100);
    click(400, 300);
    QTest::mouseMove(still(), at(200, 500));
    // A corner of the circle through the three points: centre (200, 300), radius 200, at 45 degrees.
    EXPECT_TRUE(
        shownNear(200 + 200 * std::cos(0.785398163397448), 300 + 200 * std::sin(0.785398163397448), green))
        << "the circle to the pointer";
}

TEST_F(MeasureSettingsApplied, ResultRows_AreWrittenWithTheNewDecimals)
{
    start();
    tool(0);
    distance(100);
    changeSettings([](QDialog& d) {
        auto* decimals = d.findChild<QComboBox*>(QStringLiteral("cboDec"));
        decimals->setCurrentIndex(decimals->findText(QStringLiteral("4")));
    });
    EXPECT_EQ(cell(1, 2), QStringLiteral("50.0000"));
    auto* grid = find<QTableView>("grdResult");
    EXPECT_EQ(grid->model()->index(0, 2).data().toString(), QStringLiteral("50.0000"));
}

TEST_F(MeasureSettingsApplied, StillPicture_TakesTheNewFontSize)
{
    start();
    ASSERT_NE(still()->font().pointSize(), 16);
    changeSettings([](QDialog& d) {
        auto* size = d.findChild<QComboBox*>(QStringLiteral("cboFontSize"));
        size->setCurrentIndex(size->findText(QStringLiteral("16")));
    });
    EXPECT_EQ(w->data().settings.MEASUREFONTSIZE, 16);
    EXPECT_EQ(still()->font().pointSize(), 16);
}
