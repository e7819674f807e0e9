#include "common/ErrorLog.h"
#include "common/HandlerGuard.h"
#include "common/RunError.h"

#include "TempDir.h"

#include <gtest/gtest.h>
#include <stdexcept>

using namespace tavix;
using tavix::test::TempDir;

namespace {

class HandlerGuardTest : public ::testing::Test {
protected:
    QString logText() const { return QString::fromUtf8(dir.read(QStringLiteral("Error.Log"))); }

    TempDir dir;
    ErrorLog log{dir.file(QStringLiteral("Error.Log")),
                 [] { return QDateTime(QDate(2024, 5, 6), QTime(7, 8, 9)); }};
};

}  // namespace

TEST_F(HandlerGuardTest, RunGuarded_RunsTheHandlerAndLogsNothing_WhenItSucceeds)
{
    int runs = 0;

    const bool ok = runGuarded(log, QStringLiteral("frmX:cmdOK_Click"), [&] { ++runs; });

    EXPECT_TRUE(ok);
    EXPECT_EQ(runs, 1);
    EXPECT_FALSE(dir.exists(QStringLiteral("Error.Log")));
}

TEST_F(HandlerGuardTest, RunGuarded_LogsTheRunErrorNumber)
{
    const bool ok =
        runGuarded(log, QStringLiteral("frmX:cmdOK_Click"), [] { throw RunError(err::SubscriptOutOfRange); });

    EXPECT_FALSE(ok);
    EXPECT_TRUE(logText().endsWith(QStringLiteral(" frmX:cmdOK_Click Error.(9)\r\n")))
        << logText().toStdString();
}

TEST_F(HandlerGuardTest, RunGuarded_LogsOtherFailuresAsInvalidCall)
{
    const bool ok = runGuarded(log, QStringLiteral("frmX:Form_Load"), [] { throw std::out_of_range("x"); });

    EXPECT_FALSE(ok);
    EXPECT_TRUE(logText().endsWith(QStringLiteral(" frmX:Form_Load Error.(5)\r\n")))
        << logText().toStdString();
}
