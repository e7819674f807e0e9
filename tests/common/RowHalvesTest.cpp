#include "common/RowHalves.h"

#include <gtest/gtest.h>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

using namespace tavix;

namespace {

// Counts how often each row was worked on, and on which threads.
struct Record {
    std::mutex lock;
    std::vector<int> visits;
    std::set<std::thread::id> threads;
    explicit Record(int rows) : visits(static_cast<size_t>(rows), 0) {}
    std::function<void(int, int)> work()
    {
        return [this](int from, int to) {
            const std::lock_guard guard(lock);
            threads.insert(std::this_thread::get_id());
            for (int r = from; r < to; ++r)
                ++visits[static_cast<size_t>(r)];
        };
    }
};

}  // namespace

TEST(RowHalves, EveryRow_IsWorkedOnOnce_WhateverTheCount)
{
    for (int rows : {1, 2, 3, 63, 64, 65, 1944}) {
        Record record(rows);
        RowHalves::run(rows, 64, record.work());
        for (int r = 0; r < rows; ++r)
            EXPECT_EQ(record.visits[static_cast<size_t>(r)], 1) << rows << " rows, row " << r;
    }
}

TEST(RowHalves, FewRows_StayOnTheCallersThread)
{
    Record record(63);
    RowHalves::run(63, 64, record.work());
    ASSERT_EQ(record.threads.size(), 1u);
    EXPECT_EQ(*record.threads.begin(), std::this_thread::get_id());
}

TEST(RowHalves, ManyRows_AreSharedWithASecondThread)
{
    if (std::thread::hardware_concurrency() < 2)
        GTEST_SKIP() << "one core: the caller does all rows";
    Record record(1944);
    RowHalves::run(1944, 64, record.work());
    EXPECT_EQ(record.threads.size(), 2u);
    EXPECT_TRUE(record.threads.count(std::this_thread::get_id()));
}

TEST(RowHalves, NoRows_DoNoWork)
{
    Record record(0);
    bool called = false;
    RowHalves::run(0, 1, [&](int, int) { called = true; });
    EXPECT_FALSE(called);
}
