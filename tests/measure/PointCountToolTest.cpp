#include "measure/PointCountTool.h"

#include "ToolTestSupport.h"

using namespace tavix;
using namespace tavix::test;

namespace {

class PointCount : public ::testing::TestWithParam<int> {};

TEST_P(PointCount, GivesTheNumberOfClickedPoints_AfterTheDoubleClick)
{
    PointCountTool tool;
    std::vector<PointD> clicks;
    for (int i = 0; i < GetParam(); ++i)
        clicks.push_back({10.0 * i, 5.0 * i});
    const std::optional<double> value = valueOf(tool, clicks, contextWith(0.5, 0.5), true);
    ASSERT_TRUE(value);
    EXPECT_EQ(*value, GetParam());
}

INSTANTIATE_TEST_SUITE_P(PointCountTool, PointCount, ::testing::Values(1, 2, 7, 250));

TEST(PointCountTool, Result_IsACountInPoints_WithEveryPointNumbered)
{
    PointCountTool tool;
    clickAll(tool, {{10, 10}, {20, 30}, {40, 5}}, true);
    const std::optional<Measurement> m = tool.result(contextWith(1, 1, 3));
    ASSERT_TRUE(m);
    EXPECT_EQ(m->tool, 100);
    EXPECT_EQ(m->values[0].kindCaption, 11130);
    EXPECT_EQ(m->values[0].unit, UnitKind::Count);
    EXPECT_EQ(m->shape.marks, (std::vector<PointD>{{10, 10}, {20, 30}, {40, 5}}));
    ASSERT_EQ(m->shape.labels.size(), 3u);
    EXPECT_EQ(m->shape.labels[0].text, "1");
    EXPECT_EQ(m->shape.labels[2].text, "3");
    EXPECT_EQ(m->shape.labels[2].anchor, (PointD{40, 5}));
}

TEST(PointCountTool, KeepsCounting_UntilTheDoubleClick)
{
    PointCountTool tool;
    clickAll(tool, {{1, 1}, {2, 2}, {3, 3}});
    EXPECT_FALSE(tool.complete());
    EXPECT_FALSE(tool.result(contextWith(1, 1)));
    EXPECT_TRUE(tool.finishOnDoubleClick());
    EXPECT_TRUE(tool.complete());
}

TEST(PointCountTool, DoubleClick_EndsNothing_BeforeTheFirstPoint)
{
    PointCountTool tool;
    EXPECT_FALSE(tool.finishOnDoubleClick());
    EXPECT_FALSE(tool.complete());
}

TEST(PointCountTool, Guidance_AsksForTheFirstPointThenTheNext)
{
    PointCountTool tool;
    EXPECT_EQ(tool.guidance(), 30);
    tool.addPoint({1, 1});
    EXPECT_EQ(tool.guidance(), 31);
    tool.finishOnDoubleClick();
    tool.startNext();
    EXPECT_FALSE(tool.complete());
    EXPECT_EQ(tool.guidance(), 30);
}

TEST(PointCountTool, Preview_NumbersThePointerAsTheNextPoint)
{
    PointCountTool tool;
    clickAll(tool, {{1, 1}, {2, 2}});
    const Shape shape = tool.preview({9, 9}, contextWith(1, 1));
    ASSERT_EQ(shape.labels.size(), 3u);
    EXPECT_EQ(shape.labels[2].text, "3");
    EXPECT_EQ(shape.labels[2].anchor, (PointD{9, 9}));
}

}  // namespace
