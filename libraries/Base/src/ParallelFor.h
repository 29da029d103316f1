#pragma once

#include <algorithm>
#include <atomic>
#include <exception>
#include <system_error>
#include <thread>
#include <vector>

namespace kelp {

/// Runs function(i) for i from 0 to count - 1 on all cores, in no fixed order; the calls must not
/// touch what others write. Of the exceptions thrown, that of the lowest i goes out, so that a
/// failure reads the same in every run.
template <typename Function>
void parallelFor(int count, Function&& function)
{
    std::vector<std::exception_ptr> failures(static_cast<std::size_t>(std::max(count, 0)));
    std::atomic<int> next{0};
    const auto work = [&] {
        for (int i = next++; i < count; i = next++) {
            try {
                function(i);
            } catch (...) {
                failures[static_cast<std::size_t>(i)] = std::current_exception();
            }
        }
    };
    const int cores = std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
    std::vector<std::thread> helpers;
    for (int t = 1; t < std::min(cores, count); ++t) {
        try {
            helpers.emplace_back(work);
        } catch (const std::system_error&) {
            break; // The system gives no more threads: those that there are do it all.
        }
    }
    work();
    for (std::thread& helper : helpers) {
        helper.join();
    }
    for (const std::exception_ptr& failure : failures) {
        if (failure) {
            std::rethrow_exception(failure);
        }
    }
}

} // namespace kelp
