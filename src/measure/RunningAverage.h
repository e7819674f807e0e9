#pragma once

namespace tavix {

// The mean of the values added so far, kept as they come: a value once added
// stays in it until the average is reset.
class RunningAverage {
public:
    void add(double value)
    {
        sum_ += value;
        ++count_;
    }
    void reset()
    {
        sum_ = 0;
        count_ = 0;
    }
    int count() const { return count_; }
    // 0 while nothing was added.
    double value() const { return count_ > 0 ? sum_ / count_ : 0.0; }

private:
    double sum_ = 0;
    int count_ = 0;
};

}  // namespace tavix
