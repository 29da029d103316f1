#include "kelpImageTools.h"

namespace kelp {

void throwUnsupportedMonoPixelType()
{
    throw WatchdogException("KELP_MONO_IMAGE_SWITCH called with unsupported pixel type. in "
                            "libraries/Core/src/ImageLib/kelpImageTools at line 190");
}

} // namespace kelp
