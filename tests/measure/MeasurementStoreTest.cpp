#include "measure/MeasurementStore.h"

#include "measure/ToolFactory.h"

#include "ToolTestSupport.h"

using namespace tavix;
using namespace tavix::test;

namespace {

// A horizontal two-point distance at height y.
Measurement lineAt(double y, double length = 100)
{
    return *ToolFactory::measure(101, {{0, y}, {length, y}}, contextWith(1, 1, 1));
}

// Two circles apart: two values, two rows.
Measurement twoCircles()
{
    return *ToolFactory::measure(103, {{1, 0}, {0, 1}, {-1, 0}, {11, 0}, {10, 1}, {9, 0}},
                                 contextWith(1, 1, 1));
}

std::vector<int> rowsOf(const MeasurementStore& store, int index)
{
    return store.at(index).rows;
}

TEST(MeasurementStore, Add_GivesEachValueTheNextRow)
{
    MeasurementStore store;
    store.add(lineAt(0), 1);
    store.add(twoCircles(), 2);
    store.add(lineAt(50), 4);
    EXPECT_EQ(rowsOf(store, 0), (std::vector<int>{1}));
    EXPECT_EQ(rowsOf(store, 1), (std::vector<int>{2, 3}));
    EXPECT_EQ(store.indexAtRow(3), 1);
    EXPECT_EQ(store.indexAtRow(4), 2);
    EXPECT_FALSE(store.indexAtRow(5));
}

TEST(MeasurementStore, Clear_EmptiesTheStore)
{
    MeasurementStore store;
    store.add(lineAt(0), 1);
    store.clear();
    EXPECT_TRUE(store.empty());
    EXPECT_EQ(store.size(), 0);
    EXPECT_FALSE(store.indexAtRow(1));
}

TEST(MeasurementStore, RemoveRows_TwoToThreeOfFive_MovesTheLastTwoUp)
{
    MeasurementStore store;
    for (int row = 1; row <= 5; ++row)
        store.add(lineAt(10.0 * row), row);
    store.removeRows(2, 3);
    ASSERT_EQ(store.size(), 3);
    EXPECT_EQ(store.at(0).measurement.points[0].y, 10);
    EXPECT_EQ(store.at(1).measurement.points[0].y, 40);
    EXPECT_EQ(store.at(2).measurement.points[0].y, 50);
    EXPECT_EQ(store.indexAtRow(2), 1);
    EXPECT_EQ(store.indexAtRow(3), 2);
    EXPECT_FALSE(store.indexAtRow(4));
}

TEST(MeasurementStore, RemoveRows_TakesTheRangeInEitherOrder)
{
    MeasurementStore store;
    for (int row = 1; row <= 5; ++row)
        store.add(lineAt(10.0 * row), row);
    store.removeRows(3, 2);
    EXPECT_EQ(store.size(), 3);
    EXPECT_EQ(store.at(1).measurement.points[0].y, 40);
}

TEST(MeasurementStore, RemoveRows_OfKeptResults_MovesTheCurrentPicturesRowsUp)
{
    // Rows 1 to 3 belong to earlier pictures; this picture starts at row 4.
    MeasurementStore store;
    store.add(lineAt(10), 4);
    store.add(lineAt(20), 5);
    store.removeRows(1, 2);
    ASSERT_EQ(store.size(), 2);
    EXPECT_EQ(rowsOf(store, 0), (std::vector<int>{2}));
    EXPECT_EQ(rowsOf(store, 1), (std::vector<int>{3}));
}

TEST(MeasurementStore, RemoveRows_BeyondTheLastRow_ChangesNothing)
{
    MeasurementStore store;
    store.add(lineAt(10), 1);
    store.add(lineAt(20), 2);
    store.removeRows(3, 4);
    ASSERT_EQ(store.size(), 2);
    EXPECT_EQ(rowsOf(store, 1), (std::vector<int>{2}));
}

TEST(MeasurementStore, RemoveRows_OfOneValue_KeepsTheMeasurementWithItsOtherValue)
{
    MeasurementStore store;
    store.add(lineAt(0), 1);
    store.add(twoCircles(), 2);
    store.add(lineAt(50), 4);
    store.removeRows(2, 2);
    ASSERT_EQ(store.size(), 3);
    const Measurement& circles = store.at(1).measurement;
    ASSERT_EQ(circles.values.size(), 1u);
    EXPECT_EQ(circles.values[0].kindCaption, 11136);
    ASSERT_EQ(circles.shape.labels.size(), 1u);
    EXPECT_EQ(circles.shape.labels[0].value, 0);
    EXPECT_EQ(circles.shape.labels[0].text, "8.0");
    EXPECT_EQ(rowsOf(store, 1), (std::vector<int>{2}));
    EXPECT_EQ(rowsOf(store, 2), (std::vector<int>{3}));
}

TEST(MeasurementStore, RemoveRows_OfAllItsValues_DropsTheMeasurement)
{
    MeasurementStore store;
    store.add(twoCircles(), 1);
    store.add(lineAt(50), 3);
    store.removeRows(1, 2);
    ASSERT_EQ(store.size(), 1);
    EXPECT_EQ(store.at(0).measurement.tool, 101);
    EXPECT_EQ(rowsOf(store, 0), (std::vector<int>{1}));
}

TEST(MeasurementStore, IndexesInRows_ListsEveryMeasurementWithAValueInTheRange)
{
    MeasurementStore store;
    store.add(lineAt(0), 1);
    store.add(twoCircles(), 2);
    store.add(lineAt(50), 4);
    store.add(lineAt(60), 5);
    EXPECT_EQ(store.indexesInRows(3, 4), (std::vector<int>{1, 2}));
    EXPECT_EQ(store.indexesInRows(5, 1), (std::vector<int>{0, 1, 2, 3}));
    EXPECT_TRUE(store.indexesInRows(6, 9).empty());
}

TEST(MeasurementStore, Relabel_WritesTheLabelsWithTheNewDecimals)
{
    MeasurementStore store;
    store.add(lineAt(0, 12.5), 1);
    store.relabel(3);
    EXPECT_EQ(store.at(0).measurement.shape.labels[0].text, "12.500");
}

TEST(MeasurementStore, HitTest_FindsTheMeasurementWithinTheToleranceOfItsLine)
{
    MeasurementStore store;
    store.add(lineAt(10), 1);
    store.add(lineAt(50), 2);
    EXPECT_EQ(store.hitTest({40, 52}, 3), 1);
    EXPECT_EQ(store.hitTest({40, 8}, 3), 0);
    EXPECT_FALSE(store.hitTest({40, 30}, 3));
    EXPECT_FALSE(store.hitTest({120, 50}, 3)) << "beyond the line's end";
}

TEST(MeasurementStore, HitTest_PrefersTheLatestMeasurement_WhereTwoOverlap)
{
    MeasurementStore store;
    store.add(lineAt(10), 1);
    store.add(lineAt(11), 2);
    EXPECT_EQ(store.hitTest({40, 10}, 3), 1);
}

TEST(MeasurementStore, HitTest_FindsACircleOnItsEdge_ButNotAtItsEmptyInside)
{
    MeasurementStore store;
    store.add(*ToolFactory::measure(102, {{150, 100}, {100, 150}, {50, 100}}, contextWith(1, 1)), 1);
    EXPECT_EQ(store.hitTest({100 + 50 * 0.6, 100 + 50 * 0.8}, 2), 0);
    EXPECT_FALSE(store.hitTest({80, 130}, 2));
}

TEST(MeasurementStore, HitTest_FindsTheMeasurementOnItsLabelBox)
{
    MeasurementStore store;
    store.add(lineAt(10), 1);
    const auto box = [](const Label& l) { return QRectF(l.anchor.x - 20, l.anchor.y - 30, 40, 20); };
    EXPECT_EQ(store.hitTest({50, -15}, 1, box), 0);
    EXPECT_FALSE(store.hitTest({50, -15}, 1));
}

}  // namespace
