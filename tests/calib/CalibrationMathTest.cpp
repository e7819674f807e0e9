#include "calib/CalibrationMath.h"
#include "common/RunError.h"

#include "PrintQt.h"
#include "ScriptedPrompter.h"

#include <gtest/gtest.h>
#include <limits>

using namespace tavix;
using namespace tavix::CalibrationMath;
using tavix::test::ScriptedPrompter;

namespace {

TrueLengthTexts texts()
{
    return {QStringLiteral("Calibration"), QStringLiteral("True length?"),
            QStringLiteral("Enter a length above 0."), QStringLiteral("Input error")};
}

ProofEntry measuredBuffer()
{
    return ProofEntry{QStringLiteral("Old"), 0.25, 0.125, QStringLiteral("mm"), 50, 40, 0};
}

}  // namespace

// --- the pending-measurement number ---

struct RequestCase {
    CalibrationPointMode mode;
    CalibrationAxis axis;
    qint16 request;
};
class CalibrationRequestCode : public ::testing::TestWithParam<RequestCase> {};

TEST_P(CalibrationRequestCode, EncodeRequest_IsModePlusTenTimesAxis)
{
    const RequestCase c = GetParam();

    EXPECT_EQ(encodeRequest({c.mode, c.axis}), c.request);
}

TEST_P(CalibrationRequestCode, DecodeRequest_GivesTheToolBack)
{
    const RequestCase c = GetParam();

    const std::optional<CalibrationTool> tool = decodeRequest(c.request);

    ASSERT_TRUE(tool.has_value());
    EXPECT_EQ(*tool, (CalibrationTool{c.mode, c.axis}));
    EXPECT_TRUE(isPending(c.request));
}

INSTANTIATE_TEST_SUITE_P(
    Table, CalibrationRequestCode,
    ::testing::Values(RequestCase{CalibrationPointMode::TwoPoint, CalibrationAxis::X, 1},
                      RequestCase{CalibrationPointMode::LineAndPoint, CalibrationAxis::X, 2},
                      RequestCase{CalibrationPointMode::TwoPoint, CalibrationAxis::Y, 11},
                      RequestCase{CalibrationPointMode::LineAndPoint, CalibrationAxis::Y, 12}));

TEST(CalibrationMath, NoRequest_IsNotPendingAndNamesNoTool)
{
    EXPECT_FALSE(isPending(NoRequest));
    EXPECT_FALSE(isPending(0));
    EXPECT_FALSE(decodeRequest(NoRequest).has_value());
    EXPECT_FALSE(decodeRequest(3).has_value());
    EXPECT_FALSE(decodeRequest(10).has_value());
}

TEST(CalibrationMath, EffectivePointMode_UsesTheDefault_WhenNoneIsRemembered)
{
    EXPECT_EQ(effectivePointMode(-1, 1), CalibrationPointMode::LineAndPoint);
    EXPECT_EQ(effectivePointMode(-1, 0), CalibrationPointMode::TwoPoint);
    EXPECT_EQ(effectivePointMode(0, 1), CalibrationPointMode::TwoPoint);
    EXPECT_EQ(effectivePointMode(1, 0), CalibrationPointMode::LineAndPoint);
}

TEST(CalibrationMath, TrueLengthPromptId_DependsOnAxisAndAxisOption)
{
    EXPECT_EQ(trueLengthPromptId(CalibrationAxis::X, false), 24005);
    EXPECT_EQ(trueLengthPromptId(CalibrationAxis::X, true), 24007);
    EXPECT_EQ(trueLengthPromptId(CalibrationAxis::Y, false), 24006);
}

// --- the typed length ---

struct LengthCase {
    const char* text;
    double value;
};
class TrueLengthParse : public ::testing::TestWithParam<LengthCase> {};

TEST_P(TrueLengthParse, ParseTrueLength_ReadsTheLeadingNumber)
{
    EXPECT_EQ(parseTrueLength(QString::fromLatin1(GetParam().text)), GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(Table, TrueLengthParse,
                         ::testing::Values(LengthCase{"12abc", 12}, LengthCase{"abc", 0},
                                           LengthCase{"-3", -3}, LengthCase{" 2.5", 2.5},
                                           LengthCase{".5mm", 0.5}, LengthCase{"", 0}));

TEST(CalibrationMath, AskTrueLength_Stores12_WhenUserTypes12abc)
{
    ScriptedPrompter prompter;
    prompter.inputs = {QStringLiteral("12abc")};

    const std::optional<double> value = askTrueLength(prompter, texts());

    EXPECT_EQ(value, 12.0);
    EXPECT_TRUE(prompter.messages.empty());
    EXPECT_EQ(prompter.inputPrompts, QStringList{QStringLiteral("True length?")});
}

class AskTrueLengthRejected : public ::testing::TestWithParam<const char*> {};

TEST_P(AskTrueLengthRejected, AskTrueLength_ShowsErrorAndAsksAgain_WhenValueIsNotAboveZero)
{
    ScriptedPrompter prompter;
    prompter.answers = {Prompter::Answer::Ok};
    prompter.inputs = {QString::fromLatin1(GetParam()), QStringLiteral("5")};

    const std::optional<double> value = askTrueLength(prompter, texts());

    EXPECT_EQ(value, 5.0);
    EXPECT_EQ(prompter.inputPrompts.size(), 2);
    ASSERT_EQ(prompter.messages.size(), 1u);
    const Prompter::Message& m = prompter.messages.front();
    EXPECT_EQ(m.text, QStringLiteral("Enter a length above 0."));
    EXPECT_EQ(m.title, QStringLiteral("Input error"));
    EXPECT_EQ(m.icon, Prompter::Icon::Exclamation);
    EXPECT_EQ(m.buttons, Prompter::Buttons::Ok);
}

INSTANTIATE_TEST_SUITE_P(Table, AskTrueLengthRejected, ::testing::Values("abc", "-3", "0", "  "));

TEST(CalibrationMath, AskTrueLength_KeepsAsking_UntilTheValueIsAboveZero)
{
    ScriptedPrompter prompter;
    prompter.answers = {Prompter::Answer::Ok, Prompter::Answer::Ok};
    prompter.inputs = {QStringLiteral("abc"), QStringLiteral("-3"), QStringLiteral("0.001")};

    const std::optional<double> value = askTrueLength(prompter, texts());

    EXPECT_EQ(value, 0.001);
    EXPECT_EQ(prompter.inputPrompts.size(), 3);
    EXPECT_EQ(prompter.messages.size(), 2u);
}

TEST(CalibrationMath, AskTrueLength_Abandons_WhenAnswerIsEmpty)
{
    ScriptedPrompter prompter;
    prompter.inputs = {QString()};  // a second question would fail the test

    const std::optional<double> value = askTrueLength(prompter, texts());

    EXPECT_FALSE(value.has_value());
    EXPECT_EQ(prompter.inputPrompts.size(), 1);
    EXPECT_TRUE(prompter.messages.empty());
}

TEST(CalibrationMath, AskTrueLength_Abandons_WhenUserCancelsAfterAnError)
{
    ScriptedPrompter prompter;
    prompter.inputs = {QStringLiteral("-3"), std::nullopt};  // a third question would fail the test
    prompter.answers = {Prompter::Answer::Ok};               // to "above 0"

    const std::optional<double> value = askTrueLength(prompter, texts());

    EXPECT_FALSE(value.has_value());
    EXPECT_EQ(prompter.inputPrompts.size(), 2);
    EXPECT_EQ(prompter.messages.size(), 1u);
}

// --- the factor ---

TEST(CalibrationMath, ComputeFactor_IsValuePerPixel)
{
    EXPECT_EQ(computeFactor(100, 200, 1.0), 0.5);
    EXPECT_EQ(computeFactor(100, 400, 0.5), 0.25);
}

TEST(CalibrationMath, ComputeFactor_TakesTheMagnificationTwice)
{
    const double value = 1, pixels = 3, magnification = 1.5;

    const std::optional<double> factor = computeFactor(value, pixels, magnification);

    ASSERT_TRUE(factor.has_value());
    EXPECT_EQ(*factor, (value / (pixels * magnification)) * magnification);
    EXPECT_DOUBLE_EQ(*factor, 1.0 / 3);
}

TEST(CalibrationMath, ComputeFactor_GivesNothing_WhenDistanceOnTheViewIsZero)
{
    EXPECT_FALSE(computeFactor(100, 0, 1.0).has_value());
    EXPECT_FALSE(computeFactor(100, 200, 0.0).has_value());
}

TEST(CalibrationMath, ComputeFactor_ThrowsOverflow_WhenTheFactorIsNotFinite)
{
    const double tiny = std::numeric_limits<double>::denorm_min();

    auto errorOf = [&] {
        try {
            computeFactor(1e300, tiny, 1.0);
        } catch (const RunError& e) {
            return e.number();
        }
        return 0;
    };

    EXPECT_EQ(errorOf(), err::Overflow);
}

TEST(CalibrationMath, ApplyTrueLength_StoresValueAndXFactor_ForTheXAxis)
{
    ProofEntry buffer = measuredBuffer();

    applyTrueLength(buffer, CalibrationAxis::X, 100, 200, 1.0);

    EXPECT_EQ(buffer.XValue, 100);
    EXPECT_EQ(buffer.XFactor, 0.5);
    EXPECT_EQ(buffer.YValue, 40);
    EXPECT_EQ(buffer.YFactor, 0.125);
}

TEST(CalibrationMath, ApplyTrueLength_StoresValueAndYFactor_ForTheYAxis)
{
    ProofEntry buffer = measuredBuffer();

    applyTrueLength(buffer, CalibrationAxis::Y, 30, 120, 2.0);

    EXPECT_EQ(buffer.YValue, 30);
    EXPECT_EQ(buffer.YFactor, 0.25);
    EXPECT_EQ(buffer.XValue, 50);
    EXPECT_EQ(buffer.XFactor, 0.25);
}

TEST(CalibrationMath, ApplyTrueLength_KeepsFactorButStoresValue_WhenTwoPointsCoincide)
{
    ProofEntry buffer = measuredBuffer();

    applyTrueLength(buffer, CalibrationAxis::X, 75, 0, 1.0);

    EXPECT_EQ(buffer.XFactor, 0.25);
    EXPECT_EQ(buffer.XValue, 75);
}

TEST(CalibrationMath, ApplyTrueLength_StoresValueBeforeTheFactorOverflows)
{
    ProofEntry buffer = measuredBuffer();

    EXPECT_THROW(
        applyTrueLength(buffer, CalibrationAxis::Y, 1e300, std::numeric_limits<double>::denorm_min(), 1.0),
        RunError);

    EXPECT_EQ(buffer.YValue, 1e300);
    EXPECT_EQ(buffer.YFactor, 0.125);
}

// --- OK ---

TEST(CalibrationMath, ApplyOk_WritesYFromX_WhenAxisOptionIsChecked)
{
    ProofEntry entry;
    const ProofEntry buffer = measuredBuffer();  // a y value was measured earlier

    applyOk(entry, buffer, QStringLiteral("Lens"), QStringLiteral("MIC"), true);

    EXPECT_EQ(entry.YFactor, 0.25);
    EXPECT_EQ(entry.YValue, 50);
    EXPECT_EQ(entry.XFactor, 0.25);
    EXPECT_EQ(entry.XValue, 50);
}

TEST(CalibrationMath, ApplyOk_KeepsTheMeasuredY_WhenAxisOptionIsUnchecked)
{
    ProofEntry entry;
    const ProofEntry buffer = measuredBuffer();

    applyOk(entry, buffer, QStringLiteral(" Lens "), QStringLiteral("nm"), false);

    EXPECT_EQ(entry.Name, QStringLiteral(" Lens "));
    EXPECT_EQ(entry.Unit, QStringLiteral("nm"));
    EXPECT_EQ(entry.XFactor, 0.25);
    EXPECT_EQ(entry.YFactor, 0.125);
    EXPECT_EQ(entry.XValue, 50);
    EXPECT_EQ(entry.YValue, 40);
}

TEST(CalibrationMath, ApplyOk_LeavesTheEntrysAxisOption)
{
    ProofEntry entry;
    entry.AxisOption = 0;
    ProofEntry buffer = measuredBuffer();
    buffer.AxisOption = 1;

    applyOk(entry, buffer, QStringLiteral("Lens"), QStringLiteral("mm"), true);

    EXPECT_EQ(entry.AxisOption, 0);
}

TEST(CalibrationMath, OkRefusal_NamesTheMissingField)
{
    EXPECT_EQ(okRefusal(QStringLiteral("   "), QStringLiteral("mm")), 24000);
    EXPECT_EQ(okRefusal(QString(), QString()), 24000);
    EXPECT_EQ(okRefusal(QStringLiteral("Lens"), QString()), 24003);
    EXPECT_EQ(okRefusal(QStringLiteral("Lens"), QStringLiteral("mm")), std::nullopt);
}
