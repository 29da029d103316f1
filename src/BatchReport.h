#pragma once

#include <QString>

#include <functional>

namespace kelp::oct {

enum class BatchLine
{
    Plain,
    Problem,
    Success
};

/// Takes the lines that a batch has to say.
using BatchReport = std::function<void(const QString& text, BatchLine kind)>;

} // namespace kelp::oct
