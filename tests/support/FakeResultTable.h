#pragma once

#include "measure/ResultTableState.h"

#include <vector>

namespace tavix::test {

// A result table that only remembers what was asked of it.
class FakeResultTable : public ResultTableState {
public:
    bool results = false;
    bool notSaved = false;
    std::vector<int> clears;  // the mode of every clearResults call
    int refreshes = 0;

    bool hasResults() const override { return results; }
    bool unsaved() const override { return notSaved; }
    void clearResults(int mode) override
    {
        clears.push_back(mode);
        results = false;
        notSaved = false;
    }
    void refresh() override { ++refreshes; }
};

}  // namespace tavix::test
