#include "StandardOutput.h"

#include <cstdio>

namespace kelp::command {

bool printWhole(const QByteArray& text)
{
    const auto size = static_cast<std::size_t>(text.size());
    const bool written = std::fwrite(text.constData(), 1, size, stdout) == size;
    return std::fflush(stdout) == 0 && written;
}

} // namespace kelp::command
