#pragma once

#include <stdexcept>

namespace kelp::command {

/// A command line that cannot be followed; the text says why in one sentence.
class UsageError : public std::runtime_error
{
    using std::runtime_error::runtime_error;
};

} // namespace kelp::command
