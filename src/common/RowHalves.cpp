#include "common/RowHalves.h"

#include <thread>

namespace tavix::RowHalves {

void run(int rows, int minimum, const std::function<void(int from, int to)>& work)
{
    if (rows <= 0)
        return;
    if (rows < minimum || std::thread::hardware_concurrency() < 2) {
        work(0, rows);
        return;
    }
    const int middle = rows / 2;
    std::thread first(work, 0, middle);
    work(middle, rows);
    first.join();
}

}  // namespace tavix::RowHalves
